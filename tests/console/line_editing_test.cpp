// Line editing, as a person sees it on a terminal.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "tests/console/keys.h"
#include "tests/console/terminal_session.h"
#include "tests/support/catalogue_file.h"
#include "tests/support/console_texts.h"
#include "tests/support/fake_controller.h"
#include "tests/support/file_content.h"
#include "tests/support/program_process.h"
#include "tests/support/sandbox.h"
#include "tests/support/screen.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;

class OnATerminal : public testing::Test {
 protected:
  /// A shell that runs the console and notes the terminal's mode, not the usual one, before and
  /// after it.
  Start watched() const {
    Start start = onTerminal();
    start.program = "/bin/sh";
    start.arguments = {"-c", "stty -echoe -echoctl; stty -a > before; " +
                                 std::string(kConsoleProgram) +
                                 "; echo \"status $?\"; stty -a > after"};
    start.environment["XDG_STATE_HOME"] = folder.path();
    start.folder = folder.path();
    return start;
  }

  void expectModeRestored() const {
    EXPECT_NE(contentOf(folder.file("before")), "");
    EXPECT_EQ(contentOf(folder.file("before")), contentOf(folder.file("after")));
  }

  TemporaryFolder folder;
  FakeController controller;
};

/// The one child of a process.
pid_t childOf(pid_t parent) {
  const std::string id = std::to_string(parent);
  return std::stoi(contentOf("/proc/" + id + "/task/" + id + "/children"));
}

// ---- editing

class Editing : public testing::TestWithParam<const char*> {
 protected:
  FakeController controller;
  Session session{onTerminal(GetParam())};
};

INSTANTIATE_TEST_SUITE_P(Terminals, Editing, testing::Values("xterm", "vt100"),
                         [](const auto& instance) { return std::string(instance.param); });

TEST_P(Editing, ATypedLineRuns) {
  session.expect(std::string(kGreeting) + "> |");
  session.type("id 3\n");
  session.expect(std::string(kGreeting) +
                 "> id 3\nHeadend id changed to: 3. Please remember to commit the changes.\n"
                 "(changes to commit) > |");
  session.type("commit\n");
  session.expect("(changes to commit) > commit\n> |");
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 3);
  session.type("quit\n");
  session.expect("> quit\n\n|");
  EXPECT_EQ(session.console.finish().status, 0);
}

TEST_P(Editing, LettersAreInsertedAndDeletedAtTheCursor) {
  session.expect("> |");
  session.type(std::string("ed 3") + kLeft + kLeft + kLeft + kLeft);
  session.expect("\n> |ed 3");
  session.type(std::string("i") + kDelete + kRight + kRight + "x" + kBackspace);
  session.expect("\n> id |3");
  session.type(std::string(kHome) + "x" + kDelete + kEnd + kBackspace + "4");
  session.expect("\n> xd 4|");
  session.type(std::string("\x01") + kDelete + "i\x05");
  session.expect("\n> id 4|");
  session.type("\n");
  session.expect(
      "Headend id changed to: 4. Please remember to commit the changes.\n"
      "(changes to commit) > |");
}

TEST_P(Editing, WordsAndRestsOfLinesAreDeletedAndBroughtBack) {
  session.expect("> |");
  session.type(std::string("addipmux one two") + kCtrlW);
  session.expect("\n> addipmux one |");
  session.type(std::string(kCtrlLeft) + kCtrlK);
  session.expect("\n> addipmux |");
  session.type(kCtrlY);
  session.expect("\n> addipmux one |");
  session.type(std::string(kCtrlLeft) + kCtrlLeft + kCtrlRight);
  session.expect("\n> addipmux| one");
  session.type(kCtrlU);
  session.expect("\n> | one");
}

TEST_P(Editing, KeysWithoutAMeaningLeaveTheLineAsItIs) {
  session.expect("> |");
  session.type(std::string("id 3") + kPageUp + "\x1b[6~\x1b[2~");
  session.type("\n");
  session.expect(
      "> id 3\nHeadend id changed to: 3. Please remember to commit the changes.\n"
      "(changes to commit) > |");
}

TEST_P(Editing, ASequenceWithoutAMeaningIsSwallowedWhole) {
  constexpr char kF5[] = "\x1b[15~";
  session.expect("> |");
  session.type("x");
  session.type("id 3");
  session.type(kF5);
  session.type(".");
  session.expect("\n> xid 3.|");
  session.type(std::string(kCtrlR));
  session.expect("\n> xid 3.|\nbck:");
  session.type(kF5);
  session.type("y");
  session.expect("\n> xid 3.|\nbck:y?");
}

TEST_P(Editing, WhatCutsASequenceShortCounts) {
  session.expect("> |");
  session.type("id 33\x1b[\x7f");
  session.expect("\n> id 3|");
  session.type("\x1b\x1b[D\x1b[1;\n");
  session.expect("Please remember to commit the changes.\n(changes to commit) > |");
}

TEST_P(Editing, CommandsOfTheEditingLibraryCannotBeReached) {
  session.expect("> |");
  session.type("\x1bx");
  session.type("bind \"\n");
  session.expect("> bind \"\nInvalid command. Try 'help'.\n> |");
  for (char key = 1; key < ' '; ++key) {
    if (std::string_view("\x03\x04\n\r\x12\x13\x11\x1a\x1c").find(key) == std::string_view::npos) {
      session.type(std::string(1, key) + "\x1b" + key);
    }
  }
  for (char key = '!'; key < kBackspace[0]; ++key) {
    session.type(key == '[' || key == 'O' ? "" : std::string("\x1b") + key);
  }
  session.type("\x05\x15id 3\n");
  session.expect("Please remember to commit the changes.\n(changes to commit) > |");
}

TEST_P(Editing, CtrlWErasesToTheBlankBefore) {
  session.expect("> |");
  session.type("addipmux 1 http://example.org:80/a?b=c  " + std::string(kCtrlW));
  session.expect("\n> addipmux 1 |");
  session.type(std::string(kCtrlY) + kLeft + kLeft + kCtrlW);
  session.expect("\n> addipmux 1 |");
  session.type(std::string(kCtrlW) + kCtrlW + kCtrlW);
  session.expect("\n> |");
}

TEST_P(Editing, CtrlUnderscoreUndoes) {
  session.expect("> |");
  session.type("id 3" + std::string(kCtrlW) + "44" + kCtrlU + "find");
  session.expect("\n> find|");
  for (const char* line : {"> |", "> id 44|", "> id |", "> id 3|", "> |", "> |"}) {
    session.type("\x1f");
    session.expect(std::string("\n") + line);
  }
  session.type("id 3 5" + std::string(kLeft) + kLeft + kCtrlW);
  session.expect("\n> id | 5");
  session.type("\x1f");
  session.expect("\n> id 3| 5");
}

TEST_P(Editing, ReturnAndLineFeedPastedAreOne) {
  session.expect("> |");
  session.type("id 3\r\nid 4\r\n");
  session.expect(
      "> id 3\nHeadend id changed to: 3. Please remember to commit the changes.\n"
      "(changes to commit) > id 4\n"
      "Headend id changed to: 4. Please remember to commit the changes.\n"
      "(changes to commit) > |");
  session.type("id 5\r");
  session.expect(" changed to: 5. Please remember to commit the changes.\n(changes to commit) > |");
  session.type("\nid 6\r");  // of a paste on a slow line
  session.expect(
      " changed to: 5. Please remember to commit the changes.\n(changes to commit) > id 6\n"
      "Headend id changed to: 6. Please remember to commit the changes.\n(changes to commit) > |");
  session.type("\r");  // typed later, it is a line
  session.console.readUntil("headendGlobalConfig");
}

