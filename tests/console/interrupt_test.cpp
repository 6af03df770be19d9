// Ctrl-C while a command runs, on a terminal where lines are edited: it ends the command alone.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/console/keys.h"
#include "tests/console/terminal_session.h"
#include "tests/support/catalogue_file.h"
#include "tests/support/expect_end.h"
#include "tests/support/file_content.h"
#include "tests/support/rf_inputs.h"
#include "tests/support/sandbox.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;

class CtrlC : public OnATerminal {
 protected:
  /// Expects that the console still runs, and that `session` is at a prompt without changes.
  void expectUnchanged(Session& session) const {
    session.type("id 5\n", kPendingOnScreen);
    session.type("commit\n", "> commit\n> |");
    auto expected = before;
    expected.headendGlobalConfig.headendId = 5;
    EXPECT_EQ(controller.config(), expected);
    session.quit();
  }

  /// Waits for the next prompt, after whatever is said before it.
  static void awaitPrompt(Session& session) {
    session.console.readUntil("^C");
    session.console.readUntil("\r\n> ");
    session.screen.show("\r\n> ");
  }

  /// Expects that Ctrl-C breaks off a listing that the terminal, which is slow, has not taken.
  static void expectBrokenOff(Session& session) {
    session.console.waitUntilBlocked();
    session.type(kCtrlC);
    EXPECT_LT(session.console.readUntil("\r\n> ").size(), 100'000U);
    session.screen.show("\r> ");
  }

  /// Types Ctrl-C during a call of the console, the answer to which then goes on.
  void interruptCall(Session& session) {
    session.interruptCall();
    controller.release();
  }

  /// Has a "commit" of id 7 begin.
  void beginCommit(Session& session, bool goesOn = false) {
    session.type("id 7\n", kPendingOnScreen);
    beginCall(session, controller, "commit\n", goesOn);
  }

  /// A file with a configuration, which a console saves.
  std::string savedFile() const {
    std::string file = folder.file("file");
    runConsole({}, "id 3\nsave " + file + "\n");
    return file;
  }

  korvel::thrift::hub_module::HeadendConfig before = controller.config();
};

TEST_F(CtrlC, EndsTheWaitsOfAFind) {
  Session session(start());
  session.type("findsat O'Neil\n");
  session.console.readUntil("intento: 0");
  session.type(kCtrlC);
  awaitPrompt(session);
  expectUnchanged(session);
}

TEST_F(CtrlC, EndsTheWaitAfterASwitchedInput) {
  controller.setStatus(tenInputs("----------"));
  Session session(start());
  session.type("rfinput enable SAT1\n");
  controller.waitForClosed(3);
  session.type(kCtrlC, "> rfinput enable SAT1\n^C\n> |");
  EXPECT_EQ(describe(controller.calls()),
            (std::vector<std::string>{"getHeadendConfig", "status", "SAT 3 103 on"}));
  expectUnchanged(session);
}

TEST_F(CtrlC, EndsASelectThatRunsLong) {
  const CatalogueFile catalogue(kCataloguePath);
  Session session(start());
  session.type(
      "findsat x';WITH/**/RECURSIVE/**/n(i)AS(SELECT/**/1/**/UNION/**/ALL/**/SELECT/**/i+1/**/"
      "FROM/**/n)SELECT/**/count(*)/**/FROM/**/n;--\n",
      "--\n|");
  session.console.waitUntilLinesAreEdited(false);
  session.type(kCtrlC, "--\n^C\n> |");
  expectUnchanged(session);
}

TEST_F(CtrlC, EndsAListing) {
  auto large = controller.config();
  large.lineupConfig.rfEntries.resize(20'000);
  controller.setConfig(large);
  Session session(start());
  session.type("show\n");
  session.console.readUntil("Current lineup:");
  expectBrokenOff(session);
  session.quit();
}

TEST_F(CtrlC, EndsAListingOfTheCatalogue) {
  CatalogueFile catalogue(kCataloguePath);
  catalogue.execute(
      "WITH RECURSIVE n(i) AS (VALUES(1) UNION ALL SELECT i + 1 FROM n WHERE i < 20000) "
      "INSERT INTO availableSatService(service_id, service_name) SELECT i, 'Channel ' || i FROM n");
  Session session(start());
  session.type("find\n");
  session.console.readUntil("Channel 1 ");
  expectBrokenOff(session);
  expectUnchanged(session);
}

TEST_F(CtrlC, DuringTheFetchAtTheStartEndsTheConsole) {
  controller.answerNext(stalled(false));
  Session session(start(), "");
  controller.waitForCalls(1);
  interruptCall(session);
  const Outcome outcome = expectEndBy(session.console, SIGINT);
  EXPECT_EQ(outcome.out.find("> "), std::string::npos) << "defaults might be committed";
}

TEST_F(CtrlC, RightAfterReturnEndsNoMoreThanTheCommand) {
  Session session(start());
  for (int wait = 0; wait < 100; ++wait) {
    session.type("rfnum 5\n");
    session.console.readUntil("\n");
    usleep(static_cast<useconds_t>(wait * 10));
    session.type(kCtrlC);
  }
  session.console.waitUntilTaken(SIGINT);
  session.type("id 99\n");
  session.console.readUntil("Headend id must be");
  session.quit();
}

TEST_F(CtrlC, LetsACallSucceed) {
  Session session(start());
  beginCommit(session, true);
  interruptCall(session);
  session.console.readUntil("\r\n");
  session.console.readUntil("> ");
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 7);
  session.type("quit\n");
  const Outcome outcome = session.console.finish();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out.find("NOTE"), std::string::npos);
}

