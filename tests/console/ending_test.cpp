// A console that ends abnormally: its pending edits are saved first, and it ends as it would have.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

#include "tests/console/keys.h"
#include "tests/support/catalogue_file.h"
#include "tests/support/console_texts.h"
#include "tests/support/fake_controller.h"
#include "tests/support/file_content.h"
#include "tests/support/matches.h"
#include "tests/support/program_process.h"
#include "tests/support/sandbox.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

using korvel::thrift::hub_module::HeadendStatus;
namespace fs = std::filesystem;

/// Waits for the console's first prompt and leaves an edit pending.
void edit(ProgramProcess& console) {
  console.readUntil("> ");
  console.send("id 7\n");
  console.readUntil(kPending);
}

class Ending : public testing::Test {
 protected:
  /// Starts the console with copies going to the test's own folder.
  Start start(bool terminal) const {
    Start start;
    start.terminal = terminal;
    start.environment["XDG_STATE_HOME"] = folder.path();
    start.environment["TERM"] = "dumb";
    start.environment["LINEUP_HISTORY"] = "";  // nothing but copies is in the folder
    return start;
  }

  std::vector<fs::path> copies() const { return pathsIn(folder.file("lineup-console")); }

  /// Expects one copy that "restore" sends with headend id 7, and that `outcome` names on
  /// standard error.
  void expectRescued(const Outcome& outcome, bool terminal) {
    const std::string path = expectCopy();
    const std::string line =
        kUncommittedIn + path + ": \"restore " + path + "\" brings them back and commits them";
    EXPECT_NE((terminal ? outcome.out : outcome.err).find(line), std::string::npos)
        << outcome.out << outcome.err;
  }

  /// Expects the file alone. Returns its path.
  std::string expectCopy() {
    const std::vector<fs::path> files = copies();
    EXPECT_EQ(files.size(), 1U);
    if (files.size() != 1) {
      return "no copy";
    }
    std::string path = files[0].string();
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    const std::string name = files[0].filename().string();
    EXPECT_TRUE(matches(name, "lineup-console-[0-9]{8}-[0-9]{6}-[0-9]+[.]json")) << name;
    const Outcome restored = runConsole({}, "restore " + path + "\n");
    EXPECT_NE(restored.out.find("Restored config from: " + path), std::string::npos);
    EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 7);
    return path;
  }

  TemporaryFolder folder;
  TemporaryFolder elsewhere;  ///< for other files
  FakeController controller;
};

class EndingBySignal : public Ending, public testing::WithParamInterface<std::tuple<int, bool>> {
 protected:
  /// Has the signal arrive while an edit is being committed; the rest of the answer then comes, or
  /// does not. Expects the end by the signal.
  Outcome signalDuringCommit(bool goesOn) {
    const auto [signal, terminal] = GetParam();
    ProgramProcess console(start(terminal));
    edit(console);
    controller.answerNext(stalled(goesOn));
    console.send("commit\n");
    controller.waitForCalls(2);
    console.signal(signal);
    console.waitUntilTaken(signal);
    controller.release();
    Outcome outcome = console.finish();
    EXPECT_EQ(outcome.signal, signal);
    return outcome;
  }
};

TEST_P(EndingBySignal, AtThePromptPendingEditsAreRescued) {
  const auto [signal, terminal] = GetParam();
  ProgramProcess console(start(terminal));
  edit(console);
  console.signal(signal);
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.signal, signal);
  expectRescued(outcome, terminal);
}

TEST_P(EndingBySignal, WithNothingPendingNothingIsWritten) {
  const auto [signal, terminal] = GetParam();
  ProgramProcess console(start(terminal));
  console.readUntil("> ");
  console.signal(signal);
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.signal, signal);
  EXPECT_EQ(outcome.err, "");
  EXPECT_TRUE(copies().empty());
}

TEST_P(EndingBySignal, ARemoteCallUnderWayIsFinishedFirst) {
  const Outcome outcome = signalDuringCommit(true);
  EXPECT_EQ(outcome.out.find("ERROR"), std::string::npos) << outcome.out;
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 7);
  EXPECT_TRUE(copies().empty()) << "the edits were committed";
}

TEST_P(EndingBySignal, EditsThatARemoteCallUnderWayFailedToCommitAreRescued) {
  const Outcome outcome = signalDuringCommit(false);
  EXPECT_NE(outcome.out.find("ERROR: Could not set LineupConfig to ControllerTask"),
            std::string::npos);
  expectRescued(outcome, std::get<1>(GetParam()));
}