TEST_P(Editing, LineFeedsPastedAloneEndALineEach) {
  session.expect("> |");
  session.type("addpls\n\nid 3\n");
  session.expect(
      "\nPlease enter all the parameters\n> id 3\n"
      "Headend id changed to: 3. Please remember to commit the changes.\n"
      "(changes to commit) > |");
}

// A terminal marks what is pasted, and may send a Return for the line feed of a Return and line
// feed.
TEST_P(Editing, EveryLineOfAPasteRunsWhateverItsEnds) {
  session.expect("> |");
  std::string typed;
  for (const std::string end : {"\r\r", "\r\n", "\r", "\n"}) {
    typed += "x";
    session.type(kPasteBegins + ("id 3" + end + "id 4" + end) + kPasteEnds + typed);
    session.expect(
        "> id 3\nHeadend id changed to: 3. Please remember to commit the changes.\n"
        "(changes to commit) > id 4\n"
        "Headend id changed to: 4. Please remember to commit the changes.\n"
        "(changes to commit) > " +
        typed + "|");
    session.type(kCtrlU);
    session.expect("(changes to commit) > |");
  }
  session.type("id 5\r");
  session.expect(" changed to: 5. Please remember to commit the changes.\n(changes to commit) > |");
  session.type("\r");  // typed, it is a line
  session.console.readUntil("headendGlobalConfig");
}

TEST_P(Editing, APasteWithoutALineEndIsEditedOn) {
  session.expect("> |");
  session.type(std::string("i 33") + kHome + kRight + kPasteBegins + "d\t" + kPasteEnds);
  session.expect("\n> id | 33");
  session.type("\x1f");
  session.expect("\n> i| 33");
  session.type(std::string(kCtrlU) + kEnd + "2" + kPasteBegins + "id" + kPasteEnds + "\t");
  session.expect("\n>  332id|");
}

TEST_P(Editing, ASearchIsForWhatIsPasted) {
  session.expect("> |");
  session.type("eit xyz\r");
  session.expect("\n> |");
  session.type(std::string(kCtrlR) + kPasteBegins + "xy" + kPasteEnds);
  session.expect("\n> eit |xyz\nbck:xy");
}

TEST_P(Editing, APasteGoesOnAfterAPause) {
  session.expect("> |");
  session.type(std::string(kPasteBegins) + "id 3\r");
  session.expect(" changed to: 3. Please remember to commit the changes.\n(changes to commit) > |");
  usleep(1'500'000);  // on a bad line
  session.type(std::string("\rid 4\r") + kPasteEnds);
  session.expect(
      " changed to: 3. Please remember to commit the changes.\n(changes to commit) > id 4\n"
      "Headend id changed to: 4. Please remember to commit the changes.\n(changes to commit) > |");
}

TEST_P(Editing, APasteWhoseEndIsLostIsOver) {
  session.expect("> |");
  const auto expectThatReturnsAreLines = [this] {
    session.type("id 3\r\r");
    session.console.readUntil("headendGlobalConfig");
    session.console.readUntil("(changes to commit) > ");
    session.screen.show("\r\n> ");
  };
  session.type(kPasteBegins + std::string("x"));
  session.expect("> x|");
  session.type(kCtrlC);
  session.expect("^C\n> |");
  expectThatReturnsAreLines();
  session.type(kPasteBegins + std::string("x"));
  session.expect("> x|");
  usleep(5'200'000);  // longer than a paste pauses
  session.type(kBackspace);
  session.expect("> |");
  expectThatReturnsAreLines();
}

TEST_P(Editing, OneBackspaceDeletesOneLetterOfAnyLength) {
  session.expect("> |");
  session.type("find ñéŁ𝄞â");
  session.expect("\n> find ñéŁ𝄞â|");
  session.type(std::string(kBackspace) + kBackspace);
  session.expect("\n> find ñéŁ|");
  session.type(std::string(kLeft) + kBackspace + "ü");
  session.expect("\n> find ñü|Ł");
  session.type(std::string(kEnd) + kCtrlU);
  session.type(
      "save /é/"
      "\n");
  session.expect("> save /é/\nSaved config to: /é/\n> |");
}

TEST_P(Editing, LettersOfNoColumnOrTwoAreDrawnAndPassedAsOne) {
  session.expect("> |");
  session.type("find 漢e\u0301x");
  session.expect("\n> find 漢e\u0301x|");
  for (const char* line : {"漢e\u0301|x", "漢|e\u0301x", "|漢e\u0301x"}) {
    session.type(kLeft);
    session.expect(std::string("\n> find ") + line);
  }
  for (const char* line : {"漢|e\u0301x", "漢e\u0301|x"}) {
    session.type(kRight);
    session.expect(std::string("\n> find ") + line);
  }
  session.type("y");
  session.expect("\n> find 漢e\u0301y|x");
  session.type(std::string(kBackspace) + kBackspace + kBackspace + "z");
  session.expect("\n> find z|x");
  session.type(std::string(kEnd) + kRight + "é" + kHome + kLeft + "#");
  session.expect("\n> #|find zxé");
}

TEST_P(Editing, ALetterIsErasedAndMovedWithItsMarks) {
  session.expect("> |");
  const std::string letter = "e\u0301\u0323";
  session.type("a" + letter + "b" + letter + kLeft + kBackspace);
  session.expect("\n> a" + letter + "|" + letter);
  session.type(kDelete);
  session.expect("\n> a" + letter + "|");
  session.type("b" + letter + kLeft + kCtrlD);
  session.expect("\n> a" + letter + "b|");
  session.type(kCtrlT);
  session.expect("\n> ab" + letter + "|");
  session.type(std::string(kLeft) + kCtrlT);
  session.expect("\n> a" + letter + "b|");
  session.type(std::string(kLeft) + kCtrlT);
  session.expect("\n> ab" + letter + "|");
  session.type(std::string(kHome) + kCtrlT + "x");
  session.expect("\n> x|ab" + letter);
}

TEST_P(Editing, WordsAreThoseWithTheMarksOfTheirLetters) {
  session.expect("> |");
  session.type("find me\u0301t ne\u0301t" + std::string(kCtrlLeft) + "#");
  session.expect("\n> find me\u0301t #|ne\u0301t");
  session.type("\x1b\x7f");
  session.expect("\n> find |ne\u0301t");
  session.type(
      "\x1b"
      "d");
  session.expect("\n> find |");
  session.type(kCtrlY);
  session.expect("\n> find ne\u0301t|");
  session.type(std::string(kHome) + kCtrlRight + kCtrlRight + "#");
  session.expect("\n> find ne\u0301t#|");
}

TEST_P(Editing, WhateverWasErasedLastIsBroughtBack) {
  session.expect("> |");
  session.type(std::string("one two three") + kCtrlW + kBackspace + kCtrlY);
  session.expect("\n> one twothree|");
  session.type(std::string(kCtrlU) + kCtrlU + kCtrlK + kCtrlY + kCtrlY);
  session.expect("\n> one twothreeone twothree|");
}

TEST_P(Editing, BytesThatMakeNoLetterAreLeftOut) {
  session.expect("> |");
  session.type(
      "i\xc3"
      "d\xff\xa9 \xfd\x88\x85\xa3\x8d\x93\xe2\x82"
      "é");
  session.expect("\n> id é|");
}

