// Line editing, as a person sees it on a terminal.

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "tests/console/keys.h"
#include "tests/console/terminal_session.h"
#include "tests/support/memory_use.h"

namespace lineup::test {
namespace {

using Editing = OnEachTerminal;

INSTANTIATE_TEST_SUITE_P(Terminals, Editing, kTerminals, nameOfTerminal);

TEST_P(Editing, ATypedLineRuns) {
  session.expect(kGreeting + "> |");
  session.type("id 3\n", kGreeting + "> id 3\n" + changedOnScreen(3));
  session.type("commit\n", kPending + "commit\n> |");
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 3);
  session.type("quit\n", "> quit\n\n|");
  EXPECT_EQ(session.console.finish().status, 0);
}

TEST_P(Editing, LettersAreInsertedAndDeletedAtTheCursor) {
  session.type("ed 3" + kLeft + kLeft + kLeft + kLeft, "\n> |ed 3");
  session.type("i" + kDelete + kRight + kRight + "x" + kBackspace, "\n> id |3");
  session.type(kHome + "x" + kDelete + kEnd + kBackspace + "4", "\n> xd 4|");
  session.type(kCtrlA + kDelete + "i" + kCtrlE, "\n> id 4|");
  session.type("\n", changedOnScreen(4));
}

TEST_P(Editing, WordsAndRestsOfLinesAreDeletedAndBroughtBack) {
  session.type("addipmux one http://two.org/?a=b" + kCtrlW, "\n> addipmux one |");
  session.type(kCtrlLeft + kCtrlK, "\n> addipmux |");
  session.type(kCtrlY, "\n> addipmux one |");
  session.type(kCtrlLeft + kCtrlLeft + kCtrlRight, "\n> addipmux| one");
  session.type(kCtrlU, "\n> | one");
}

TEST_P(Editing, CommandsOfTheEditingLibraryCannotBeReached) {
  session.type("\x1bx");
  session.type("bind \"\n", "> bind \"\n" + kInvalidCommand + "> |");
  for (char key = 1; key < ' '; ++key) {
    if (std::string_view("\x03\x04\n\r\x12\x13\x11\x1a\x1c").find(key) == std::string_view::npos) {
      session.type(std::string(1, key) + "\x1b" + key);
    }
  }
  for (char key = '!'; key < kBackspace[0]; ++key) {
    session.type(key == '[' || key == 'O' ? "" : std::string("\x1b") + key);
  }
  session.type(kCtrlE + kCtrlU + "id 3\n", changedOnScreen(3));
}

TEST_P(Editing, CtrlUnderscoreUndoes) {
  session.type("id 3" + kCtrlW + "44" + kCtrlU + "find", "\n> find|");
  for (const std::string line : {"> |", "> id 44|", "> id |", "> id 3|", "> |", "> |"}) {
    session.type(kCtrlUnderscore, "\n" + line);
  }
  session.type("id 3 5" + kLeft + kLeft + kCtrlW, "\n> id | 5");
  session.type(kCtrlUnderscore, "\n> id 3| 5");
}

TEST_P(Editing, OneBackspaceDeletesOneLetterOfAnyLength) {
  session.type("find ñéŁ𝄞â", "\n> find ñéŁ𝄞â|");
  session.type(kBackspace + kBackspace, "\n> find ñéŁ|");
  session.type(kLeft + kBackspace + "ü", "\n> find ñü|Ł");
  session.type(kEnd + kCtrlU + "save /é/\n", "> save /é/\nSaved config to: /é/\n> |");
}

TEST_P(Editing, LettersOfNoColumnOrTwoAreDrawnAndPassedAsOne) {
  session.type("find 漢e\u0301x", "\n> find 漢e\u0301x|");
  for (const std::string line : {"漢e\u0301|x", "漢|e\u0301x", "|漢e\u0301x"}) {
    session.type(kLeft, "\n> find " + line);
  }
  for (const std::string line : {"漢|e\u0301x", "漢e\u0301|x"}) {
    session.type(kRight, "\n> find " + line);
  }
  session.type("y", "\n> find 漢e\u0301y|x");
  session.type(kBackspace + kBackspace + kBackspace + "z", "\n> find z|x");
  session.type(kEnd + kRight + "é" + kHome + kLeft + "#", "\n> #|find zxé");
}

TEST_P(Editing, ALetterIsErasedAndMovedWithItsMarks) {
  const std::string letter = "e\u0301\u0323";
  session.type("a" + letter + "b" + letter + kLeft + kBackspace, "\n> a" + letter + "|" + letter);
  session.type(kDelete, "\n> a" + letter + "|");
  session.type("b" + letter + kLeft + kCtrlD, "\n> a" + letter + "b|");
  session.type(kCtrlT, "\n> ab" + letter + "|");
  session.type(kLeft + kCtrlT, "\n> a" + letter + "b|");
  session.type(kLeft + kCtrlT, "\n> ab" + letter + "|");
  session.type(kHome + kCtrlT + "x", "\n> x|ab" + letter);
}

TEST_P(Editing, WordsAreThoseWithTheMarksOfTheirLetters) {
  session.type("find me\u0301t ne\u0301t" + kCtrlLeft + "#", "\n> find me\u0301t #|ne\u0301t");
  session.type(kEraseWordBefore, "\n> find |ne\u0301t");
  session.type(kEraseWord, "\n> find |");
  session.type(kCtrlY, "\n> find ne\u0301t|");
  session.type(kHome + kCtrlRight + kCtrlRight + "#", "\n> find ne\u0301t#|");
}

TEST_P(Editing, WhateverWasErasedLastIsBroughtBack) {
  session.type("one two three" + kCtrlW + kBackspace + kCtrlY, "\n> one twothree|");
  session.type(kCtrlU + kCtrlU + kCtrlK + kCtrlY + kCtrlY, "\n> one twothreeone twothree|");
}

TEST_P(Editing, ALineLongerThanTheTerminalIsEditedInAllItsRows) {
  session.resize(24, 20);
  session.type("find 4567890123456789012345678", "\n> find 4567890123456\n789012345678|");
  session.type(kHome + "x", "\n> x|find 456789012345\n6789012345678");
  session.type(kEnd + kCtrlU, "\n> |");
}

/// The letters from 'a' on, again and again.
std::string alphabets(std::size_t size) {
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    text += static_cast<char>('a' + i % 26);
  }
  return text;
}

