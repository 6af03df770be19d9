// What is pasted, and what is typed while a command runs, on a terminal where lines are edited.

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>

#include "tests/console/keys.h"
#include "tests/console/terminal_session.h"
#include "tests/support/matches.h"

namespace lineup::test {
namespace {

using Pasted = OnEachTerminal;

INSTANTIATE_TEST_SUITE_P(Terminals, Pasted, kTerminals, nameOfTerminal);

/// Is printed for a line without a word.
constexpr char kConfigPrinted[] = "headendGlobalConfig";

TEST_P(Pasted, ReturnAndLineFeedAreOne) {
  session.type("id 3\r\nid 4\r\n",
               "> id 3\n" + idChanged(3) + kPending + "id 4\n" + changedOnScreen(4));
  session.type("id 5\r", changedOnScreen(5));
  session.type("\nid 6\r",  // of a paste on a slow line
               idChanged(5) + kPending + "id 6\n" + changedOnScreen(6));
  session.type("\r");  // typed later, it is a line
  session.console.readUntil(kConfigPrinted);
}

TEST_P(Pasted, LineFeedsAloneEndALineEach) {
  session.type("addpls\n\nid 3\n", "\n" + kTooFewParameters + "\n> id 3\n" + changedOnScreen(3));
}

/// The lines, each ended by `end`, as a terminal marks what is pasted.
std::string pasted(std::initializer_list<const char*> lines, const std::string& end) {
  std::string text = kPasteBegins;
  for (const char* line : lines) {
    text += line;
    text += end;
  }
  return text + kPasteEnds;
}

// A terminal may send a Return for the line feed of a Return and line feed.
TEST_P(Pasted, EveryLineRunsWhateverItsEnds) {
  const std::string both =
      "> id 3\n" + idChanged(3) + kPending + "id 4\n" + idChanged(4) + kPending;
  std::string typed;
  for (const char* end : {"\r\r", "\r\n", "\r", "\n"}) {
    typed += "x";
    std::string seen = both;
    seen += typed;
    session.type(pasted({"id 3", "id 4"}, end) + typed, seen + "|");
    session.type(kCtrlU, kPendingOnScreen);
  }
  session.type("id 5\r", changedOnScreen(5));
  session.type("\r");  // typed, it is a line
  session.console.readUntil(kConfigPrinted);
}

TEST_P(Pasted, WithoutALineEndItIsEditedOn) {
  session.type("i 33" + kHome + kRight + kPasteBegins + "d\t" + kPasteEnds, "\n> id | 33");
  session.type(kCtrlUnderscore, "\n> i| 33");
  session.type(kCtrlU + kEnd + "2" + kPasteBegins + "id" + kPasteEnds + "\t", "\n>  332id|");
}

TEST_P(Pasted, IsSearchedFor) {
  session.type("eit xyz\r", "\n> |");
  session.type(kCtrlR + kPasteBegins + "xy" + kPasteEnds, "\n> eit |xyz\nbck:xy");
}

TEST_P(Pasted, GoesOnAfterAPause) {
  session.type(kPasteBegins + "id 3\r", changedOnScreen(3));
  usleep(1'500'000);  // on a bad line
  session.type("\rid 4\r" + kPasteEnds, idChanged(3) + kPending + "id 4\n" + changedOnScreen(4));
}

TEST_P(Pasted, IsOverWhereItsEndIsLost) {
  const auto expectThatReturnsAreLines = [this] {
    session.type("id 3\r\r");
    session.console.readUntil(kConfigPrinted);
    session.console.readUntil(kPending);
    session.screen.show("\r\n> ");
  };
  session.type(kPasteBegins + "x", "> x|");
  session.type(kCtrlC, "^C\n> |");
  expectThatReturnsAreLines();
  session.type(kPasteBegins + "x", "> x|");
  usleep(5'200'000);  // longer than a paste pauses
  session.type(kBackspace, "> |");
  expectThatReturnsAreLines();
}

TEST_F(OnATerminal, NothingPastedIsLost) {
  std::string script;
  for (int i = 0; i < 200; ++i) {
    script += "addpls\n1 " + std::to_string(i) + "\n";
    if (i % 50 == 0) {
      script += "commit\nreset\n";
    }
  }
  Session session(watched());
  session.type(script + "commit\nquit\necho what comes after is the shell's\n");
  session.console.readUntil("status 0");
  const auto items = controller.config().rfInputsScanConfig.plsItemList;
  ASSERT_EQ(items.size(), 200U);
  for (std::size_t i = 0; i < items.size(); ++i) {
    EXPECT_EQ(items[i].plsCode, static_cast<int32_t>(i));
  }
}

// ---- while commands run

TEST_F(OnATerminal, ReturnAndLineFeedAreOneInAPasteThatComesWhileCommandsRun) {
  Session session(onTerminal());
  beginCall(session, controller, "id 2\r\ncommit\r", true);
  session.type("\nid 3\r\nid 4\r\nid 5\r");
  session.console.readUntil("id 5\r\n");
  controller.release();
  session.console.readUntil("changed to: 5.");
  session.console.readUntil(kPending);
  session.type("\nid 6\r\n");
  session.console.readUntil("changed to: 6.");
  session.type("quit\r\n");
  const std::string text = session.console.finish().out;
  EXPECT_EQ(text.find(kConfigPrinted), std::string::npos) << text;
  for (int id = 2; id <= 6; ++id) {
    EXPECT_NE(text.find("changed to: " + std::to_string(id)), std::string::npos);
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
  session.type(paste + "quit\r\n");
  const std::string text = session.console.finish().out;
  EXPECT_EQ(text.find(kConfigPrinted), std::string::npos);
  EXPECT_EQ(count(text, "Headend id "), kLines) << text;
}

TEST_F(OnATerminal, TwoReturnsAreOneInAMarkedPasteThatComesWhileCommandsRun) {
  Session session(onTerminal());
  beginCall(session, controller, kPasteBegins + "id 2\r\rcommit\r", true);
  session.type("\rid 3\r\raddpls\r\r1 5\r\rid 4\r");
  session.console.readUntil("id 4\r\n");
  controller.release();
  session.console.readUntil("changed to: 4.");
  session.console.readUntil(kPending);
  session.type("\rcommit\r\rquit\r\r" + kPasteEnds);
  const std::string text = session.console.finish().out;
  EXPECT_EQ(text.find(kConfigPrinted), std::string::npos) << text;
  EXPECT_EQ(text.find("Please enter all"), std::string::npos) << text;
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 4);
  EXPECT_EQ(controller.config().rfInputsScanConfig.plsItemList.size(), 1U);
}

TEST_F(OnATerminal, AReturnTypedWhileACommandRunsIsALine) {
  Session session(onTerminal());
  session.type("commit", "> commit|");
  beginCall(session, controller, "\r", true);
  session.type("\r");
  session.console.readUntil("\r\n\r\n");
  controller.release();
  session.console.readUntil(kConfigPrinted);
}

TEST_F(OnATerminal, LineFeedsPastedAloneEndALineEachWhileACommandRuns) {
  Session session(onTerminal());
  beginCall(session, controller, "commit\n", true);
  session.type("addpls\n\nid 3\n");
  session.console.readUntil("id 3\r\n");
  controller.release();
  session.console.readUntil(kTooFewParameters + "\r\n");
  session.console.readUntil("changed to: 3.");
}

TEST_F(OnATerminal, AReturnTypedAheadIsTheAnswerThatIsAskedFor) {
  Session session(onTerminal());
  beginCall(session, controller, "rfinput status\r");
  session.type("addpls\r\rid 4\r");
  controller.release();
  session.expect(changedOnScreen(4));
  EXPECT_NE(session.screen.text().find(kTooFewParameters), std::string::npos);
}

TEST_F(OnATerminal, CtrlDTypedAheadEndsTheConsole) {
  Session session(onTerminal());
  beginCall(session, controller, "commit\n");
  session.type("id 3\n");
  session.type(kCtrlD);
  session.console.readUntil("id 3");
  controller.release();
  session.expect(kNote + "|");
  EXPECT_EQ(session.console.finish().status, 0);
}

const std::string kNul(1, '\0');

TEST_F(OnATerminal, ANulDoesNothingToTheNextKey) {
  Session session(onTerminal());
  session.type("id 3" + kNul + "\r", kPendingOnScreen);
  session.type("id 4" + kNul + kBackspace + "5\r", changedOnScreen(5));
}

TEST_F(OnATerminal, ANulTypedAheadDoesNothing) {
  Session session(onTerminal());
  session.type("id 3\n" + kNul, kPendingOnScreen);  // in one: it comes between two lines
  for (const std::string& line : {std::string(), std::string("eit off\n")}) {
    for (const std::string& keys : {kNul, kNul + kNul, kNul + "x"}) {
      beginCall(session, controller, "rfinput status\n");
      session.screen.show("\x1b[2J\x1b[H");
      session.type(line + keys);
      controller.release();
      session.expect(kPending + (keys.ends_with('x') ? "x|" : "|"));
      session.type(kCtrlU);
    }
  }
  session.type("id 4\n", changedOnScreen(4));
}

// ---- after the console

TEST_F(OnATerminal, WhatIsTypedAfterQuitIsLeftToTheNextProgram) {
  Session session(watched("read line; echo \"next: $line\""));
  session.type("quit\nfor the shell\n");
  session.console.readUntil("next: for the shell");
}

TEST_F(OnATerminal, TheMarkAfterAPasteIsNotLeftToTheNextProgram) {
  for (const char* end : {"\r", "\r\r", "\r\n"}) {
    Session session(watched("read line; echo \"next: $line\""));
    session.type(pasted({"id 3", "reset", "quit"}, end));
    session.console.readUntil("status 0");
    session.type("for the shell\n");
    session.console.readUntil("next: for the shell\r\n");
  }
}

// ---- the marks of pastes

TEST_F(OnATerminal, PastesAreMarkedOnlyWhileALineIsEdited) {
  Start start = onTerminal("xterm", 3);
  start.environment["PAGER"] = "echo pager; cat; echo end";
  ProgramProcess console(start);
  console.readUntil("> " + kMarksOn);
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
  ProgramProcess console(stoppable());
  console.readUntil("> " + kMarksOn);
  console.send(kCtrlZ);
  console.readUntil(kMarksOff);
  console.readUntil("stopped\r\n");
  console.send("\n");
  console.readUntil("> " + kMarksOn);
}

TEST_F(OnATerminal, EveryUsualKindIsAskedToMarkPastes) {
  for (const char* const type : {"xterm", "screen", "tmux-256color", "linux", "vt220", "no-such"}) {
    ProgramProcess console(onTerminal(type));
    console.readUntil("> " + kMarksOn);
  }
}

TEST_F(OnATerminal, OneWithoutControlSequencesIsNotAskedToMarkPastes) {
  ProgramProcess console(onTerminal("vt52"));
  console.readUntil("> ");
  console.send("quit\r");
  EXPECT_EQ(console.finish().out.find("2004"), std::string::npos);
}

}  // namespace
}  // namespace lineup::test
