#include "terminal/terminal_keys.h"

#include <gtest/gtest.h>

#include <chrono>
#include <clocale>
#include <cstddef>
#include <string>

namespace lineup::test {
namespace {

/// The keys that `bytes` stand for, which come at once, except that there is a pause at each '|'.
std::wstring keysIn(const std::string& bytes, bool escapeAlone = false) {
  std::setlocale(LC_CTYPE, "C.UTF-8");
  std::size_t next = 0;
  KeyReader reader(
      [&](char& byte) {
        next += next < bytes.size() && bytes[next] == '|' ? 1 : 0;
        byte = next < bytes.size() ? bytes[next] : '\0';
        return next++ < bytes.size();
      },
      [&](std::chrono::milliseconds) { return next < bytes.size() && bytes[next] != '|'; });
  std::wstring keys;
  for (wchar_t key = 0; reader.read(key, escapeAlone);) {
    keys += key;
  }
  EXPECT_GE(next, bytes.size()) << bytes;
  return keys;
}

TEST(TerminalKeys, LettersAndControlCharactersAreThemselves) {
  EXPECT_EQ(keysIn("aé漢𝄞\x01\n\x7f"), L"aé漢𝄞\x01\n\x7f");
}

TEST(TerminalKeys, BytesThatMakeNoLetterAreLeftOut) {
  EXPECT_EQ(keysIn("i\xc3"
                   "d\xff\xa9 \xfd\x88\x85\xa3\x8d\x93\xe2\x82"
                   "é\xc2\x85"),
            L"id é");
}

TEST(TerminalKeys, CursorKeysOfEveryModeAreKnown) {
  EXPECT_EQ(keysIn("\x1b[A\x1bOA\x1b[D\x1b[H\x1b[1~\x1b[7~"),
            (std::wstring{key::kUp, key::kUp, key::kLeft, key::kBeginning, key::kBeginning,
                          key::kBeginning}));
  EXPECT_EQ(keysIn("\x1b[3~\x1b[1;5C\x1b"
                   "b\x1b\x7f"),
            (std::wstring{key::kDelete, key::kWordRight, key::kWordLeft, key::kEraseWordBefore}));
}

TEST(TerminalKeys, FunctionKeysOfEveryModeAreKnown) {
  EXPECT_EQ(keysIn("\x1bOQ\x1b[12~\x1b[[B"), (std::wstring{key::kF2, key::kF2, key::kF2}));
  EXPECT_EQ(keysIn("\x1bOR\x1b[13~\x1b[[C"), (std::wstring{key::kF3, key::kF3, key::kF3}));
}

TEST(TerminalKeys, TheMarksOfAPasteAreKnown) {
  EXPECT_EQ(keysIn("\x1b[200~a\x1b[201~\x1b[202~"),
            (std::wstring{key::kPasteBegins, L'a', key::kPasteEnds}));
}

TEST(TerminalKeys, OtherSequencesAreLeftOutWhole) {
  for (const char* sequence :
       {"\x1b[2~", "\x1b[5~", "\x1b[15~", "\x1b[24~", "\x1b[3;5~", "\x1b[1;2D", "\x1b[[A",
        "\x1b[[E", "\x1bOP", "\x1bO5P", "\x1bq", "\x1b\x1b[5~", "\x1b[?1;2c",
        "\x1b[200;1;300;400;500$ 99q", "\x1bé"}) {
    for (const bool escapeAlone : {false, true}) {
      EXPECT_EQ(keysIn(std::string("a") + sequence + "b", escapeAlone), L"ab") << sequence + 1;
    }
  }
}

TEST(TerminalKeys, ThoseOfRxvtWithShiftAreLeftOutWhole) {
  EXPECT_EQ(keysIn("a\x1b[3$b\x1b[23$c\x1b[3^d\x1b[3@e"), L"abcde");
}

TEST(TerminalKeys, AnswersOfATerminalAreLeftOutWhole) {
  for (const char* answer :
       {"\x1b]11;rgb:0000/0000/0000\a", "\x1b]11;rgb:ffff/ffff/ffff\x1b\\", "\x1b]2;Título\xc2\x9c",
        "\x1bP>|XTerm(379)\x1b\\", "\x1b_Gi=1;OK\x1b\\", "\x1b[?2026;2$y", "\x1b[12;2$y",
        "\xc2\x9d?11\a"}) {
    EXPECT_EQ(keysIn(std::string("a") + answer + "b"), L"ab") << answer + 1;
  }
}

TEST(TerminalKeys, WhatCutsAnAnswerShortCounts) {
  EXPECT_EQ(keysIn("\x1b]11;rgb\x1b[Ax\x1bP1\ny\x1bP1\x1b"),
            (std::wstring{key::kUp, L'x', L'\n', L'y'}));
}

TEST(TerminalKeys, AKeyWithAltBeginsNoAnswer) {
  EXPECT_EQ(keysIn("a\x1b]|b\x1bP|c\x1b_|d"), L"abcd");
}

TEST(TerminalKeys, SequencesMayBeginWithOneCharacter) {
  EXPECT_EQ(keysIn("\x9b"
                   "A\xc2\x9b"
                   "D\xc2\x8fQ\x9b"
                   "3$a"),
            (std::wstring{key::kUp, key::kLeft, key::kF2, L'a'}));
  EXPECT_EQ(keysIn("\xe6\x9b"
                   "A"),
            L"A")
      << "a letter that broke off";
}

TEST(TerminalKeys, TheEscapeKeyAloneIsAKeyWhereItIsAskedFor) {
  EXPECT_EQ(keysIn("a\x1b|b\x1b[A\x1b", true),
            (std::wstring{L'a', key::kEscape, L'b', key::kUp, key::kEscape}));
  EXPECT_EQ(keysIn("a\x1b|b", false), (std::wstring{L'a', key::kWordLeft}));
}

TEST(TerminalKeys, AControlCharacterCutsASequenceShort) {
  EXPECT_EQ(keysIn("\x1b\n\x1b[\n\x1b[1;\x1b[Ax\x1bO\x7f"),
            (std::wstring{L'\n', L'\n', key::kUp, L'x', L'\x7f'}));
}

TEST(TerminalKeys, ASequenceAtTheEndIsLeftOut) {
  for (const char* sequence : {"\x1b", "\x1b[", "\x1b[1;", "\x1bO", "\x1b[[", "\xe6"}) {
    EXPECT_EQ(keysIn(std::string("a") + sequence), L"a") << sequence + 1;
  }
}

}  // namespace
}  // namespace lineup::test
