// What F2 and F3 show while a line is edited.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/console/keys.h"
#include "tests/console/terminal_session.h"
#include "tests/support/console_texts.h"
#include "tests/support/fake_controller.h"
#include "tests/support/file_content.h"
#include "tests/support/program_process.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

class Overview : public testing::Test {
 protected:
  Start start() const {
    Start start = onTerminal();
    start.environment["XDG_STATE_HOME"] = folder.path();
    start.environment["PAGER"] = {};
    return start;
  }

  /// A pager that leaves what it shows, and its arguments, in files.
  Start withPager() const {
    Start start = this->start();
    start.environment["PAGER"] = "cat > " + folder.file("shown");
    return start;
  }

  /// Puts a script of this name before all other programs of withPrograms().
  void program(const std::string& name, const std::string& script) const {
    std::ofstream(folder.file(name)) << "#!/bin/sh\n" << script << "\n";
    ASSERT_EQ(chmod(folder.file(name).c_str(), S_IRWXU), 0);
  }

  Start withPrograms() const {
    Start start = this->start();
    start.environment["PATH"] = folder.path() + ":" + std::getenv("PATH");
    return start;
  }

  /// A pager that shows nothing but that it runs, and stays.
  Start withSleepingPager() const {
    Start start = this->start();
    start.environment["PAGER"] = "echo ready; exec sleep 100";
    return start;
  }

  std::string shown() const { return contentOf(folder.file("shown")); }

  /// Gives the headend this many encoders, and nothing else, in its RF lineup. Returns the table.
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

  /// Types Ctrl-C during a fetch, and waits until the console has been interrupted.
  static void interrupt(Session& session) {
    session.type(kCtrlC);
    session.console.readUntil("^C");  // the terminal shows it once the signal is sent
    session.console.waitUntilTaken(SIGINT);
  }

  TemporaryFolder folder;
  FakeController controller;
};

TEST_F(Overview, F2ShowsWhatCommitWouldChangeAndLeavesTheLine) {
  Session session(start());
  session.expect("> |");
  session.type("id 7\n");
  session.expect(kPendingOnScreen);
  session.type(std::string("comit") + kLeft + kLeft);
  auto elsewhere = controller.config();
  for (const char* key : {kF2, "\x1b[12~", "\x1b[[B"}) {
    const std::string id = std::to_string(++elsewhere.headendGlobalConfig.headendId);
    controller.setConfig(elsewhere);
    session.type(key);
    session.expect("> comit\nid: " + id + " -> 7\n(changes to commit) > com|it");
  }
  session.type("m\n");
  session.expect("> commit\n> |");
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 7);
  session.type(kF2);
  session.expect(">\nNothing to commit: the headend runs this configuration\n> |");
}

TEST_F(Overview, F2OfAControllerThatDoesNotAnswerSaysSo) {
  Session session(start());
  session.expect("> |");
  session.type("id 7\n");
  session.expect(kPendingOnScreen);
  controller.answerNext({.kind = Answer::kNotReady});
  session.type(std::string("com") + kF2);
  session.expect("> com\n" + std::string(kFetchFailed) + kPending + "com|");
  session.type("mit\n");
  session.expect("> commit\n> |");
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 7);
}

TEST_F(Overview, CtrlCEndsAFetchOfF2AndLeavesTheLine) {
  Session session(start());
  session.expect("> |");
  controller.answerNext(stalled(false));
  session.type(std::string("hel") + kF2);
  controller.waitForCalls(2);
  interrupt(session);
  controller.release();
  session.expect("> hel|");
  session.type(std::string("p") + kF2);
  session.expect("Nothing to commit: the headend runs this configuration\n> help|");
}

