// How the program starts and ends: options, modes and exit statuses.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/console_texts.h"
#include "tests/support/fake_controller.h"
#include "tests/support/program_process.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

using korvel::thrift::hub_module::HeadendConfig;
using Methods = std::vector<std::string>;

/// The usage text after "usage: " and the program's name.
constexpr char kUsage[] =
    R"text( [ -clvhsrt ] 
Lineup command line interface
Options:
   [ -c ] [ --console ] (type=FLAG)
          Log to console. Default: not print to console.
   [ -l ] [ --level ] (type=INTEGER, range=3...7, default=5)
          Max log level value to print:
           3 == ERROR
           4 == WARNING
           5 == NOTICE
           6 == INFORMATION
           7 == DEBUG
   [ -v ] [ --version ] (type=FLAG)
          Program version and exit.
   [ -h ] [ --help ] (type=FLAG)
          Display this help and exit.
   [ -s ] [ --save ] (type=STRING)
          Save HeadendConfig to JSON file
   [ -r ] [ --restore ] (type=STRING)
          Restore HeadendConfig from JSON file
   [ -t ] [ --type ] (type=STRING)
          Set headend type. standard skyit
)text";

std::string tryHelp() {
  return "Try `" + kConsoleProgram + " --help' for more information.\n";
}

void expectOutcome(const Outcome& outcome, int status, const std::string& out,
                   const std::string& err) {
  EXPECT_EQ(outcome.signal, 0);
  EXPECT_EQ(outcome.status, status);
  EXPECT_EQ(outcome.out, out);
  EXPECT_EQ(outcome.err, err);
}

TEST(Start, VersionIsPrintedAndNothingElseIsDone) {
  const FakeController controller;
  for (const char* option : {"-v", "--version"}) {
    expectOutcome(runConsole({option, "-s", "/nonexistent/file"}), 0,
                  "\nVersion: 2.10.1+d20260617\n", "");
  }
  EXPECT_EQ(controller.connections(), 0U);
}

TEST(Start, HelpIsPrintedDuringParsing) {
  const std::string usage = "usage: " + kConsoleProgram + kUsage;
  expectOutcome(runConsole({"--help"}), 0, usage, "");
  expectOutcome(runConsole({"-v", "-h", "-l", "9"}), 0, usage, "");
}

TEST(Start, LevelOutOfRangeExitsWithOne) {
  expectOutcome(runConsole({"--level=8"}), 1, "", "parameter range error: level must be <= 7\n");
}

TEST(Start, UnknownOptionExitsWithOne) {
  expectOutcome(runConsole({"-x"}), 1, "",
                kConsoleProgram + ": invalid option -- 'x'\n" + tryHelp());
}

/// Runs the console with `redirections` as the shell has them.
Outcome runRedirected(const std::string& redirections, const std::string& input) {
  return run(inShell("exec " + kConsoleProgram + " -c -l 7 " + redirections), input);
}

TEST(Start, CommitsWhereNothingCanBePrinted) {
  for (const char* redirections : {">/dev/full", ">&-", ">&- 2>&-"}) {
    SCOPED_TRACE(redirections);
    const FakeController controller;
    expectOutcome(runRedirected(redirections, "id 7\ncommit\nquit\n"), 0, "", "");
    EXPECT_EQ(controller.methods(), (Methods{"getHeadendConfig", "setHeadendConfig"}));
    EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 7);
  }
}

TEST(Start, AClosedInputIsOneThatHasEnded) {
  const FakeController controller;
  expectOutcome(runRedirected("<&-", ""), 0, kGreeting + "> \n", "");
}

// Descriptor 2 must not go to the connection that fails: the log would be written to it and raise
// SIGPIPE.
TEST(Start, WithStandardErrorClosedTheLogIsDiscarded) {
  expectOutcome(runRedirected("2>&-", "commit\n"), 0,
                kFetchFailed + kGreeting + "> " + kCommitFailed + "> \n", "");
}