TEST_P(Editing, ALineLongerThanTheScreenIsShownAroundTheCursor) {
  const std::string end = "nopqrstuvwxyzabcdefg\nhijklmnopqrstuvwxyza\nbcdefghijklmnopqrst|";
  session.resize(3, 20);
  session.type("find " + alphabets(72), end);
  session.type(kHome, "> |find abcdefghijklm\nnopqrstuvwxyzabcdefg\nhijklmnopqrstuvwxyza");
  session.type(kEnd, end);
  session.type(kCtrlU, "> |");
}

TEST_P(Editing, ALineLongerThanAnyScreenIsReadToItsLastLetter) {
  using Size = std::pair<unsigned short, unsigned short>;
  const std::string url = "http://" + alphabets(50'000);
  korvel::thrift::hub_module::HeadendConfig withInput;
  withInput.ipInputs["input"].__set_slot(1);
  withInput.ipInputs["input"].__set_interfaceId(1);
  for (const auto& [rows, columns] :
       {Size{1, 1}, {1, 2}, {2, 1}, {1, 80}, {2, 40}, {5, 5}, {24, 80}, {300, 300}}) {
    SCOPED_TRACE(std::to_string(rows) + "x" + std::to_string(columns));
    controller.setConfig(withInput);
    ProgramProcess console(onTerminal(GetParam(), rows, columns));
    console.readUntil("for help");
    console.waitUntilLinesAreEdited(true);  // there may be no room for more than the prompt's end
    console.send("addipmux 1 1 " + url);
    for (const std::string& key :
         {kHome, std::string("x"), kBackspace, kEnd, std::string("yz"), kBackspace, kBackspace,
          kCtrlU, kCtrlY, kUp, kDown, kHome, kCtrlK, kCtrlY, std::string("\t\ncommit\nquit\n")}) {
      console.send(key);
    }
    EXPECT_EQ(console.finish().status, 0);
    const auto muxes = controller.config().ipInputs.at("input").muxes;
    ASSERT_EQ(muxes.size(), 1U);
    EXPECT_EQ(muxes.begin()->second.url, url);
  }
}

TEST_P(Editing, WindowsOfAbsurdSizesTakeNoMemory) {
  ProgramProcess console(onTerminal(GetParam(), 65'000, 65'000));
  console.readUntil("> ");
  console.send("id 3");
  console.readUntil("id 3");
  console.resize(60'000, 50'000);
  console.send(kCtrlE + "4\n");
  console.readUntil("Headend id");
  EXPECT_LT(memoryFigure("VmHWM:", std::to_string(console.pid())), 400'000'000);
}

TEST_P(Editing, TheScreenCanBeCleared) {
  session.expect(kGreeting + "> |");
  session.type("id" + kCtrlL + "x", "> idx|");
  EXPECT_EQ(session.screen.text(), "> idx|");
}

TEST_P(Editing, AnAnswerIsEditedAndNotRemembered) {
  session.askForPlsItem();
  session.type("2 x" + kBackspace + "1317", "\n2 1317|");
  session.type(kLeft + kBackspace + "\t\n", "\n2 137" + kPendingOnScreen);
  session.type(kUp, "\n" + kPending + "addpls|");
  session.type(kCtrlU + "commit\n", kPending + "commit\n> |");
  const auto items = controller.config().rfInputsScanConfig.plsItemList;
  ASSERT_EQ(items.size(), 1U);
  EXPECT_EQ(items[0].plsType, 2);
  EXPECT_EQ(items[0].plsCode, 137);
}

// ---- ending and resizing

TEST_P(Editing, CtrlCDropsTheLine) {
  session.type("id 3", "\n> id 3|");  // what the program has not read yet, Ctrl-C discards anyway
  session.type(kCtrlC, "\n> id 3^C\n> |");
  session.type("id 4\n", "\n> id 4\n" + changedOnScreen(4));
  session.type(kUp, "\n" + kPending + "id 4|");
  session.type(kCtrlC, "\n" + kPending + "id 4^C" + kPendingOnScreen);
  session.type(kCtrlC, "\n" + kPending + "^C" + kPendingOnScreen);
}

TEST_P(Editing, WhatComesTogetherWithCtrlCIsOfTheNextLine) {
  session.type("abc", "> abc|");
  session.type(kCtrlC + "id 3\n", "> abc^C\n> id 3\n" + changedOnScreen(3));
}

TEST_P(Editing, CtrlCDropsALineOfSeveralRowsWithTheCursorInTheFirst) {
  session.resize(24, 20);
  session.type("find 45678901234567890" + kHome, "\n> |find 4567890123456\n7890");
  session.type(kCtrlC, "\n> ^Cnd 4567890123456\n7890\n> |");
}

TEST_P(Editing, CtrlCDropsAnAnswer) {
  session.askForPlsItem();
  session.type("2 13", "\n2 13|");
  session.type(kCtrlC, "\n2 13^C\n" + kTooFewParameters + "\n> |");
  session.type("commit\n", "> commit\n> |");
  EXPECT_FALSE(controller.config().rfInputsScanConfig.__isset.plsItemList);
}

TEST_P(Editing, CtrlDEndsOnAnEmptyLineOnly) {
  session.type("id 33" + kCtrlD + kLeft + kCtrlD, "\n> id 3|");
  session.type("\n", kPendingOnScreen);
  session.type(kCtrlD, "\n" + kPending + "^D\n" + kNote + "|");
  EXPECT_EQ(session.console.finish().status, 0);
}

TEST_P(Editing, CtrlDInAnAnswerEndsTheConsoleAsTheEndOfInputDoes) {
  session.askForPlsItem();
  session.type(kCtrlD, kTooFewParameters + "\n\n|");
  EXPECT_EQ(session.console.finish().status, 0);
}

TEST_P(Editing, ANewWidthWrapsTheLineAnew) {
  session.type("addipmux 1 1 http://example.org/stream",
               "\n> addipmux 1 1 http://example.org/stream|");
  session.resize(24, 20);
  session.type("/a", "\n> addipmux 1 1 http:\n//example.org/stream\n/a|");
  session.type(kHome, "\n> |addipmux 1 1 http:\n//example.org/stream\n/a");
  session.resize(10, 30);
  session.type("x", "for help\n> x|addipmux 1 1 http://example\n.org/stream/a");
  session.type(kEnd, "\n.org/stream/a|");
  session.resize(24, 80);
  session.type("b", kGreeting + "> xaddipmux 1 1 http://example.org/stream/ab|");
}

TEST_P(Editing, AWidthChangedWhileACommandRunsHoldsForTheNextLine) {
  beginCall(session, controller, "commit\n");
  session.resize(24, 20);
  controller.release();
  session.expect("trollerTask\n> |");
  session.type("find 4567890123456789", "\n> find 4567890123456\n789|");
}

// ---- other terminals

TEST_F(OnATerminal, AnUnknownKindIsTakenForAnXterm) {
  Session session(onTerminal("xterm-of-another-world"));
  session.type("d 3" + kHome + "i", "\n> i|d 3");
}

TEST_F(OnATerminal, WithoutALanguageLettersAreStillLetters) {
  Start start = onTerminal();
  start.environment["LANG"] = std::nullopt;
  Session session(start);
  session.type("find é", "\n> find é|");
  session.type(kBackspace, "\n> find |");
}

}  // namespace
}  // namespace lineup::test