TEST_P(EndingBySignal, WhileACommandWaitsTheWaitIsCutShort) {
  const auto [signal, terminal] = GetParam();
  ProgramProcess console(start(terminal));
  console.readUntil("> ");
  console.send("id 7\nfindsat O'Neil\n");
  if (terminal) {
    console.readUntil("intento: 0");
  } else {
    console.readErrorsUntil("intento: 0");
  }
  console.signal(signal);
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.signal, signal);
  EXPECT_EQ((outcome.out + outcome.err).find("intento: 2"), std::string::npos);
  expectRescued(outcome, terminal);
}

TEST_P(EndingBySignal, WhileNobodyReadsTheOutputItEndsAllTheSame) {
  const auto [signal, terminal] = GetParam();
  ProgramProcess console(start(terminal));
  edit(console);
  std::string lines;
  for (int count = 0; count < 200; ++count) {
    lines += "show\n";  // together more than a pipe or a terminal holds
  }
  console.send(lines);
  console.waitUntilBlocked();
  console.signal(signal);
  console.waitForEnd();
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.signal, signal);
  expectCopy();
  if (!terminal) {
    expectRescued(outcome, terminal);
  }
}

TEST_P(EndingBySignal, WhileANamedPipeIsWaitedForItEndsAllTheSame) {
  const auto [signal, terminal] = GetParam();
  const std::string pipe = elsewhere.file("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string command : {"save ", "restore "}) {
    controller.setConfig({});
    ProgramProcess console(start(terminal));
    edit(console);
    console.send(command + pipe + "\n");
    console.waitUntilBlocked();
    console.signal(signal);
    const Outcome outcome = console.finish();
    EXPECT_EQ(outcome.signal, signal);
    EXPECT_EQ(outcome.out.find("config "), std::string::npos) << outcome.out;
    expectRescued(outcome, terminal);
    fs::remove(copies().at(0));
  }
}

INSTANTIATE_TEST_SUITE_P(Signals, EndingBySignal,
                         testing::Combine(testing::Values(SIGHUP, SIGINT, SIGTERM),
                                          testing::Bool()),
                         [](const auto& instance) {
                           return std::string(sigabbrev_np(std::get<0>(instance.param))) +
                                  (std::get<1>(instance.param) ? "OnATerminal" : "OnAPipe");
                         });

TEST_F(Ending, ASignalDuringACallOfAOneShotModeEndsItBeforeTheNextCall) {
  controller.answerNext(stalled(true));
  Start typeMode = start(false);
  typeMode.arguments = {"--type", "skyit"};
  ProgramProcess console(typeMode);
  controller.waitForCalls(1);
  console.signal(SIGTERM);
  controller.release();
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.signal, SIGTERM);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(controller.methods(), std::vector<std::string>{"getHeadendConfig"});
}

TEST_F(Ending, ASignalBetweenTheCallsOfOneCommandSendsNoMore) {
  HeadendStatus status;
  for (int id = 3; id <= 10; ++id) {
    status.satRFInputs[static_cast<korvel::thrift::general::RFInputId::type>(id)];
  }
  controller.setStatus(status);
  ProgramProcess console(start(false));
  console.readUntil("> ");
  controller.answerNext({});
  controller.answerNext(stalled(true));
  console.send("rfinput enable SATALL\n");
  controller.waitForCalls(3);  // the configuration, the status, SAT1
  console.signal(SIGINT);
  controller.release();
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.signal, SIGINT);
  EXPECT_EQ(controller.methods(), (std::vector<std::string>{"getHeadendConfig", "getHeadendStatus",
                                                            "setSATRFInputConfig"}));
}

class EndingByException : public Ending, public testing::WithParamInterface<bool> {};

TEST_P(EndingByException, AnInputMissingFromTheStatusAbortsAfterTheRescue) {
  const bool terminal = GetParam();
  ProgramProcess console(start(terminal));
  console.readUntil("> ");
  console.send("id 7\nrfinput enable SAT1\n");
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.signal, SIGABRT);
  EXPECT_NE((outcome.out + outcome.err).find("map::at"), std::string::npos);
  expectRescued(outcome, terminal);
}

TEST_P(EndingByException, AMalformedListOfTheCatalogueAbortsAfterTheRescue) {
  const bool terminal = GetParam();
  CatalogueFile(kCataloguePath).insert(kSat, {{15, "17"}, {24, "101,,103"}});
  ProgramProcess console(start(terminal));
  console.readUntil("> ");
  console.send("id 7\nadddvb 17\n");
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.signal, SIGABRT);
  EXPECT_NE((outcome.out + outcome.err).find("stoi"), std::string::npos);
  expectRescued(outcome, terminal);
}

TEST_P(EndingByException, WithNothingPendingNothingIsWritten) {
  const bool terminal = GetParam();
  ProgramProcess console(start(terminal));
  console.readUntil("> ");
  console.send("rfinput enable SAT1\n");
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.signal, SIGABRT);
  EXPECT_TRUE(copies().empty());
}