TEST_F(Overview, CtrlCTwiceDuringAFetchOfF2EndsTheConsoleAndRescuesTheEdits) {
  Session session(start());
  session.expect("> |");
  session.type("id 7\n");
  session.expect(kPendingOnScreen);
  controller.answerNext(stalled(false));
  session.type(std::string("hel") + kF2);
  controller.waitForCalls(2);
  interrupt(session);
  interrupt(session);
  controller.release();
  const Outcome outcome = session.console.finish();
  EXPECT_EQ(outcome.signal, SIGINT);
  EXPECT_NE(outcome.out.find(kUncommittedIn + folder.path()), std::string::npos);
}

TEST_F(Overview, CtrlZDuringAFetchOfF2StopsTheConsoleAndFgGoesOn) {
  Start start = this->start();
  start.program = "/bin/sh";
  start.arguments = {"-c", "set -m; stty -a >before; " + std::string(kConsoleProgram) +
                               "; stty -a >after; echo stopped; read go; fg >/dev/null"};
  start.folder = folder.path();
  Session session(start);
  session.expect("> |");
  controller.answerNext(stalled(true));
  session.type(std::string("hel") + kF2);
  controller.waitForCalls(2);
  session.type(kCtrlZ);
  session.console.readUntil("stopped\r\n");
  EXPECT_EQ(contentOf(folder.file("before")), contentOf(folder.file("after")));
  session.type("\n");
  session.console.readUntil("\n");
  controller.release();
  session.console.readUntil("Nothing to commit: the headend runs this configuration\r\n");
  session.screen.show("\r\n");
  session.expect("> hel|");
  session.type("p!\n");
  session.expect("> help!\nInvalid command. Try 'help'.\n> |");
}

TEST_F(Overview, F3ShowsTheLineups) {
  const std::string table = fillLineup(2);
  Session session(start());
  session.expect("> |");
  std::string line;
  for (const char* key : {kF3, "\x1b[13~", "\x1b[[C"}) {
    line += "x";
    session.type(std::string("x") + key);
    std::string shown = "> " + line + "\n";
    shown += table;
    shown += "> " + line + "|";
    session.expect(shown);
  }
  EXPECT_EQ(controller.methods(), std::vector<std::string>{"getHeadendConfig"});
}

TEST_F(Overview, ThatTheScreenHasRoomForNeedsNoPager) {
  const std::string table = fillLineup(19);
  Session session(withPager());
  session.expect("> |");
  session.type(std::string("x") + kF3);
  session.expect(table + "> x|");
  EXPECT_EQ(shown(), "");
}

TEST_F(Overview, ThatIsLongerThanTheScreenGoesThroughThePager) {
  const std::string table = fillLineup(20);
  Session session(withPager());
  session.expect("> |");
  session.type(std::string("x") + kF3);
  session.expect("> x\n> x|");
  EXPECT_EQ(shown(), table);
  session.type("\n");
  session.expect("> x\nInvalid command. Try 'help'.\n> |");
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
      Start start = withPager();
      start.rows = 7;  // two of them for the heading, which is wider than the screen
      Session session(start);
      session.expect("> |");
      session.type(std::string("x") + kF3);
      session.expect(fits ? "IP lineup: none\n> x|" : "> x\n> x|");
      EXPECT_EQ(shown().empty(), fits) << name;
    }
  }
}

TEST_F(Overview, ThatHasNoRoomBesideALineOfSeveralRowsGoesThroughThePager) {
  const std::string table = fillLineup(19);
  Session session(withPager());
  session.expect("> |");
  session.type(std::string(78, 'x') + kF3);
  session.expect("xx\n\n> " + std::string(78, 'x') + "\n|");
  EXPECT_EQ(shown(), table);
}

TEST_F(Overview, ThatIsLongerThanTheScreenGoesThroughLess) {
  const std::string table = fillLineup(100);
  program("less", "echo \"$LESSSECURE $@\" > " + folder.file("shown"));
  Session session(withPrograms());
  session.expect("> |");
  session.type(std::string("x") + kF3);
  session.expect("> x\n> x|");
  EXPECT_EQ(shown(), "1 -FRX\n");
}

