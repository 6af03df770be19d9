// What F2 and F3 show while a line is edited.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/console/keys.h"
#include "tests/console/terminal_session.h"
#include "tests/support/expect_end.h"
#include "tests/support/file_content.h"

namespace lineup::test {
namespace {

constexpr char kNothingToCommit[] = "Nothing to commit: the headend runs this configuration\n";

class Overview : public OnATerminal {
 protected:
  Start withPager(const std::string& pager) const {
    Start start = this->start();
    start.environment["PAGER"] = pager;
    return start;
  }

  /// A pager that leaves what it shows in a file.
  Start withFile() const { return withPager("cat > shown"); }
  std::string shown() const { return contentOf(folder.file("shown")); }

  /// A pager that shows nothing but that it runs, and stays.
  Start withSleepingPager() const { return withPager("echo ready; exec sleep 100"); }

  /// A script of this name comes before all other programs.
  Start withProgram(const std::string& name, const std::string& script) const {
    writeFile(folder.file(name), "#!/bin/sh\n" + script + "\n");
    EXPECT_EQ(chmod(folder.file(name).c_str(), S_IRWXU), 0);
    Start start = this->start();
    start.environment["PATH"] = folder.path() + ":" + std::getenv("PATH");
    return start;
  }

  /// Gives the headend this many entries, and no others, in its RF lineup. Returns the table.
  std::string fillLineup(int count, const std::string& lastName = "x") {
    auto config = controller.config();
    config.lineupConfig.rfEntries.clear();
    std::string table = "RF lineup\nPOSITION  NAME  KIND  SOURCE        SID  TYPE\n";
    for (int n = 1; n <= count; ++n) {
      auto& entry = config.lineupConfig.rfEntries.emplace_back();
      entry.name = n < count ? "x" : lastName;
      const std::string position = std::to_string(n);
      table += position + std::string(10 - position.size(), ' ') + "x     DVB   no service 0\n";
    }
    controller.setConfig(config);
    return table + "\nIP lineup: none\n";
  }

  /// Expects that "x" is edited on.
  static void expectEditing(Session& session) {
    session.type("y\n", "> xy\n" + kInvalidCommand + "> |");
  }

  /// Expects that Ctrl-Z in a pager that runs this script stops the console, and that it goes on.
  /// Returns what is shown by the stop.
  std::string shownByStopOf(const std::string& pager) {
    fillLineup(100);
    Session session(stoppable(kConsoleProgram, withProgram("less", pager)));
    session.type("x" + kF3);
    session.console.readUntil("ready\r\n");
    std::string shown = session.stopAndGoOn("> x|");
    expectEditing(session);
    return shown;
  }
};

TEST_F(Overview, F2ShowsWhatCommitWouldChangeAndLeavesTheLine) {
  Session session(start());
  session.type("id 7\n", kPendingOnScreen);
  session.type("comit" + kLeft + kLeft);
  auto elsewhere = controller.config();
  for (int press = 0; press < 2; ++press) {
    const std::string id = std::to_string(++elsewhere.headendGlobalConfig.headendId);
    controller.setConfig(elsewhere);
    session.type(kF2, "> comit\nid: " + id + " -> 7\n" + kPending + "com|it");
  }
  session.type("m\n", "> commit\n> |");
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 7);
  session.type(kF2, ">\n" + std::string(kNothingToCommit) + "> |");
}

TEST_F(Overview, F2OfAControllerThatDoesNotAnswerSaysSo) {
  Session session(start());
  session.type("id 7\n", kPendingOnScreen);
  controller.answerNext({.kind = Answer::kNotReady});
  session.type("com" + kF2, "> com\n" + kFetchFailed + kPending + "com|");
  session.type("mit\n", "> commit\n> |");
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 7);
}

TEST_F(Overview, CtrlCEndsAFetchOfF2AndLeavesTheLine) {
  Session session(start());
  beginCall(session, controller, "hel" + kF2);
  session.interruptCall();
  controller.release();
  session.expect("> hel|");
  session.type("p" + kF2, std::string(kNothingToCommit) + "> help|");
}