INSTANTIATE_TEST_SUITE_P(Streams, EndingByException, testing::Bool(), [](const auto& instance) {
  return instance.param ? "OnATerminal" : "OnAPipe";
});

TEST_F(Ending, ADroppedTerminalCountsAsHangUp) {
  const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_GE(master, 0);
  ASSERT_EQ(grantpt(master), 0);
  ASSERT_EQ(unlockpt(master), 0);
  const std::string command = std::string("exec ") + kConsoleProgram + " < " + ptsname(master) +
                              " > " + elsewhere.file("out");
  Start shell = start(false);
  shell.program = "/bin/sh";
  shell.arguments = {"-c", command};
  ProgramProcess console(shell);
  ASSERT_EQ(write(master, "id 7\n", 5), 5);
  while (!fs::exists(elsewhere.file("out")) || fs::file_size(elsewhere.file("out")) < 100) {
    usleep(10'000);
  }
  close(master);
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.signal, SIGHUP);
  expectRescued(outcome, false);
}

TEST_F(Ending, OnAStoppedTerminalItEndsAllTheSame) {
  for (const char* type : {"dumb", "xterm"}) {
    controller.setConfig({});
    Start stopped = start(true);
    stopped.environment["TERM"] = type;
    ProgramProcess console(stopped);
    edit(console);
    console.send(kCtrlS);
    console.send("show\n");
    console.waitUntilBlocked();
    console.signal(SIGTERM);
    console.waitForEnd();
    EXPECT_EQ(console.finish().signal, SIGTERM);
    fs::remove(expectCopy());
  }
}

TEST_F(Ending, AtThePromptOfAStoppedTerminalItEndsAllTheSame) {
  for (const int signal : {SIGTERM, SIGQUIT}) {
    controller.setConfig({});
    Start stopped = start(true);
    stopped.environment["TERM"] = "xterm";
    ProgramProcess console(stopped);
    edit(console);
    console.send(kCtrlS);
    console.send("x");
    console.waitUntilBlocked();
    console.signal(signal);
    console.waitForEnd();
    EXPECT_EQ(console.finish().signal, signal);
    fs::remove(expectCopy());
  }
}

TEST_F(Ending, AFileThatWasReadInPartIsNotRescued) {
  const std::string file = elsewhere.file("file");
  runConsole({}, "id 3\nsave " + file + "\n");
  std::string text = contentOf(file);
  text.pop_back();
  fs::remove(file);
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  ProgramProcess console(start(false));
  console.readUntil("> ");
  console.send("id 7\nrestore " + file + "\n");
  const int writer = open(file.c_str(), O_WRONLY | O_CLOEXEC);
  EXPECT_EQ(write(writer, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  console.waitUntilBlocked();
  console.signal(SIGTERM);
  const Outcome outcome = console.finish();
  close(writer);
  EXPECT_EQ(outcome.signal, SIGTERM);
  expectRescued(outcome, false);
}

TEST_F(Ending, AnOutputThatIsReadAgainWithinASecondIsNotCutShort) {
  using Clock = std::chrono::steady_clock;
  std::string lines;
  for (int count = 0; count < 200; ++count) {
    lines += "show\n";
  }
  for (int attempt = 0; attempt < 10; ++attempt) {
    ProgramProcess console(start(false));
    console.readUntil("> ");
    console.send(lines);
    console.waitUntilBlocked();
    const Clock::time_point signalled = Clock::now();
    console.signal(SIGTERM);
    console.waitUntilBlocked();  // again
    const Outcome outcome = console.finish();
    EXPECT_EQ(outcome.signal, SIGTERM);
    if (Clock::now() - signalled < std::chrono::seconds(1)) {
      const std::size_t last = outcome.out.rfind("Current lineup:\n");
      ASSERT_NE(last, std::string::npos);
      EXPECT_TRUE(outcome.out.ends_with("\n}\n")) << outcome.out.substr(last);
      return;
    }
  }
  GTEST_SKIP() << "the machine is too busy to read anything within a second";
}

TEST_F(Ending, AReaderThatGoesAwayEndsItBeforeTheNextCommand) {
  ProgramProcess console(start(false));
  edit(console);
  console.stopReading();
  const std::string saved = elsewhere.file("saved");
  console.send("rfaddempty 1\nsave " + saved + "\n");
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.signal, SIGPIPE);
  EXPECT_FALSE(fs::exists(saved));
  expectRescued(outcome, false);
}

TEST_F(Ending, AReaderThatGoesAwayWithNothingPendingLeavesNothing) {
  ProgramProcess console(start(false));
  console.readUntil("> ");
  console.stopReading();
  console.send("help\n");
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.signal, SIGPIPE);
  EXPECT_EQ(outcome.err, "");
  EXPECT_TRUE(copies().empty());
}