TEST_F(Overview, ThatIsLongerThanTheScreenGoesThroughMoreWhereThereIsNoLess) {
  const std::string table = fillLineup(100);
  program("more", "echo \"$LESSSECURE $@\" > " + folder.file("options") + "; /bin/cat > " +
                      folder.file("shown"));
  Start start = this->start();
  start.environment["PATH"] = folder.path();
  Session session(start);
  session.expect("> |");
  session.type(std::string("x") + kF3);
  session.expect("> x\n> x|");
  EXPECT_EQ(shown(), table);
  EXPECT_EQ(contentOf(folder.file("options")), "1 \n");
}

// "less" ignores the stop, as it may start no other program, and would read what is typed then.
TEST_F(Overview, CtrlZInLessStopsTheConsoleAndFgBringsTheLineBack) {
  fillLineup(100);
  program("less", "trap '' TSTP; stty -icanon -echo </dev/tty; echo $$ > " + folder.file("pid") +
                      "; echo ready; exec sleep 100");
  for (const std::string& run :
       {std::string(kConsoleProgram), "sh -c '" + std::string(kConsoleProgram) + "; :'"}) {
    Start start = withPrograms();
    start.program = "/bin/sh";
    start.arguments = {
        "-c",
        "set -m; stty -g > " + folder.file("before") + "; " + run + "; while stty -g > " +
            folder.file("stopped") + "; while kill -0 $(cat " + folder.file("pid") +
            ") 2>/dev/null; do sleep 0.01; done; echo stopped; read go; do fg >/dev/null; done"};
    Session session(start);
    session.expect("> |");
    session.type(std::string("x") + kF3);
    session.expect("ready\n|");
    session.type(kCtrlZ);
    session.console.readUntil("stopped\r\n");
    if (run == kConsoleProgram) {  // else the shell may go on before it
      EXPECT_EQ(contentOf(folder.file("before")), contentOf(folder.file("stopped")));
    }
    session.type("\n");
    session.screen.show("\x1b[2J\x1b[H");
    session.expect("> x|");
    session.type("y\n");
    session.expect("> xy\nInvalid command. Try 'help'.\n> |");
  }
}

/// Types Ctrl-Z in a pager that runs this script, and lets the console go on; returns what the
/// terminal shows up to the stop.
std::string shownByStopOf(const std::string& pager, const Start& like) {
  Start start = like;
  start.program = "/bin/sh";
  start.arguments = {
      "-c", "set -m; " + std::string(kConsoleProgram) + "; echo stopped; read go; fg >/dev/null"};
  std::ofstream(start.folder + "/less") << "#!/bin/sh\n" << pager << "\n";
  chmod((start.folder + "/less").c_str(), S_IRWXU);
  Session session(start);
  session.expect("> |");
  session.type(std::string("x") + kF3);
  session.console.readUntil("ready\r\n");
  session.type(kCtrlZ);
  std::string shown = session.console.readUntil("stopped\r\n");
  session.type("\n");
  session.screen.show("\x1b[2J\x1b[H");
  session.expect("> x|");
  session.type("y\n");
  session.expect("> xy\nInvalid command. Try 'help'.\n> |");
  return shown;
}

TEST_F(Overview, CtrlZLetsLessPutTheTerminalBack) {
  fillLineup(100);
  Start start = withPrograms();
  start.folder = folder.path();
  const std::string shown = shownByStopOf(
      "trap '' TSTP; trap 'echo put back; exit 15' TERM; echo ready\n"
      "while :; do read key </dev/tty; done",
      start);
  EXPECT_NE(shown.find("put back\r\n"), std::string::npos) << shown;
}

TEST_F(Overview, CtrlZEndsALessThatWasStopped) {
  fillLineup(100);
  Start start = withPrograms();
  start.folder = folder.path();
  const std::string shown = shownByStopOf(
      // Waits for nothing, as the signal could come just before that.
      "trap 'echo put back; exit 15' TERM; echo ready\n"
      "while :; do :; done",
      start);
  EXPECT_NE(shown.find("put back\r\n"), std::string::npos) << shown;
}