TEST(Start, ConsoleOptionShowsTheLogOnStandardError) {
  const Outcome outcome = runConsole({"-c", "-l", "7"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.err.find("lineup-console["), std::string::npos) << outcome.err;
}

TEST(Start, TypeModeSetsTheTypeAndCommits) {
  FakeController controller;
  HeadendConfig config;
  config.headendGlobalConfig.headendName = "North";
  controller.setConfig(config);
  expectOutcome(runConsole({"--type", "skyit"}), 0, "Headend type set to: skyit\n", "");
  EXPECT_EQ(controller.methods(), (Methods{"getHeadendConfig", "setHeadendConfig"}));
  EXPECT_EQ(controller.config().headendGlobalConfig.headendType, 1);
  EXPECT_EQ(controller.config().headendGlobalConfig.headendName, "North");
  EXPECT_EQ(controller.config().headendGlobalConfig.timeZone, "Europe/Rome");
}

TEST(Start, TypeModeCommitsAlsoWhenTheTypeIsHeldAlready) {
  const FakeController controller;
  expectOutcome(runConsole({"-t", "standard"}), 0, "Headend type set to: standard\n", "");
  EXPECT_EQ(controller.methods(), (Methods{"getHeadendConfig", "setHeadendConfig"}));
}

TEST(Start, TypeModeWithAnInvalidWordCommitsNothing) {
  const FakeController controller;
  expectOutcome(runConsole({"-t", "sky"}), 0, "Please a valid headend type: standard, skyit\n", "");
  EXPECT_EQ(controller.methods(), Methods{"getHeadendConfig"});
}

TEST(Start, TypeModeTakesTheFirstWordOfItsArgument) {
  const FakeController controller;
  expectOutcome(runConsole({"-t", "skyit x"}), 0, "Headend type set to: skyit x\n", "");
  EXPECT_EQ(controller.config().headendGlobalConfig.headendType, 1);
}

TEST(Start, TypeModeGoesOnFromTheDefaultsAfterAFailedFetch) {
  FakeController controller;
  controller.answerNext({.kind = Answer::kNotReady});
  expectOutcome(runConsole({"-t", "skyit"}), 0, kFetchFailed + "Headend type set to: skyit\n", "");
  HeadendConfig expected;
  expected.headendGlobalConfig.headendType = 1;
  expected.headendGlobalConfig.timeZone = "Europe/Rome";
  expected.headendGlobalConfig.__set_countryCode(korvel::thrift::general::CountryCode::ITALY);
  expected.lineupConfig.rfConfig.rfProfileFlag = true;
  ASSERT_EQ(controller.calls().size(), 2U);
  EXPECT_EQ(controller.calls()[1].config, expected);
}

TEST(Start, TypeModeSaysItsLineAlsoWhenTheCommitFailed) {
  expectOutcome(runConsole({"-t", "skyit"}), 0,
                kFetchFailed + kCommitFailed + "Headend type set to: skyit\n", "");
}

TEST(Start, SaveBeatsRestoreAndType) {
  const FakeController controller;
  const TemporaryFolder folder;
  const std::string path = folder.file("saved.json");
  expectOutcome(runConsole({"-t", "skyit", "-r", "/nonexistent/b.json", "-s", path}), 0,
                savedTo(path), "");
  EXPECT_EQ(controller.methods(), Methods{"getHeadendConfig"});
  EXPECT_TRUE(std::filesystem::exists(path));
}

TEST(Start, RestoreBeatsType) {
  const FakeController controller;
  expectOutcome(runConsole({"-t", "skyit", "-r", "/nonexistent/b.json"}), 0,
                restoredFrom("/nonexistent/b.json"), "");
  EXPECT_EQ(controller.methods(), Methods{"setHeadendConfig"});
  EXPECT_EQ(controller.config(), HeadendConfig());
}

TEST(Start, EveryModeReturnsZeroWithoutAController) {
  expectOutcome(runConsole({"-s", "/nonexistent/a.json"}), 0,
                kFetchFailed + savedTo("/nonexistent/a.json"), "");
  expectOutcome(runConsole({"-r", "/nonexistent/a.json"}), 0,
                kCommitFailed + restoredFrom("/nonexistent/a.json"), "");
}

}  // namespace
}  // namespace lineup::test