TEST_F(Overview, CtrlCTwiceDuringAFetchOfF2EndsTheConsoleAndRescuesTheEdits) {
  Session session(start());
  session.type("id 7\n", kPendingOnScreen);
  beginCall(session, controller, "hel" + kF2);
  session.interruptCall();
  session.interruptCall();
  controller.release();
  const Outcome outcome = session.console.finish();
  EXPECT_EQ(outcome.signal, SIGINT);
  EXPECT_NE(outcome.out.find(kUncommittedIn + folder.path()), std::string::npos);
}

TEST_F(Overview, CtrlZDuringAFetchOfF2StopsTheConsoleAndFgGoesOn) {
  Session session(stoppable());
  beginCall(session, controller, "hel" + kF2, true);
  session.type(kCtrlZ);
  session.console.readUntil("stopped\r\n");
  expectModeRestored();
  session.type("\n");
  session.console.readUntil("\n");
  controller.release();
  session.console.readUntil("Nothing to commit: the headend runs this configuration\r\n");
  session.screen.show("\r\n");
  session.expect("> hel|");
  session.type("p!\n", "> help!\n" + kInvalidCommand + "> |");
}

TEST_F(Overview, F3ShowsTheLineups) {
  const std::string table = fillLineup(2);
  Session session(start());
  session.type("x" + kF3, "> x\n" + table + "> x|");
  EXPECT_EQ(controller.methods(), std::vector<std::string>{"getHeadendConfig"});
}

TEST_F(Overview, IsNotShownWhileAnAnswerIsTyped) {
  Session session(start());
  session.askForPlsItem();
  session.type("1 2" + kF2 + kF3 + "\n", kPendingOnScreen);
  EXPECT_EQ(controller.methods(), std::vector<std::string>{"getHeadendConfig"});
}

// ---- the pager

TEST_F(Overview, ThatTheScreenHasRoomForNeedsNoPager) {
  const std::string table = fillLineup(19);
  Session session(withFile());
  session.type("x" + kF3, table + "> x|");
  EXPECT_EQ(shown(), "");
}

TEST_F(Overview, ThatIsLongerThanTheScreenGoesThroughThePager) {
  const std::string table = fillLineup(20);
  Session session(withFile());
  session.type("x" + kF3, "> x\n> x|");
  EXPECT_EQ(shown(), table);
  expectEditing(session);
}

TEST_F(Overview, IsMeasuredInColumnsAndWrappedRows) {
  constexpr std::pair<const char*, int> kNames[] = {{"x", 50}, {"e\u0301", 50}, {"漢", 25}};
  for (const auto& [letter, fitting] : kNames) {  // of them in a row of the table
    for (const bool fits : {true, false}) {
      std::string name;
      for (int i = 0; i < fitting + (fits ? 0 : 1); ++i) {
        name += letter;
      }
      SCOPED_TRACE(name);
      std::filesystem::remove(folder.file("shown"));
      fillLineup(1, name);
      Start start = withFile();
      start.rows = 7;  // two of them for the heading, which is wider than the screen
      Session session(start);
      session.type("x" + kF3, fits ? "IP lineup: none\n> x|" : "> x\n> x|");
      EXPECT_EQ(shown().empty(), fits) << name;
    }
  }
}

TEST_F(Overview, ThatHasNoRoomBesideALineOfSeveralRowsGoesThroughThePager) {
  const std::string table = fillLineup(19);
  const std::string line(78, 'x');
  Session session(withFile());
  session.type(line + kF3, "xx\n\n> " + line + "\n|");
  EXPECT_EQ(shown(), table);
}

TEST_F(Overview, ThatIsLongerThanTheScreenGoesThroughLess) {
  fillLineup(100);
  Session session(withProgram("less", "echo \"$LESSSECURE $@\" > shown"));
  session.type("x" + kF3, "> x\n> x|");
  EXPECT_EQ(shown(), "1 -FRX\n");
}