TEST_F(Overview, CtrlZEndsALessThatDoesNotEndByItself) {
  fillLineup(100);
  Start start = withPrograms();
  start.folder = folder.path();
  shownByStopOf("trap '' TSTP TERM; echo $$ > pid; echo ready; exec sleep 100", start);
  const std::string pager = contentOf(folder.file("pid"));
  EXPECT_EQ(kill(std::stoi(pager), 0), -1);
}

TEST_F(Overview, OfAPagerThatIsKilledLeavesTheTerminalUsable) {
  fillLineup(100);
  program("less", "stty -icanon -echo </dev/tty; printf '(END)'; kill -9 $$");
  Start start = withPrograms();
  start.program = "/bin/sh";
  start.arguments = {"-c", "stty -g > " + folder.file("before") + "; " + kConsoleProgram +
                               "; stty -g > " + folder.file("after")};
  Session session(start);
  session.expect("> |");
  session.type(std::string("x") + kF3);
  session.expect("(END)\n> x|");
  session.type("\nquit\n");
  EXPECT_EQ(session.console.finish().status, 0);
  EXPECT_EQ(contentOf(folder.file("before")), contentOf(folder.file("after")));
}

TEST_F(Overview, WhosePagerIsNotThereIsShownAllTheSame) {
  const std::string table = fillLineup(100);
  Start start = this->start();
  start.environment["PAGER"] = "exec /nowhere/pager 2>/dev/null";
  Session session(start);
  session.expect("> |");
  session.type(std::string("x") + kF3);
  session.expect("100       x     DVB   no service 0\n\nIP lineup: none\n> x|");
}

TEST_F(Overview, CtrlCInThePagerEndsThePagerAlone) {
  fillLineup(100);
  Session session(withSleepingPager());
  session.expect("> |");
  session.type(std::string("x") + kF3);
  session.expect("ready\n|");
  session.type(kCtrlC);
  session.expect("> x|");
  session.type("y\n");
  session.expect("y\nInvalid command. Try 'help'.\n> |");
}

TEST_F(Overview, TheKeyThatQuitsInThePagerEndsThePagerAlone) {
  fillLineup(100);
  Session session(withSleepingPager());
  session.expect("> |");
  session.type(std::string("x") + kF3);
  session.expect("ready\n|");
  session.type("\x1c");
  session.expect("> x|");
  session.type("y\n");
  session.expect("y\nInvalid command. Try 'help'.\n> |");
}

TEST_F(Overview, AnInterruptThatAProcessSendsEndsThePagerAlone) {
  fillLineup(100);
  Session session(withSleepingPager());
  session.expect("> |");
  session.type(std::string("x") + kF3);
  session.expect("ready\n|");
  session.console.signal(SIGINT);
  session.expect("> x|");
  session.type("y\n");
  session.expect("y\nInvalid command. Try 'help'.\n> |");
}

TEST_F(Overview, ASignalThatEndsTheConsoleEndsThePagerToo) {
  fillLineup(100);
  for (const int signal : {SIGTERM, SIGQUIT}) {
    Session session(withSleepingPager());
    session.expect("> |");
    session.type("id 7\n");
    session.expect(kPendingOnScreen);
    session.type(kF3);
    session.expect("ready\n|");
    session.console.signal(signal);
    const auto outcome = session.console.finish();
    EXPECT_EQ(outcome.signal, signal);
    EXPECT_NE(outcome.out.find(kUncommittedIn), std::string::npos);
  }
}

TEST_F(Overview, IsNoneOfAnAnswer) {
  Session session(start());
  session.expect("> |");
  session.askForPlsItem();
  session.type(std::string("1 2") + kF2 + kF3 + "\n");
  session.expect(kPendingOnScreen);
  EXPECT_EQ(controller.methods(), std::vector<std::string>{"getHeadendConfig"});
}

}  // namespace
}  // namespace lineup::test
