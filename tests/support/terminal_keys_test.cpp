#include "support/terminal_keys.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace lineup::test {
namespace {

/// The keys that `bytes` stand for.
std::wstring keysIn(const std::string& bytes) {
  std::setlocale(LC_CTYPE, "C.UTF-8");
  std::size_t next = 0;
  KeyReader reader([&](char& byte) {
    byte = next < bytes.size() ? bytes[next] : '\0';
    return next++ < bytes.size();
  });
  std::wstring keys;
  for (wchar_t key = 0; reader.read(key);) {
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
                   "d\xff\xa9 \xe2\x82"
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

TEST(TerminalKeys, OtherSequencesAreLeftOutWhole) {
  for (const char* sequence :
       {"\x1b[15~", "\x1b[24~", "\x1b[3;5~", "\x1b[1;2D", "\x1b[[A", "\x1b[[E", "\x1bOP", "\x1bO5P",
        "\x1bq", "\x1b\x1b[5~", "\x1b[?1;2c", "\x1b[200;1;300;400;500$ 99q", "\x1bé"}) {
    EXPECT_EQ(keysIn(std::string("a") + sequence + "b"), L"ab") << sequence + 1;
  }
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