TEST_P(Editing, ALineLongerThanTheTerminalIsEditedInAllItsRows) {
  session.resize(24, 20);
  session.expect("> |");
  session.type("find 4567890123456789012345678");
  session.expect("\n> find 4567890123456\n789012345678|");
  session.type(std::string(kHome) + "x");
  session.expect("\n> x|find 456789012345\n6789012345678");
  session.type(std::string(kEnd) + kCtrlU);
  session.expect("\n> |");
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
  session.resize(3, 20);
  session.expect("> |");
  session.type("find " + alphabets(72));
  session.expect("nopqrstuvwxyzabcdefg\nhijklmnopqrstuvwxyza\nbcdefghijklmnopqrst|");
  session.type(kHome);
  session.expect("> |find abcdefghijklm\nnopqrstuvwxyzabcdefg\nhijklmnopqrstuvwxyza");
  session.type(kEnd);
  session.expect("nopqrstuvwxyzabcdefg\nhijklmnopqrstuvwxyza\nbcdefghijklmnopqrst|");
  session.type(kCtrlU);
  session.expect("> |");
}

TEST_P(Editing, ALineLongerThanAnyScreenIsReadToItsLastLetter) {
  struct Size {
    unsigned short rows;
    unsigned short columns;
  };
  constexpr Size kSizes[] = {{1, 1},  {1, 2}, {2, 1},   {1, 80},
                             {2, 40}, {5, 5}, {24, 80}, {300, 300}};
  constexpr std::size_t kLetters = 50'000;
  for (const auto& [rows, columns] : kSizes) {
    auto withInput = controller.config();
    korvel::thrift::hub_module::IPInput input;
    input.__set_slot(1);
    input.__set_interfaceId(1);
    withInput.ipInputs = {{"input", input}};
    controller.setConfig(withInput);
    Start start = onTerminal(GetParam());
    start.rows = rows;
    start.columns = columns;
    ProgramProcess console(start);
    console.readUntil("for help");
    while (console.echoes()) {  // of the prompt there may be no room for more than the end
      usleep(1'000);
    }
    const std::string url = "http://" + alphabets(kLetters);
    console.send("addipmux 1 1 " + url);
    for (const char* key : {kHome, "x", kBackspace, kEnd, "yz", kBackspace, kBackspace, kCtrlU,
                            kCtrlY, kUp, kDown, kHome, kCtrlK, kCtrlY, "\t"}) {
      console.send(key);
    }
    console.send("\ncommit\nquit\n");
    EXPECT_EQ(console.finish().status, 0) << rows << "x" << columns;
    const auto config = controller.config();
    const auto& muxes = config.ipInputs.at("input").muxes;
    ASSERT_EQ(muxes.size(), 1U) << rows << "x" << columns;
    EXPECT_EQ(muxes.begin()->second.url, url);
  }
}

TEST_P(Editing, WindowsOfAbsurdSizesTakeNoMemory) {
  Start start = onTerminal(GetParam());
  start.rows = 65'000;
  start.columns = 65'000;
  ProgramProcess console(start);
  console.readUntil("> ");
  console.send("id 3");
  console.readUntil("id 3");
  console.resize(60'000, 50'000);
  console.send(
      "\x05"
      "4\n");
  console.readUntil("Headend id");
  const std::string status = contentOf("/proc/" + std::to_string(console.pid()) + "/status");
  const std::size_t peak = status.find("VmHWM:") + 6;
  EXPECT_LT(std::stol(status.substr(peak)), 400'000) << "kB";
}

TEST_P(Editing, TheScreenCanBeCleared) {
  session.expect(std::string(kGreeting) + "> |");
  session.type(std::string("id") + kCtrlL + "x");
  session.expect("> idx|");
  EXPECT_EQ(session.screen.text(), "> idx|");
}

TEST_P(Editing, EarlierLinesComeBackWithoutRepetitionsAndEmptyLines) {
  session.expect("> |");
  for (const char* line : {"xa\n", "xb\n", "xb\n", "\n", "xc\n"}) {
    session.type(line);
  }
  session.expect("> xc\nInvalid command. Try 'help'.\n> |");
  session.type(std::string("new") + kUp);
  session.expect("\n> xc|");
  session.type(kUp);
  session.expect("\n> xb|");
  session.type(kUp);
  session.expect("\n> xa|");
  session.type(std::string(kDown) + kDown + kDown);
  session.expect("\n> new|");
}

TEST_P(Editing, AnEarlierLineThatWasChangedStaysSoUntilALineIsEntered) {
  session.expect("> |");
  session.type("xa\nxb\n");
  session.expect("> xb\nInvalid command. Try 'help'.\n> |");
  session.type(std::string("new") + kUp + "1" + kUp + "2" + kDown);
  session.expect("\n> xb1|");
  session.type(kUp);
  session.expect("\n> xa2|");
  session.type(std::string(kDown) + kDown + "3" + kUp + kDown);
  session.expect("\n> new3|");
  session.type(std::string(kUp) + "\n");
  session.expect("> xb1\nInvalid command. Try 'help'.\n> |");
  session.type(kUp);
  session.expect("\n> xb1|");
  session.type(kUp);
  session.expect("\n> xb|");
  session.type(kUp);
  session.expect("\n> xa|");
  session.type(std::string("4") + kUp + kCtrlC);
  session.expect("^C\n> |");
  session.type(std::string(kUp) + kUp + kUp);
  session.expect("\n> xa|");
}

TEST_P(Editing, ASearchLeavesWhatWasTypedAfterTheLastLine) {
  session.expect("> |");
  session.type("xa\nxb\n");
  session.expect("> xb\nInvalid command. Try 'help'.\n> |");
  session.type(std::string("new") + kCtrlR + "b" + kDown);
  session.expect("\n> new|");
  session.type(std::string(kCtrlR) + "b" + kCtrlG);
  session.expect("\n> new|");
  session.type(kUp);
  session.expect("\n> xb|");
}

TEST_P(Editing, CtrlRSearchesEarlierLines) {
  session.expect("> |");
  session.type("eit off\nid 4\neit actual\nid 5\n");
  session.expect(
      "Headend id changed to: 5. Please remember to commit the changes.\n"
      "(changes to commit) > |");
  session.type(std::string(kCtrlR) + "eit");
  session.expect("\n(changes to commit) > |eit actual\nbck:eit");
  session.type(kCtrlR);
  session.expect("\n(changes to commit) > |eit off\nbck:eit");
  session.type("\n");
  session.expect(
      "(changes to commit) > eit off\nChanged EIT working mode to: off\n"
      "(changes to commit) > |");
  session.type(std::string(kCtrlR) + "id" + kCtrlG);
  session.expect("\n(changes to commit) > |");
}

TEST_P(Editing, EscapeEndsASearchAndKeepsWhatItFound) {
  session.expect("> |");
  session.type("eit xyz\n");
  session.expect("\n> |");
  session.type(std::string(kCtrlR) + "it");
  session.expect("\n> e|it xyz\nbck:it");
  session.type("\x1b");
  session.expect("\n> e|it xyz");
  session.type("d");
  session.expect("\n> ed|it xyz");
}

TEST_P(Editing, CtrlCEndsASearchAndDropsTheLine) {
  session.expect("> |");
  session.type("eit xyz\n");
  session.expect("\n> |");
  session.type(std::string(kCtrlR) + "it");
  session.expect("\n> e|it xyz\nbck:it");
  session.type(kCtrlC);
  session.expect("\n> e^C xyz\n> |");
  session.type("x");
  session.expect("\n> x|");
}

TEST_P(Editing, CtrlRTakesTheTextLiterally) {
  session.expect("> |");
  session.type("look (a*)*b.c\nlook aaaa\n");
  session.expect("\n> look aaaa\nInvalid command. Try 'help'.\n> |");
  session.type(std::string(kCtrlR) + "(a*)*");
  session.expect("\n> look |(a*)*b.c\nbck:(a*)*");
  session.type("$");
  session.expect("\n> look |(a*)*b.c\nbck:(a*)*$?");
  session.type(std::string(kBackspace) + kBackspace + kBackspace + kBackspace + kBackspace + "a");
  session.expect("\n> look |(a*)*b.c\nbck:(a");
  session.type(kRight);
  session.expect("\n> look (|a*)*b.c");
}

TEST_P(Editing, AnAnswerIsEditedAndNotRemembered) {
  session.expect("> |");
  session.askForPlsItem();
  session.type(std::string("2 x") + kBackspace + "1317");
  session.expect("\n2 1317|");
  session.type(std::string(kLeft) + kBackspace + "\t\n");
  session.expect("\n2 137\n(changes to commit) > |");
  session.type(kUp);
  session.expect("\n(changes to commit) > addpls|");
  session.type(std::string(kCtrlU) + "commit\n");
  session.expect("(changes to commit) > commit\n> |");
  const auto items = controller.config().rfInputsScanConfig.plsItemList;
  ASSERT_EQ(items.size(), 1U);
  EXPECT_EQ(items[0].plsType, 2);
  EXPECT_EQ(items[0].plsCode, 137);
}

// ---- ending, stopping and resizing

TEST_P(Editing, CtrlCDropsTheLine) {
  session.expect("> |");
  session.type("id 3");
  session.expect("\n> id 3|");  // what the program has not read yet, Ctrl-C discards anyway
  session.type(kCtrlC);
  session.expect("\n> id 3^C\n> |");
  session.type("id 4\n");
  session.expect(
      "\n> id 4\nHeadend id changed to: 4. Please remember to commit the changes.\n"
      "(changes to commit) > |");
  session.type(kUp);
  session.expect("\n(changes to commit) > id 4|");
  session.type(kCtrlC);
  session.expect("\n(changes to commit) > id 4^C\n(changes to commit) > |");
  session.type(kCtrlC);
  session.expect("\n(changes to commit) > ^C\n(changes to commit) > |");
}

TEST_P(Editing, WhatComesTogetherWithCtrlCIsOfTheNextLine) {
  session.expect("> |");
  session.type("abc");
  session.expect("> abc|");
  session.type(std::string(kCtrlC) + "id 3\n");
  session.expect(
      "> abc^C\n> id 3\nHeadend id changed to: 3. Please remember to commit the changes.\n"
      "(changes to commit) > |");
}

TEST_P(Editing, CtrlCDropsALineOfSeveralRowsWithTheCursorInTheFirst) {
  session.resize(24, 20);
  session.expect("> |");
  session.type("find 45678901234567890" + std::string(kHome));
  session.expect("\n> |find 4567890123456\n7890");
  session.type(kCtrlC);
  session.expect("\n> ^Cnd 4567890123456\n7890\n> |");
}

TEST_P(Editing, CtrlCDropsAnAnswer) {
  session.expect("> |");
  session.askForPlsItem();
  session.type("2 13");
  session.expect("\n2 13|");
  session.type(kCtrlC);
  session.expect("\n2 13^C\nPlease enter all the parameters\n> |");
  session.type("commit\n");
  session.expect("> commit\n> |");
  EXPECT_FALSE(controller.config().rfInputsScanConfig.__isset.plsItemList);
}

TEST_P(Editing, CtrlDEndsOnAnEmptyLineOnly) {
  session.expect("> |");
  session.type(std::string("id 33") + kCtrlD + kLeft + kCtrlD);
  session.expect("\n> id 3|");
  session.type("\n");
  session.expect("(changes to commit) > |");
  session.type(kCtrlD);
  session.expect("\n(changes to commit) > ^D\nNOTE: Changes have not been committed\n|");
  EXPECT_EQ(session.console.finish().status, 0);
}

TEST_P(Editing, CtrlDInAnAnswerEndsTheConsoleAsTheEndOfInputDoes) {
  session.expect("> |");
  session.askForPlsItem();
  session.type(kCtrlD);
  session.expect("Please enter all the parameters\n\n|");
  EXPECT_EQ(session.console.finish().status, 0);
}

TEST_P(Editing, ANewWidthWrapsTheLineAnew) {
  session.expect("> |");
  session.type("addipmux 1 1 http://example.org/stream");
  session.expect("\n> addipmux 1 1 http://example.org/stream|");
  session.resize(24, 20);
  session.type("/a");
  session.expect("\n> addipmux 1 1 http:\n//example.org/stream\n/a|");
  session.type(kHome);
  session.expect("\n> |addipmux 1 1 http:\n//example.org/stream\n/a");
  session.resize(10, 30);
  session.type("x");
  session.expect("for help\n> x|addipmux 1 1 http://example\n.org/stream/a");
  session.type(kEnd);
  session.expect("\n.org/stream/a|");
  session.resize(24, 80);
  session.type("b");
  session.expect(std::string(kGreeting) + "> xaddipmux 1 1 http://example.org/stream/ab|");
}

TEST_P(Editing, AWidthChangedWhileACommandRunsHoldsForTheNextLine) {
  session.expect("> |");
  controller.answerNext(stalled(false));
  session.type("commit\n");
  controller.waitForCalls(2);
  session.resize(24, 20);
  controller.release();
  session.expect("trollerTask\n> |");
  session.type("find 4567890123456789");
  session.expect("\n> find 4567890123456\n789|");
}

// ---- completion

TEST_P(Editing, TabCompletesCommandsAndTheirWords) {
  session.expect("> |");
  session.type("\t");
  session.expect(
      "\n>\n"
      "help        findsat     addenc      rfmod       type        save\n"
      "quit        findcable   rfaddenc    rfnum       vlan        restore\n"
      "show        findip      ipaddenc    drm         addipmux    reset\n"
      "clear       adddvb      rfaddempty  eit         stdp        commit\n"
      "find        rfadddvb    addpls      id          rfinput     c\n"
      "findtdt     ipadddvb    rmpls       country     tdtscan\n"
      "> |");
  session.type("co\t");
  session.expect("\n> co\ncountry  commit\n> co|");
  session.type("u\t\t");
  session.expect(
      "\n> country\n"
      "other       uk          portugal    sweden      mexico\n"
      "spain       australia   greece      finland     southkorea\n"
      "france      italy       newzealand  maldives    taiwan\n"
      "> country |");
  session.type("fi\t");
  session.expect("\n> country finland |");
  session.type("\n");
  session.expect(
      "> country finland\nCountry changed. Please remember to commit the changes.\n"
      "(changes to commit) > |");
  session.type("rfi\tena\tsa\t\t");
  session.expect(
      "(changes to commit) > rfinput enable SAT\n"
      "SAT1    SAT2    SAT3    SAT4    SAT5    SAT6    SAT7    SAT8    SATALL\n"
      "(changes to commit) > rfinput enable SAT|");
}

TEST_P(Editing, TabCompletesTheWordBeforeTheCursorAndKeepsTheRest) {
  session.expect("> |");
  session.type(std::string("rfm qam") + kHome + "\x1b[C\x1b[C\x1b[C\t");
  session.expect("\n> rfmod| qam");
}

TEST_P(Editing, AListBelowALineOfSeveralRowsLeavesThemAlone) {
  session.resize(24, 20);
  session.expect("> |");
  session.type("drm 4567890123456789012" + std::string(kHome) + "\x1b[C\x1b[C\x1b[C\x1b[C\t");
  session.expect(
      "\n> drm 45678901234567\n89012\nlynk     off\nvsecure\n> drm |45678901234567\n89012");
}

TEST_P(Editing, WhereNothingIsPossibleTheLineStays) {
  session.expect("> |");
  session.type("xyz\t \tz\tid 11\t\t");
  session.expect("\n> xyz zid 11|");
}

class Completing : public OnATerminal {};

TEST_F(Completing, FilesForSaveAndRestore) {
  fs::create_directory(folder.file("lineups"));
  for (const char* name :
       {"lineups/north.json", "lineups/north-west.json", "letter", "with blank"}) {
    std::ofstream(folder.file(name)) << "{}";
  }
  Start start = onTerminal();
  start.folder = folder.path();
  Session session(start);
  session.expect("> |");
  session.type("save l\t");
  session.expect("\n> save l\nletter    lineups/\n> save l|");
  session.type("i\tno\t\t");
  session.expect("\n> save lineups/north\nnorth-west.json  north.json\n> save lineups/north|");
  session.type(".\t");
  session.expect("\n> save lineups/north.json |");
  session.type("\n");
  session.expect("\nSaved config to: lineups/north.json\n> |");
  EXPECT_NE(contentOf(folder.file("lineups/north.json")), "{}");
  session.type("restore w\t");
  session.expect("\n> restore w|");
}

TEST_F(Completing, NamesThatDifferWithinALetterAreCompletedUpToIt) {
  for (const char* name : {"café", "cafè"}) {
    std::ofstream(folder.file(name)) << "{}";
  }
  Start start = onTerminal();
  start.folder = folder.path();
  Session session(start);
  session.expect("> |");
  session.type("save c\t");
  session.expect("\n> save caf|");
  session.type("è\t");
  session.expect("\n> save cafè |");
}

TEST_F(Completing, NamesThatCannotBeTypedAreFound) {
  CatalogueFile catalogue(kCataloguePath);
  catalogue.insert(kSat, {{15, "25"}, {16, "L'Étoile Bleue"}});
  Session session(onTerminal());
  session.expect("> |");
  session.type("findsat l\t");
  session.expect("\n> findsat L_Étoile_Bleue |");
  session.type("\n");
  session.expect("\n> |");
  EXPECT_NE(session.screen.text().find("\n25\tL'Étoile Bleue "), std::string::npos)
      << session.screen.text();
}

TEST_F(Completing, NamesAreFoundAfterAnApostropheThatIsTyped) {
  CatalogueFile catalogue(kCataloguePath);
  catalogue.insert(kSat, {{15, "25"}, {16, "L'Étoile Bleue"}});
  catalogue.insert(kTdt, {{10, "26"}, {11, "L'Étoile Rouge"}});
  catalogue.insert(kTdt, {{10, "27"}, {11, "The \"L\" Word"}});
  Session session(onTerminal());
  session.expect("> |");
  session.type("findsat l'\t");
  session.expect("\n> findsat L_Étoile_Bleue |");
  session.type(std::string(kCtrlU) + "find l'é\t");
  session.expect("\n> find l'é|");  // another letter than É
  session.type(std::string(kBackspace) + "\t");
  session.expect("\n> find L_Étoile_|");
  session.type("\t");
  session.expect("\nL_Étoile_Bleue  L_Étoile_Rouge\n> find L_Étoile_|");
  session.type(std::string(kCtrlU) + "findtdt \"L\"\t");
  session.expect("\n> findtdt The__L__Word |");
}

TEST_F(Completing, InTheConsolesOwnFolderTheCopiesOfChanges) {
  fs::create_directory(folder.file("lineup-console"));
  const std::string copy = "lineup-console/lineup-console-20260102-030405-67.json";
  for (const std::string& name : {copy, copy + ".newer", std::string("lineup-console/history"),
                                  std::string("lineup-console/history.new")}) {
    std::ofstream(folder.file(name)) << "{}\n";
  }
  Start start = onTerminal();
  start.folder = folder.path();
  start.environment["XDG_STATE_HOME"] = folder.path();
  Session session(start);
  session.expect("> |");
  for (const std::string command : {"restore", "save"}) {
    session.type(command + " line\t\t");
    session.expect("\n> " + command + " " + copy + " |");
    session.type(kCtrlU);
  }
}

TEST_F(Completing, ServicesAreListedWithTheirNames) {
  CatalogueFile catalogue(kCataloguePath);
  catalogue.insert(kSat, {{15, "1017"}, {16, "Canal Uno"}});
  catalogue.insert(kTdt, {{10, "1018"}, {11, "Canal Dos"}});
  catalogue.insert(kIP, {{6, "22"}, {7, "Niñós TV"}});
  Session session(onTerminal());
  session.expect("> |");
  session.type("adddvb \t");
  session.expect(
      "\n> adddvb\n"
      "22  Niñós TV (IP)      1017  Canal Uno (SAT)  1018  Canal Dos (TDT)\n"
      "> adddvb |");
  session.type("1\t");
  session.expect("\n> adddvb 101|");
  session.type("\t");
  session.expect("\n> adddvb 101\n1017  Canal Uno (SAT)  1018  Canal Dos (TDT)\n> adddvb 101|");
  session.type("8\t");
  session.expect("\n> adddvb 1018\n1018  Canal Dos (TDT)\n> adddvb 1018 |");
  session.type(std::string(kCtrlU) + "rfadddvb nIñ\t");
  session.expect("\n22  Niñós TV (IP)\n> rfadddvb 22 |");
  session.type(std::string(kCtrlU) + "ipadddvb CANAL\t");
  session.expect(
      "\n> ipadddvb CANAL\n1017  Canal Uno (SAT)  1018  Canal Dos (TDT)\n"
      "> ipadddvb CANAL|");
  session.type(std::string(kCtrlU) + "adddvb c\t");
  session.expect("\n> adddvb c\n1017  Canal Uno (SAT)  1018  Canal Dos (TDT)\n> adddvb c|");
}

TEST_F(Completing, SlotsAndInterfacesOfTheIPInputs) {
  auto config = controller.config();
  for (const auto& [slot, interface, address] :
       {std::tuple{1, 1, "10.0.0.1"}, {1, 2, "10.0.0.2"}, {4, 1, "10.0.0.3"}}) {
    korvel::thrift::hub_module::IPInput input;
    input.__set_slot(slot);
    input.__set_interfaceId(interface);
    input.address = address;
    config.ipInputs[address] = input;
  }
  controller.setConfig(config);
  Session session(onTerminal());
  session.expect("> |");
  session.type("addipmux \t");
  session.expect("\n> addipmux\n1  4\n> addipmux |");
  session.type("1\t\t");
  session.expect("\n> addipmux 1\n1  10.0.0.1  2  10.0.0.2\n> addipmux 1 |");
  session.type("2\t");
  session.expect("\n2  10.0.0.2\n> addipmux 1 2 |");
}

TEST_F(Completing, NamesCannotDisturbTheTerminal) {
  CatalogueFile catalogue(kCataloguePath);
  catalogue.insert(kSat, {{15, "1"},
                          {16,
                           "Clear\x1b[2J\nit\x9b"
                           "all\xc2\x9b!"}});
  Session session(onTerminal());
  session.expect("> |");
  session.type("adddvb 1\t");
  session.expect(std::string(kGreeting) + "> adddvb 1\n1  Clear?[2J?it?all?! (SAT)\n> adddvb 1 |");
}

TEST_F(Completing, AnUnreadableCatalogueCompletesToNothingAtOnceAndSilently) {
  Session session(onTerminal());
  session.expect("> |");
  session.type("adddvb \t");  // there is none
  session.type("1");
  session.expect("\n> adddvb 1|");
  CatalogueFile catalogue(kCataloguePath);
  catalogue.insert(kSat, {{15, "17"}, {16, "Canal Uno"}});
  {
    const CatalogueLock lock(kCataloguePath);
    session.type("\t7");
    session.expect("\n> adddvb 17|");
  }
  session.type("\t");
  session.expect("\n> adddvb 17\n17  Canal Uno (SAT)\n> adddvb 17 |");
  std::ofstream(kCataloguePath) << "no database at all";
  session.type(std::string(kBackspace) + kBackspace + "\t7");
  session.expect(std::string(kGreeting) + "> adddvb 17\n17  Canal Uno (SAT)\n> adddvb 17|");
}

TEST_F(Completing, ALargeCatalogueIsListedAsFarAsTheScreenHasRoom) {
  CatalogueFile catalogue(kCataloguePath);
  catalogue.execute(
      "WITH RECURSIVE n(i) AS (VALUES(100000) UNION ALL SELECT i + 1 FROM n WHERE i < 199999) "
      "INSERT INTO availableSatService(service_id, service_name) SELECT i, 'Channel ' || i FROM n");
  Start start = onTerminal();
  start.rows = 10;
  start.columns = 40;
  Session session(start);
  session.expect("> |");
  session.type("adddvb \t\t");
  session.expect(
      "> adddvb 1\n"
      "100000  Channel 100000 (SAT)\n"
      "100001  Channel 100001 (SAT)\n"
      "100002  Channel 100002 (SAT)\n"
      "100003  Channel 100003 (SAT)\n"
      "100004  Channel 100004 (SAT)\n"
      "100005  Channel 100005 (SAT)\n"
      "100006  Channel 100006 (SAT)\n"
      "(99993 more)\n"
      "> adddvb 1|");
}

// ---- signals

TEST_F(OnATerminal, AnEndingSignalAtThePromptRestoresTheTerminalAndRescuesThePendingEdits) {
  for (const int signal : {SIGTERM, SIGHUP}) {
    Session session(watched());
    session.expect("> |");
    session.type("id 7\n");
    session.expect("(changes to commit) > |");
    session.type("addipmux");
    session.expect("(changes to commit) > addipmux|");
    kill(childOf(session.console.pid()), signal);
    const std::string text = session.console.finish().out;
    const std::string where = kUncommittedIn + folder.path();
    EXPECT_NE(text.find("\r\n" + where), std::string::npos) << text;
    EXPECT_NE(text.find("status " + std::to_string(128 + signal)), std::string::npos) << text;
    expectModeRestored();
  }
}

TEST_F(OnATerminal, EveryOtherWayOutRestoresTheTerminalToo) {
  for (const std::string& keys :
       {std::string("quit\n"), std::string(kCtrlD), std::string(kCtrlBackslash),
        std::string("rfinput enable SAT1\n")}) {  // an input that the status lacks: it aborts
    Session session(watched());
    session.expect("> |");
    session.type(keys);
    session.console.finish();
    expectModeRestored();
  }
}

TEST_F(OnATerminal, AHungUpTerminalEndsTheConsoleAfterTheRescue) {
  Start start = onTerminal();
  start.environment["XDG_STATE_HOME"] = folder.path();
  start.environment["LINEUP_HISTORY"] = "";
  {
    Session session(start);
    session.expect("> |");
    session.type("id 7\n");
    session.expect("(changes to commit) > |");
    session.console.hangUp();
    EXPECT_EQ(session.console.finish().signal, SIGHUP);
  }
  EXPECT_FALSE(fs::is_empty(folder.file("lineup-console")));
}

TEST_F(OnATerminal, ThatHangsUpEndsTheConsoleAlsoWhereTheSignalIsIgnored) {
  Start start = onTerminal();
  start.program = "/bin/sh";
  start.arguments = {"-c", "trap '' HUP; exec " + std::string(kConsoleProgram)};
  start.environment["XDG_STATE_HOME"] = folder.path();
  start.environment["LINEUP_HISTORY"] = "";
  {
    Session session(start);
    session.expect("> |");
    session.type("id 7\n");
    session.expect("(changes to commit) > |");
    session.type("commit");
    session.expect("> commit|");
    session.console.hangUp();
    EXPECT_EQ(session.console.finish().signal, SIGHUP);
  }
  EXPECT_FALSE(fs::is_empty(folder.file("lineup-console")));
  EXPECT_EQ(controller.methods(), std::vector<std::string>{"getHeadendConfig"});
}

TEST_F(OnATerminal, CtrlZStopsAndFgGoesOn) {
  Start start = onTerminal();
  start.program = "/bin/sh";
  start.arguments = {"-c", "set -m; stty -echoctl; " + std::string(kConsoleProgram) +
                               "; stty -a > stopped; read wait; fg >/dev/null"};
  start.folder = folder.path();
  Session session(start);
  session.expect("> |");
  session.type("id 3");
  session.expect("\n> id 3|");
  session.type(kCtrlZ);
  while (contentOf(folder.file("stopped")).empty()) {
    usleep(10'000);
  }
  EXPECT_NE(contentOf(folder.file("stopped")).find(" icanon"), std::string::npos);
  EXPECT_NE(contentOf(folder.file("stopped")).find("-echoctl"), std::string::npos);
  session.type("\n");
  session.expect("\n> id 3|");
  session.type("\n");
  session.expect("(changes to commit) > |");
  session.type("commit\nid 4");
  session.expect("> id 4|");
  session.type(kCtrlC);
  session.expect("> id 4^C\n> |");
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 3);
}

TEST_F(OnATerminal, StopsLeaveTheModeThatItRestores) {
  Start start = onTerminal();
  start.program = "/bin/sh";
  start.arguments = {"-c", "stty -a >before; set -m; " + std::string(kConsoleProgram) +
                               "; stty -a >first; fg >/dev/null; stty -a >second; fg >/dev/null; "
                               "stty -a >after"};
  start.folder = folder.path();
  Session session(start);
  session.expect("> |");
  session.type("id 3");
  for (const char* const stop : {"first", "second"}) {
    session.expect("> id 3|");
    session.type(kCtrlZ);
    session.console.readWhile([&] { return contentOf(folder.file(stop)).empty(); });
    EXPECT_EQ(contentOf(folder.file("before")), contentOf(folder.file(stop)));
    session.console.readWhile([&] { return session.console.echoes(); });
  }
  session.expect("> id 3|");
  session.type("\nreset\nquit\n");
  session.console.finish();
  expectModeRestored();
}

/// Stops the console, which `command` runs, and lets it go on by one "fg", again and again.
void expectThatOneFgIsEnough(const std::string& command) {
  constexpr int kStops = 12;
  Start start = onTerminal();
  start.program = "/bin/sh";
  start.arguments = {
      "-c", "set -m; " + command + "; while echo stopped; read go; do fg >/dev/null; done"};
  Session session(start);
  session.expect("> |");
  std::string line;
  for (int stop = 0; stop < kStops; ++stop) {
    session.type("x");
    line += "x";
    session.expect("> " + line + "|");
    session.type(kCtrlZ);
    session.console.readUntil("stopped\r\n");
    session.type("\n");
    session.screen.show("\x1b[2J\x1b[H");
    session.expect("> " + line + "|");
  }
  session.type("\n");
  session.expect("> " + line + "\nInvalid command. Try 'help'.\n> |");
  session.type("quit\n");
  session.expect("stopped\n|");
}

// The script stops before the console does, and the shell lets both go on at once.
TEST_F(OnATerminal, OneFgIsEnoughThroughAScript) {
  expectThatOneFgIsEnough("sh -c '" + std::string(kConsoleProgram) + "; :'");
}

TEST_F(OnATerminal, OneFgIsEnoughThroughSudo) {
  Start sudo;
  sudo.program = "/bin/sh";
  sudo.arguments = {"-c", "sudo -n true"};
  if (run(sudo).status != 0) {
    GTEST_SKIP() << "no sudo without a password";
  }
  expectThatOneFgIsEnough("sudo -n env XDG_STATE_HOME=\"$XDG_STATE_HOME\" " +
                          std::string(kConsoleProgram));
}

TEST_F(OnATerminal, AStopThatNobodyAskedForLeavesTheTerminalUsable) {
  Session session(onTerminal());
  session.expect("> |");
  session.type("id 3");
  session.expect("\n> id 3|");
  session.console.signal(SIGSTOP);
  session.console.signal(SIGCONT);
  session.type("x");
  session.expect("\n> id 3x|");
}

// ---- typing ahead

TEST_F(OnATerminal, NothingPastedIsLost) {
  std::string script;
  for (int i = 0; i < 200; ++i) {
    script += "addpls\n1 " + std::to_string(i) + "\n";
    if (i % 50 == 0) {
      script += "commit\nreset\n";
    }
  }
  Session session(watched());
  session.expect("> |");
  session.type(script + "commit\nquit\necho what comes after is the shell's\n");
  session.console.readUntil("status 0");
  const auto items = controller.config().rfInputsScanConfig.plsItemList;
  ASSERT_EQ(items.size(), 200U);
  for (std::size_t i = 0; i < items.size(); ++i) {
    EXPECT_EQ(items[i].plsCode, static_cast<int32_t>(i));
  }
}

/// Types `keys`, which begin a call; its answer goes on, or breaks off, when it is released.
void beginCall(Session& session, FakeController& controller, const std::string& keys,
               bool goesOn = true) {
  const std::size_t calls = controller.calls().size();
  controller.answerNext(stalled(goesOn));
  session.type(keys);
  controller.waitForCalls(calls + 1);
}

constexpr char kConfigPrinted[] = "headendGlobalConfig";

TEST_F(OnATerminal, ReturnAndLineFeedAreOneInAPasteThatComesWhileCommandsRun) {
  Session session(onTerminal());
  session.expect("> |");
  beginCall(session, controller, "id 2\r\ncommit\r");
  session.type("\nid 3\r\nid 4\r\nid 5\r");
  session.console.readUntil("id 5\r\n");
  controller.release();
  session.console.readUntil("changed to: 5.");
  session.console.readUntil("(changes to commit) > ");
  session.type("\nid 6\r\n");
  const std::string rest = session.console.readUntil("changed to: 6.");
  EXPECT_EQ(rest.find(kConfigPrinted), std::string::npos) << rest;
  session.type("quit\r\n");
  const Outcome outcome = session.console.finish();
  EXPECT_EQ(outcome.out.find(kConfigPrinted), std::string::npos) << outcome.out;
  for (int id = 2; id <= 6; ++id) {
    EXPECT_NE(outcome.out.find("changed to: " + std::to_string(id)), std::string::npos);
  }
}

TEST_F(OnATerminal, ReturnAndLineFeedAreOneInAPasteLargerThanTheTerminalsBuffer) {
  constexpr int kLines = 200;
  const std::string ignored(60, 'x');
  std::string paste;
  for (int i = 0; i < kLines; ++i) {
    paste += i % 20 == 0 ? "commit\r\n" : "";
    paste += "id " + std::to_string(2 - i % 2) + " " + ignored + "\r\n";
  }
  Session session(onTerminal());
  session.expect("> |");
  session.type(paste + "quit\r\n");
  const std::string text = session.console.finish().out;
  EXPECT_EQ(text.find(kConfigPrinted), std::string::npos);
  int lines = 0;
  for (std::size_t at = 0; (at = text.find("Headend id ", at)) != std::string::npos; ++at) {
    ++lines;
  }
  EXPECT_EQ(lines, kLines) << text;
}

TEST_F(OnATerminal, TwoReturnsAreOneInAMarkedPasteThatComesWhileCommandsRun) {
  Session session(onTerminal());
  session.expect("> |");
  beginCall(session, controller, kPasteBegins + std::string("id 2\r\rcommit\r"));
  session.type("\rid 3\r\raddpls\r\r1 5\r\rid 4\r");
  session.console.readUntil("id 4\r\n");
  controller.release();
  session.console.readUntil("changed to: 4.");
  session.console.readUntil("(changes to commit) > ");
  session.type("\rcommit\r\rquit\r\r" + std::string(kPasteEnds));
  const Outcome outcome = session.console.finish();
  EXPECT_EQ(outcome.out.find(kConfigPrinted), std::string::npos) << outcome.out;
  EXPECT_EQ(outcome.out.find("Please enter all"), std::string::npos) << outcome.out;
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 4);
  EXPECT_EQ(controller.config().rfInputsScanConfig.plsItemList.size(), 1U);
}

TEST_F(OnATerminal, TheMarkAfterAPasteIsNotLeftToTheNextProgram) {
  for (const std::string end : {"\r", "\r\r", "\r\n"}) {
    Start start = watched();
    start.arguments[1] += "; read line; echo \"next: $line\"";
    Session session(start);
    session.expect("> |");
    session.type(kPasteBegins + ("id 3" + end + "reset" + end + "quit" + end) + kPasteEnds);
    session.console.readUntil("status 0");
    session.type("for the shell\n");
    session.console.readUntil("next: for the shell\r\n");
  }
}

TEST_F(OnATerminal, PastesAreMarkedOnlyWhileALineIsEdited) {
  Start start = onTerminal();
  start.environment["PAGER"] = "echo pager; cat; echo end";
  start.rows = 3;
  ProgramProcess console(start);
  console.readUntil(std::string("> ") + kMarksOn);
  const auto expectBetweenLines = [&](const std::string& keys, const std::string& output) {
    console.send(keys);
    console.readUntil(kMarksOff);
    EXPECT_NE(console.readUntil(kMarksOn).find(output), std::string::npos) << keys;
  };
  expectBetweenLines("help\r", "\nAvailable commands:");
  expectBetweenLines("id 3\rid 4\r", " to: 3. Please remember");
  expectBetweenLines(kF2, "\nid: 1 -> 4\r\n");
  expectBetweenLines(kF3, "\npager\r\n");
  expectBetweenLines(kCtrlC, "^C");
  console.signal(SIGTERM);
  const std::string text = console.finish().out;
  EXPECT_GT(text.rfind(kMarksOff), text.rfind(kMarksOn)) << text;
}

TEST_F(OnATerminal, PastesAreNotMarkedWhileTheConsoleIsStopped) {
  Start start = onTerminal();
  start.program = "/bin/sh";
  start.arguments = {
      "-c", "set -m; " + std::string(kConsoleProgram) + "; echo stopped; read go; fg >/dev/null"};
  ProgramProcess console(start);
  console.readUntil(std::string("> ") + kMarksOn);
  console.send(kCtrlZ);
  console.readUntil(kMarksOff);
  console.readUntil("stopped\r\n");
  console.send("\n");
  console.readUntil(std::string("> ") + kMarksOn);
}

TEST_F(OnATerminal, OfEveryUsualKindIsAskedToMarkPastes) {
  for (const char* const type : {"xterm", "screen", "tmux-256color", "linux", "vt220", "no-such"}) {
    ProgramProcess console(onTerminal(type));
    console.readUntil(std::string("> ") + kMarksOn);
  }
}

TEST_F(OnATerminal, ThatMayNotKnowTheControlSequencesIsNotAskedToMarkPastes) {
  ProgramProcess console(onTerminal("vt52"));
  console.readUntil("> ");
  console.send("quit\r");
  EXPECT_EQ(console.finish().out.find("2004"), std::string::npos);
}

TEST_F(OnATerminal, AReturnTypedWhileACommandRunsIsALine) {
  Session session(onTerminal());
  session.expect("> |");
  session.type("commit");
  session.expect("> commit|");
  beginCall(session, controller, "\r");
  session.type("\r");
  session.console.readUntil("\r\n\r\n");
  controller.release();
  session.console.readUntil(kConfigPrinted);
}

TEST_F(OnATerminal, LineFeedsPastedAloneEndALineEachWhileACommandRuns) {
  Session session(onTerminal());
  session.expect("> |");
  beginCall(session, controller, "commit\n");
  session.type("addpls\n\nid 3\n");
  session.console.readUntil("id 3\r\n");
  controller.release();
  session.console.readUntil("Please enter all the parameters\r\n");
  session.console.readUntil("changed to: 3.");
}

TEST_F(OnATerminal, CtrlDTypedAheadEndsTheConsole) {
  Session session(onTerminal());
  session.expect("> |");
  controller.answerNext(stalled(false));
  session.type("commit\n");
  controller.waitForCalls(2);
  session.type("id 3\n");
  session.type(kCtrlD);
  session.console.readUntil("id 3");
  controller.release();
  session.expect("NOTE: Changes have not been committed\n|");
  EXPECT_EQ(session.console.finish().status, 0);
}

TEST_F(OnATerminal, AZeroDoesNothingToTheNextKey) {
  Session session(onTerminal());
  session.expect("> |");
  session.type("id 3" + std::string(1, '\0') + "\r");
  session.expect("(changes to commit) > |");
  session.type("id 4" + std::string(1, '\0') + kBackspace + "5\r");
  session.expect(
      "Headend id changed to: 5. Please remember to commit the changes.\n(changes to commit) > |");
}

TEST_F(OnATerminal, AZeroTypedAheadAfterALineIsNoEndOfInput) {
  Session session(onTerminal());
  session.expect("> |");
  session.type("id 3\n");
  session.expect("(changes to commit) > |");
  for (const std::string& rest : {std::string(1, '\0'), std::string("\0x", 2)}) {
    beginCall(session, controller, "rfinput status\n", false);
    session.type("eit off\n" + rest);
    controller.release();
    session.expect("(changes to commit) > " + rest.substr(1) + "|");
    session.type(std::string(kCtrlU));
  }
  session.type("id 4\n");
  session.expect(
      "Headend id changed to: 4. Please remember to commit the changes.\n(changes to commit) > |");
}

TEST_F(OnATerminal, AReturnTypedAheadIsTheAnswerThatIsAskedFor) {
  Session session(onTerminal());
  session.expect("> |");
  beginCall(session, controller, "rfinput status\r", false);
  session.type("addpls\r\rid 4\r");
  controller.release();
  session.expect(
      "Headend id changed to: 4. Please remember to commit the changes.\n(changes to commit) > |");
  EXPECT_NE(session.screen.text().find("Please enter all the parameters"), std::string::npos);
}

TEST_F(OnATerminal, AZeroTypedAheadDoesNothing) {
  Session session(onTerminal());
  session.expect("> |");
  const std::string zero(1, '\0');
  session.type("id 3\n" + zero);  // in one: it comes between two lines
  session.expect("(changes to commit) > |");
  for (const std::string& keys : {zero, zero + zero}) {
    beginCall(session, controller, "rfinput status\n", false);
    session.type(keys);
    controller.release();
    session.expect("\n(changes to commit) > |");
  }
  session.type("id 4\n");
  session.expect(
      "Headend id changed to: 4. Please remember to commit the changes.\n(changes to commit) > |");
}

TEST_F(OnATerminal, WhatIsTypedAfterQuitIsLeftToTheNextProgram) {
  Start start = watched();
  start.arguments[1] += "; read line; echo \"next: $line\"";
  Session session(start);
  session.expect("> |");
  session.type("quit\nfor the shell\n");
  session.console.readUntil("next: for the shell");
}

TEST_F(OnATerminal, ThatIsNotKnownIsTakenForAnXterm) {
  Session session(onTerminal("xterm-of-another-world"));
  session.expect("> |");
  session.type(std::string("d 3") + kHome + "i");
  session.expect("\n> i|d 3");
}

// ---- where lines are not edited

class PlainReading : public testing::TestWithParam<std::optional<std::string>> {};

INSTANTIATE_TEST_SUITE_P(Terminals, PlainReading,
                         testing::Values("dumb", "", "emacs", std::nullopt),
                         [](const auto& instance) {
                           const std::string name = instance.param.value_or("unset");
                           return name.empty() ? "empty" : name.substr(0, name.find('-'));
                         });

/// Types a session of every kind of line, one after the other.
std::string typeSession(const std::string& program, const Start& like) {
  Start start = like;
  start.program = program;
  ProgramProcess console(start);
  console.readUntil("> ");
  for (const char* line : {"id 3x\x7f\n", "\n", "addpls\n2 13\n", "find\tx\n", "é\x7f\n"}) {
    console.send(line);
    console.readUntil("(changes to commit) > ");
  }
  console.send(kCtrlD);
  return console.finish().out;
}

TEST_P(PlainReading, IsThatOfABuildWithoutLineEditing) {
  Start start = onTerminal();
  start.environment["TERM"] = GetParam();
  std::array<std::string, 2> sessions;
  for (std::string& session : sessions) {
    const FakeController controller;
    session =
        typeSession(&session == sessions.data() ? kConsoleProgram : LINEUP_CONSOLE_PLAIN, start);
  }
  EXPECT_EQ(sessions[0], sessions[1]);
  EXPECT_EQ(sessions[0].find('\x1b'), std::string::npos);
}

/// Lines for every command, and odd ones.
std::string everyKindOfLine() {
  std::string lines =
      "\n \n\t\nhelp\nshow\nclear\nadddvb\nid 3\nid é\naddpls\n1 2\naddpls\n\nrfmod qam\nrfmod\n"
      "\x04\x03\x1b[A\nsave\nrfinput\nrfinput x\ntdtscan status\n\xff\xfe\ncommit\n";
  lines += std::string("xyz\0abc\n", 8);
  lines += std::string(100'000, 'x') + "\nrmpls\naddpls";
  return lines;
}

TEST(OnAPipe, EveryByteIsThatOfABuildWithoutLineEditing) {
  for (const char* type : {"xterm", "dumb"}) {
    std::array<Outcome, 2> outcomes;
    for (Outcome& outcome : outcomes) {
      const FakeController controller;
      Start start = onTerminal(type);
      start.terminal = false;
      start.program = &outcome == outcomes.data() ? kConsoleProgram : LINEUP_CONSOLE_PLAIN;
      outcome = run(start, everyKindOfLine());
    }
    EXPECT_EQ(outcomes[0].out, outcomes[1].out);
    EXPECT_EQ(outcomes[0].err, outcomes[1].err);
    EXPECT_EQ(outcomes[0].status, 0);
    EXPECT_EQ(outcomes[0].out.find('\x1b'), outcomes[0].out.find("\x1b[A")) << "but what was sent";
  }
}

TEST_F(OnATerminal, WithOneOfInputAndOutputElsewhereLinesAreNotEdited) {
  const std::string program = kConsoleProgram;
  for (const std::string& command : {"printf 'id 3\\n' | " + program, program + " | cat"}) {
    Start start = onTerminal();
    start.program = "/bin/sh";
    start.arguments = {"-c", command};
    ProgramProcess console(start);
    console.readUntil("> ");
    console.send(command.ends_with("cat") ? "id 3\n" : "");
    console.readUntil("(changes to commit) > ");
    console.send(kCtrlD);
    EXPECT_EQ(console.finish().out.find('\x1b'), std::string::npos);
  }
}

TEST_F(OnATerminal, WithoutALanguageLettersAreStillLetters) {
  Start start = onTerminal();
  start.environment["LANG"] = std::nullopt;
  Session session(start);
  session.expect("> |");
  session.type("find é");
  session.expect("\n> find é|");
  session.type(kBackspace);
  session.expect("\n> find |");
}

}  // namespace
}  // namespace lineup::test
