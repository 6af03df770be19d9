// A console that ends abnormally: its pending edits are saved first, and it ends as it would have.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

#include "tests/console/edits_on_disk.h"
#include "tests/console/keys.h"
#include "tests/support/catalogue_file.h"
#include "tests/support/expect_end.h"
#include "tests/support/expect_for_owner_alone.h"
#include "tests/support/matches.h"
#include "tests/support/rf_inputs.h"
#include "tests/support/sandbox.h"
#include "tests/support/wait_until.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;

/// More than a pipe or a terminal holds.
std::string manyListings() {
  std::string lines;
  for (int count = 0; count < 200; ++count) {
    lines += "show\n";
  }
  return lines;
}

class Ending : public EditsOnDisk {
 protected:
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
    expectForOwnerAlone(path);
    const std::string name = files[0].filename().string();
    EXPECT_TRUE(matches(name, "lineup-console-[0-9]{8}-[0-9]{6}-[0-9]+[.]json")) << name;
    const Outcome restored = runConsole({}, "restore " + path + "\n");
    EXPECT_NE(restored.out.find("Restored config from: " + path), std::string::npos);
    EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 7);
    return path;
  }

  TemporaryFolder elsewhere;  ///< for other files
};

class EndingBySignal : public Ending, public testing::WithParamInterface<std::tuple<int, bool>> {
 protected:
  /// Has the signal arrive while an edit is being committed; the rest of the answer then comes, or
  /// does not. Expects the end by the signal.
  Outcome signalDuringCommit(bool goesOn) {
    const auto [signal, terminal] = GetParam();
    EditedConsole console(start(terminal));
    controller.answerNext(stalled(goesOn));
    console.send("commit\n");
    controller.waitForCalls(2);
    console.signal(signal);
    console.waitUntilTaken(signal);
    controller.release();
    return expectEndBy(console, signal);
  }
};

TEST_P(EndingBySignal, AtThePromptPendingEditsAreRescued) {
  const auto [signal, terminal] = GetParam();
  EditedConsole console(start(terminal));
  const Outcome outcome = endBy(console, signal);
  expectRescued(outcome, terminal);
}

TEST_P(EndingBySignal, WithNothingPendingNothingIsWritten) {
  const auto [signal, terminal] = GetParam();
  ProgramProcess console(start(terminal));
  console.readUntil("> ");
  const Outcome outcome = endBy(console, signal);
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
  const Outcome outcome = endBy(console, signal);
  EXPECT_EQ((outcome.out + outcome.err).find("intento: 2"), std::string::npos);
  expectRescued(outcome, terminal);
}

TEST_P(EndingBySignal, WhileNobodyReadsTheOutputItEndsAllTheSame) {
  const auto [signal, terminal] = GetParam();
  EditedConsole console(start(terminal));
  console.send(manyListings());
  console.waitUntilBlocked();
  console.signal(signal);
  console.waitForEnd();
  const Outcome outcome = expectEndBy(console, signal);
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
    EditedConsole console(start(terminal));
    console.send(command + pipe + "\n");
    console.waitUntilBlocked();
    const Outcome outcome = endBy(console, signal);
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
                                  nameOfStreams(std::get<1>(instance.param));
                         });

TEST_F(Ending, ASignalDuringACallOfAOneShotModeEndsItBeforeTheNextCall) {
  controller.answerNext(stalled(true));
  Start typeMode = start(false);
  typeMode.arguments = {"--type", "skyit"};
  ProgramProcess console(typeMode);
  controller.waitForCalls(1);
  console.signal(SIGTERM);
  controller.release();
  const Outcome outcome = expectEndBy(console, SIGTERM);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(controller.methods(), std::vector<std::string>{"getHeadendConfig"});
}

TEST_F(Ending, ASignalBetweenTheCallsOfOneCommandSendsNoMore) {
  controller.setStatus(tenInputs("----------"));
  ProgramProcess console(start(false));
  console.readUntil("> ");
  controller.answerRightly();
  controller.answerNext(stalled(true));
  console.send("rfinput enable SATALL\n");
  controller.waitForCalls(3);  // the configuration, the status, SAT1
  console.signal(SIGINT);
  controller.release();
  expectEndBy(console, SIGINT);
  EXPECT_EQ(controller.methods(), (std::vector<std::string>{"getHeadendConfig", "getHeadendStatus",
                                                            "setSATRFInputConfig"}));
}

class EndingByException : public Ending, public testing::WithParamInterface<bool> {
 protected:
  /// Expects that the line ends the console by an exception that says `reason`, after the rescue.
  void expectAbort(const std::string& line, const std::string& reason) {
    EditedConsole console(start(GetParam()));
    console.send(line + "\n");
    const Outcome outcome = expectEndBy(console, SIGABRT);
    EXPECT_NE((outcome.out + outcome.err).find(reason), std::string::npos);
    expectRescued(outcome, GetParam());
  }
};

TEST_P(EndingByException, AnInputMissingFromTheStatusAbortsAfterTheRescue) {
  expectAbort("rfinput enable SAT1", "map::at");
}

TEST_P(EndingByException, AMalformedListOfTheCatalogueAbortsAfterTheRescue) {
  CatalogueFile(kCataloguePath).insert(kSat, {{15, "17"}, {24, "101,,103"}});
  expectAbort("adddvb 17", "stoi");
}

