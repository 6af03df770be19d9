// How the console leaves a terminal: at its end, by whatever it ends, and while it is stopped.

#include <gtest/gtest.h>
#include <sys/types.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/console/keys.h"
#include "tests/console/terminal_session.h"
#include "tests/support/file_content.h"
#include "tests/support/program_process.h"

namespace lineup::test {
namespace {

/// The one child of a process.
pid_t childOf(pid_t parent) {
  const std::string id = std::to_string(parent);
  return std::stoi(contentOf("/proc/" + id + "/task/" + id + "/children"));
}

TEST_F(OnATerminal, AnEndingSignalAtThePromptRestoresTheTerminalAndRescuesThePendingEdits) {
  for (const int signal : {SIGTERM, SIGHUP}) {
    Session session(watched());
    session.type("id 7\n", kPendingOnScreen);
    session.type("addipmux", kPending + "addipmux|");
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
       {std::string("quit\n"), kCtrlD, kCtrlBackslash,
        std::string("rfinput enable SAT1\n")}) {  // an input that the status lacks: it aborts
    Session session(watched());
    session.type(keys);
    session.console.finish();
    expectModeRestored();
  }
}

TEST_F(OnATerminal, ThatHangsUpEndsTheConsoleAfterTheRescueAlsoWhereTheSignalIsIgnored) {
  const std::string console = "exec " + kConsoleProgram;
  for (const char* trap : {"", "trap '' HUP; "}) {
    Start start = inShell(trap + console, this->start());
    start.environment["LINEUP_HISTORY"] = "";
    {
      Session session(start);
      session.type("id 7\n", kPendingOnScreen);
      session.type("commit", "> commit|");
      session.console.hangUp();
      EXPECT_EQ(session.console.finish().signal, SIGHUP);
    }
    EXPECT_FALSE(pathsIn(folder.file("lineup-console")).empty());
    std::filesystem::remove_all(folder.file("lineup-console"));
  }
  EXPECT_EQ(controller.methods(), std::vector<std::string>(2, "getHeadendConfig"));
}

TEST_F(OnATerminal, CtrlZStopsAndFgGoesOn) {
  Session session(stoppable());
  session.type("id 3", "\n> id 3|");
  for (int stop = 0; stop < 2; ++stop) {
    session.stopAndGoOn("> id 3|");
    expectModeRestored();
  }
  session.type("\n", kPendingOnScreen);
  session.type("commit\nid 4", "> id 4|");
  session.type(kCtrlC, "> id 4^C\n> |");
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 3);
  session.type("quit\n", "stopped\n|");
  expectModeRestored();
}

/// Stops the console, which `start` runs, and lets it go on by one "fg", again and again.
void expectThatOneFgIsEnough(const Start& start) {
  Session session(start);
  std::string line;
  for (int stop = 0; stop < 12; ++stop) {
    line += "x";
    session.type("x", "> " + line + "|");
    session.stopAndGoOn("> " + line + "|");
  }
  session.type("\n", "> " + line + "\n" + kInvalidCommand + "> |");
  session.type("quit\n", "stopped\n|");
}

// The script stops before the console does, and the shell lets both go on at once.
TEST_F(OnATerminal, OneFgIsEnoughThroughAScript) {
  expectThatOneFgIsEnough(stoppable("sh -c '" + kConsoleProgram + "; :'"));
}

TEST_F(OnATerminal, OneFgIsEnoughThroughSudo) {
  if (run(inShell("sudo -n true")).status != 0) {
    GTEST_SKIP() << "no sudo without a password";
  }
  expectThatOneFgIsEnough(
      stoppable("sudo -n env XDG_STATE_HOME=\"$XDG_STATE_HOME\" " + kConsoleProgram));
}

TEST_F(OnATerminal, AStopThatNobodyAskedForLeavesTheTerminalUsable) {
  Session session(onTerminal());
  session.type("id 3", "\n> id 3|");
  session.console.signal(SIGSTOP);
  session.console.signal(SIGCONT);
  session.type("x", "\n> id 3x|");
}

}  // namespace
}  // namespace lineup::test