TEST_F(Overview, ThatIsLongerThanTheScreenGoesThroughMoreWhereThereIsNoLess) {
  const std::string table = fillLineup(100);
  Start start = withProgram("more", "echo \"$LESSSECURE $@\" > options; /bin/cat > shown");
  start.environment["PATH"] = folder.path();
  Session session(start);
  session.type("x" + kF3, "> x\n> x|");
  EXPECT_EQ(shown(), table);
  EXPECT_EQ(contentOf(folder.file("options")), "1 \n");
}

TEST_F(Overview, WhosePagerIsNotThereIsShownAllTheSame) {
  fillLineup(100);
  Session session(withPager("exec /nowhere/pager 2>/dev/null"));
  session.type("x" + kF3, "100       x     DVB   no service 0\n\nIP lineup: none\n> x|");
}

// "less" ignores the stop, as it may start no other program, and would read what is typed then.
TEST_F(Overview, CtrlZInLessStopsTheConsoleAndFgBringsTheLineBack) {
  fillLineup(100);
  const Start less =
      withProgram("less",
                  "trap '' TSTP; stty -icanon -echo </dev/tty; echo $$ > pid; echo ready; "
                  "exec sleep 100");
  for (const std::string& run : {kConsoleProgram, "sh -c '" + kConsoleProgram + "; :'"}) {
    Session session(
        stoppable(run + "; while kill -0 $(cat pid) 2>/dev/null; do sleep 0.01; done", less));
    session.type("x" + kF3, "ready\n|");
    session.stopAndGoOn("> x|");
    if (run == kConsoleProgram) {  // else the shell may go on before it
      expectModeRestored();
    }
    expectEditing(session);
  }
}

TEST_F(Overview, CtrlZLetsLessPutTheTerminalBack) {
  const std::string shown = shownByStopOf(
      "trap '' TSTP; trap 'echo put back; exit 15' TERM; echo ready\n"
      "while :; do read key </dev/tty; done");
  EXPECT_NE(shown.find("put back\r\n"), std::string::npos) << shown;
}

TEST_F(Overview, CtrlZEndsALessThatWasStopped) {
  // Waits for nothing, as the signal could come just before that.
  const std::string shown =
      shownByStopOf("trap 'echo put back; exit 15' TERM; echo ready\nwhile :; do :; done");
  EXPECT_NE(shown.find("put back\r\n"), std::string::npos) << shown;
}

TEST_F(Overview, CtrlZEndsALessThatDoesNotEndByItself) {
  shownByStopOf("trap '' TSTP TERM; echo $$ > pid; echo ready; exec sleep 100");
  EXPECT_EQ(kill(std::stoi(contentOf(folder.file("pid"))), 0), -1);
}

TEST_F(Overview, APagerThatIsKilledLeavesTheTerminalUsable) {
  fillLineup(100);
  Session session(
      inShell("stty -a > before; " + kConsoleProgram + "; stty -a > after",
              withProgram("less", "stty -icanon -echo </dev/tty; printf '(END)'; kill -9 $$")));
  session.type("x" + kF3, "(END)\n> x|");
  session.type("\n");
  session.quit();
  expectModeRestored();
}

TEST_F(Overview, AKeyThatInterruptsOrASignalEndsThePagerAlone) {
  fillLineup(100);
  for (const std::string& key : {kCtrlC, kCtrlBackslash, std::string("signal")}) {
    Session session(withSleepingPager());
    session.type("x" + kF3, "ready\n|");
    if (key == "signal") {
      session.console.signal(SIGINT);
    } else {
      session.type(key);
    }
    session.expect("> x|");
    expectEditing(session);
  }
}

TEST_F(Overview, ASignalThatEndsTheConsoleEndsThePagerToo) {
  fillLineup(100);
  for (const int signal : {SIGTERM, SIGQUIT}) {
    Session session(withSleepingPager());
    session.type("id 7\n", kPendingOnScreen);
    session.type(kF3, "ready\n|");
    EXPECT_NE(endBy(session.console, signal).out.find(kUncommittedIn), std::string::npos);
  }
}

}  // namespace
}  // namespace lineup::test