TEST_F(Ending, WithoutAStateFolderTheCopyIsInTheTemporaryFolderOrInTmp) {
  const std::string withBlank = elsewhere.file("with blank");
  const std::string withTab = elsewhere.file("with\ttab");
  const std::string link = elsewhere.file("lineup-console");
  fs::create_directory(withBlank);
  fs::create_directory(withTab);
  fs::create_directory_symlink(folder.path(), link);
  const std::pair<std::optional<std::string>, std::string> folders[] = {
      {"/proc/none", "/tmp"}, {withBlank, "/tmp"},    {withTab, "/tmp"},
      {"", "/tmp"},           {std::nullopt, "/tmp"}, {folder.path(), folder.path()}};
  for (const auto& [temporary, expected] : folders) {
    // Neither a link nor a folder that cannot be made is the user's own.
    for (const std::string& state : {elsewhere.path(), std::string("/proc/none")}) {
      Start misled = start(false);
      misled.environment["XDG_STATE_HOME"] = state;
      misled.environment["TMPDIR"] = temporary;
      ProgramProcess console(misled);
      edit(console);
      console.signal(SIGTERM);
      const Outcome outcome = console.finish();
      EXPECT_EQ(outcome.signal, SIGTERM);
      ASSERT_TRUE(outcome.err.starts_with(kUncommittedIn + expected + "/lineup-console-2"))
          << outcome.err;
      const std::string path =
          outcome.err.substr(kUncommittedIn.size(), outcome.err.find(':') - kUncommittedIn.size());
      EXPECT_EQ(unlink(path.c_str()), 0);
    }
  }
}

TEST_F(Ending, TheStateFolderIsMadeInTheHomeFolder) {
  Start home = start(false);
  home.environment["XDG_STATE_HOME"] = "not/from/the/root";
  home.environment["HOME"] = folder.path();
  ProgramProcess console(home);
  edit(console);
  console.signal(SIGTERM);
  const std::string state = folder.file(".local/state/lineup-console");
  EXPECT_NE(console.finish().err.find(state + "/lineup-console-2"), std::string::npos);
  EXPECT_EQ(fs::status(state).permissions(), fs::perms::owner_all);
}

TEST_F(Ending, ATemporaryFolderThatIsRelativeIsNamedFromTheRoot) {
  Start relative = start(false);
  relative.folder = elsewhere.path();
  relative.environment["XDG_STATE_HOME"] = "/proc/none";
  relative.environment["TMPDIR"] = ".";
  ProgramProcess console(relative);
  edit(console);
  console.signal(SIGTERM);
  const Outcome outcome = console.finish();
  EXPECT_TRUE(outcome.err.starts_with(kUncommittedIn + "/")) << outcome.err;
  EXPECT_EQ(outcome.err.find(" /tmp/lineup-console-2"), std::string::npos) << outcome.err;
  EXPECT_NE(outcome.err.find("\"restore /"), std::string::npos) << outcome.err;
}

TEST_F(Ending, EditsThatFitInNoFolderAreSaidToBeLostAndLeaveNoFile) {
  Start shell = start(false);
  shell.program = "/bin/sh";
  shell.arguments = {"-c", std::string("ulimit -S -f 0; exec ") + kConsoleProgram};
  ProgramProcess console(shell);
  edit(console);
  // Beyond the limit on the size of a file there is no more room than on a full disk.
  const std::string saved = elsewhere.file("saved");
  console.send("save " + saved + "\n");
  console.readUntil("Saved config to: " + saved + "\n" + kPending);
  console.signal(SIGTERM);
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.signal, SIGTERM);
  EXPECT_EQ(outcome.err, "The uncommitted changes could not be written to a file\n");
  EXPECT_TRUE(copies().empty());
  EXPECT_EQ(fs::file_size(saved), 0U);
}

TEST_F(Ending, QuitAndEndOfInputWriteNothing) {
  for (const char* lines : {"id 7\nquit\n", "id 7\n"}) {
    const Outcome outcome = run(start(false), lines);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
  }
  EXPECT_TRUE(copies().empty());
}

TEST_F(Ending, AnIgnoredHangUpStaysIgnored) {
  Start shell = start(false);
  shell.program = "/bin/sh";
  shell.arguments = {"-c", std::string("trap '' HUP; exec ") + kConsoleProgram};
  ProgramProcess console(shell);
  console.readUntil("> ");
  console.signal(SIGHUP);
  console.send("id 7\nquit\n");
  EXPECT_EQ(console.finish().status, 0);
}

}  // namespace
}  // namespace lineup::test