TEST_F(CtrlC, LetsACallFailWithItsLine) {
  Session session(start());
  beginCommit(session);
  interruptCall(session);
  session.console.readUntil("\r\nERROR: Could not set LineupConfig to ControllerTask\r\n");
  session.console.readUntil(kPending);
  session.type("commit\n");
  controller.waitForCalls(3);
  session.quit();
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 7);
}

TEST_F(CtrlC, TwiceDuringACallEndsTheConsoleAndRescuesTheEdits) {
  Session session(start());
  beginCommit(session);
  session.interruptCall();
  interruptCall(session);
  const Outcome outcome = expectEndBy(session.console, SIGINT);
  EXPECT_NE(outcome.out.find(kUncommittedIn + folder.path()), std::string::npos);
}

TEST_F(CtrlC, FollowedByAnotherSignalEndsTheConsole) {
  Session session(start());
  beginCommit(session);
  session.type(kCtrlC);
  session.console.readUntil("^C");
  session.console.signal(SIGTERM);
  session.console.waitUntilTaken(SIGTERM);
  controller.release();
  expectEndBy(session.console, SIGTERM);
}

TEST_F(CtrlC, LeavesTheLineupAloneWhereAServiceIsLookedUp) {
  CatalogueFile catalogue(kCataloguePath);
  catalogue.insert(kSat, {{15, "1"}, {16, "News"}});
  Session session(start());
  {
    const CatalogueLock lock(kCataloguePath);
    session.type("adddvb 1\n");
    session.console.readUntil("intento: 0");
    session.type(kCtrlC);
    awaitPrompt(session);
  }
  expectUnchanged(session);
}

TEST_F(CtrlC, LeavesTheConfigurationAloneWhereAFileIsRead) {
  const std::string file = savedFile();
  const std::string text = contentOf(file);
  fs::remove(file);
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  Session session(start());
  session.type("restore " + file + "\n");
  const int writer = open(file.c_str(), O_WRONLY | O_CLOEXEC);
  EXPECT_EQ(write(writer, text.data(), text.size() - 1), static_cast<ssize_t>(text.size() - 1));
  session.console.waitUntilBlocked();
  session.type(kCtrlC, "^C\n> |");
  close(writer);
  expectUnchanged(session);
}

TEST_F(CtrlC, LeavesTheConfigurationAloneWhereAFileWasNotSent) {
  const std::string file = savedFile();
  Session session(start());
  beginCall(session, controller, "restore " + file + "\n");
  interruptCall(session);
  session.console.readUntil("ControllerTask\r\n\r\n> ");
  session.screen.show("\r> ");
  expectUnchanged(session);
}

TEST_F(CtrlC, TypedWhereLinesAreNotEditedEndsTheConsole) {
  Start dumb = start();
  dumb.environment["TERM"] = "dumb";
  Session session(dumb);
  session.type("findsat O'Neil\n");
  session.console.readUntil("intento: 0");
  session.type(kCtrlC);
  expectEndBy(session.console, SIGINT);
}

}  // namespace
}  // namespace lineup::test