TEST_P(EndingByException, WithNothingPendingNothingIsWritten) {
  ProgramProcess console(start(GetParam()));
  console.send("rfinput enable SAT1\n");
  expectEndBy(console, SIGABRT);
  EXPECT_TRUE(copies().empty());
}

INSTANTIATE_TEST_SUITE_P(Streams, EndingByException, testing::Bool(),
                         [](const auto& instance) { return nameOfStreams(instance.param); });

TEST_F(Ending, ADroppedTerminalCountsAsHangUp) {
  const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_GE(master, 0);
  ASSERT_EQ(grantpt(master), 0);
  ASSERT_EQ(unlockpt(master), 0);
  const std::string command =
      "exec " + kConsoleProgram + " < " + ptsname(master) + " > " + elsewhere.file("out");
  ProgramProcess console(inShell(command, start(false)));
  ASSERT_EQ(write(master, "id 7\n", 5), 5);
  waitUntil([&] { return contentOf(elsewhere.file("out")).size() >= 100; });
  close(master);
  const Outcome outcome = expectEndBy(console, SIGHUP);
  expectRescued(outcome, false);
}

TEST_F(Ending, OnAStoppedTerminalItEndsAllTheSame) {
  struct {
    const char* type;
    const char* keys;  ///< after the stop: at the prompt, or for a command that prints
    int signal;
  } const cases[] = {{"dumb", "show\n", SIGTERM},
                     {"xterm", "show\n", SIGTERM},
                     {"xterm", "x", SIGTERM},
                     {"xterm", "x", SIGQUIT}};
  for (const auto& [type, keys, signal] : cases) {
    controller.setConfig({});
    EditedConsole console(start(true, type));
    console.send(kCtrlS);
    console.send(keys);
    console.waitUntilBlocked();
    console.signal(signal);
    console.waitForEnd();
    expectEndBy(console, signal);
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
  const Outcome outcome = expectEndBy(console, SIGTERM);
  close(writer);
  expectRescued(outcome, false);
}

TEST_F(Ending, AnOutputThatIsReadAgainWithinASecondIsNotCutShort) {
  using Clock = std::chrono::steady_clock;
  for (int attempt = 0; attempt < 10; ++attempt) {
    ProgramProcess console(start(false));
    console.readUntil("> ");
    console.send(manyListings());
    console.waitUntilBlocked();
    const Clock::time_point signalled = Clock::now();
    console.signal(SIGTERM);
    console.waitUntilBlocked();  // again
    const Outcome outcome = expectEndBy(console, SIGTERM);
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
  EditedConsole console(start(false));
  console.stopReading();
  const std::string saved = elsewhere.file("saved");
  console.send("rfaddempty 1\nsave " + saved + "\n");
  const Outcome outcome = expectEndBy(console, SIGPIPE);
  EXPECT_FALSE(fs::exists(saved));
  expectRescued(outcome, false);
}

TEST_F(Ending, AReaderThatGoesAwayWithNothingPendingLeavesNothing) {
  ProgramProcess console(start(false));
  console.readUntil("> ");
  console.stopReading();
  console.send("help\n");
  const Outcome outcome = expectEndBy(console, SIGPIPE);
  EXPECT_EQ(outcome.err, "");
  EXPECT_TRUE(copies().empty());
}

TEST_F(Ending, WithoutAStateFolderTheCopyIsInTheTemporaryFolderNamedFromTheRoot) {
  Start relative = start(false);
  relative.folder = elsewhere.path();
  relative.environment["XDG_STATE_HOME"] = "/proc/none";
  relative.environment["TMPDIR"] = ".";
  EditedConsole console(relative);
  const Outcome outcome = endBy(console, SIGTERM);
  ASSERT_EQ(pathsIn(elsewhere.path()).size(), 1U);
  EXPECT_TRUE(outcome.err.starts_with(kUncommittedIn + "/")) << outcome.err;
  EXPECT_EQ(outcome.err.find(" /tmp/lineup-console-2"), std::string::npos) << outcome.err;
  EXPECT_NE(outcome.err.find("\"restore /"), std::string::npos) << outcome.err;
}

TEST_F(Ending, TheLogSaysWhereTheCopyIsToo) {
  Start logging = start(false);
  logging.arguments = {"-c"};
  EditedConsole console(logging);
  const Outcome outcome = endBy(console, SIGTERM);
  EXPECT_EQ(count(outcome.err, kUncommittedIn), 2) << outcome.err;
  EXPECT_EQ(count(outcome.err, "]: " + kUncommittedIn), 1) << outcome.err;
}

TEST_F(Ending, EditsThatFitInNoFolderAreSaidToBeLostAndLeaveNoFile) {
  EditedConsole console(inShell("ulimit -S -f 0; exec " + kConsoleProgram, start(false)));
  // Beyond the limit on the size of a file there is no more room than on a full disk.
  const std::string saved = elsewhere.file("saved");
  console.send("save " + saved + "\n");
  console.readUntil("Saved config to: " + saved + "\n" + kPending);
  const Outcome outcome = endBy(console, SIGTERM);
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
  ProgramProcess console(inShell("trap '' HUP; exec " + kConsoleProgram, start(false)));
  console.readUntil("> ");
  console.signal(SIGHUP);
  console.send("id 7\nquit\n");
  EXPECT_EQ(console.finish().status, 0);
}

}  // namespace
}  // namespace lineup::test
