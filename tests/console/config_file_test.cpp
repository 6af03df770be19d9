// Saving and restoring with the built console: at the prompt and by options, good paths and bad
// ones.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/console/session.h"
#include "tests/support/encoding.h"
#include "tests/support/fake_controller.h"
#include "tests/support/random_records.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

using korvel::thrift::hub_module::HeadendConfig;

const std::string kFetchError = "ERROR: Could not get current config from ControllerTask\n";
const std::string kCommitError = "ERROR: Could not set LineupConfig to ControllerTask\n";
const std::string kIdChanged = "Headend id changed to: 7. Please remember to commit the changes.\n";

std::string saved(const std::string& path) {
  return "Saved config to: " + path + "\n";
}

std::string restored(const std::string& path) {
  return "Restored config from: " + path + "\n";
}

std::string contentOf(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

void fill(const std::string& path, const std::string& content) {
  std::ofstream(path) << content;
}

void expectOutcome(const Outcome& outcome, const std::string& out) {
  EXPECT_EQ(outcome.out, out);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.status, 0);
}

class ConsoleFilesAlone : public testing::Test {
 protected:
  TemporaryFolder folder_;
  const std::string path_ = folder_.file("config.json");
};

class ConsoleFiles : public ConsoleFilesAlone {
 protected:
  ConsoleFiles() { controller_.setConfig(randomHeadendConfig(1)); }

  static HeadendConfig withId7(HeadendConfig config) {
    config.headendGlobalConfig.headendId = 7;
    return config;
  }

  FakeController controller_;
};

// ---- save

TEST_F(ConsoleFiles, SaveWithNothingPendingWritesTheControllersConfiguration) {
  ConsoleProcess console(Start{});
  console.readUntil("> ");
  controller_.setConfig(randomHeadendConfig(2));  // it has changed since the console fetched it
  console.send("save " + path_ + "\n");
  EXPECT_EQ(console.readUntil("> "), saved(path_) + "> ");
  EXPECT_EQ(contentOf(path_), toJson(randomHeadendConfig(2)));
  EXPECT_EQ(console.finish().status, 0);
}

TEST_F(ConsoleFiles, SaveWithPendingChangesWritesTheEditedConfigurationAndLeavesThemPending) {
  expectSession({{"id 7", kIdChanged}, {"save " + path_, saved(path_)}});
  EXPECT_EQ(contentOf(path_), toJson(withId7(randomHeadendConfig(1))));
  EXPECT_EQ(controller_.methods(), std::vector<std::string>{"getHeadendConfig"});
}

TEST_F(ConsoleFiles, SaveModeWritesTheControllersConfiguration) {
  expectOutcome(runConsole({"--save", path_}), saved(path_));
  EXPECT_EQ(contentOf(path_), toJson(randomHeadendConfig(1)));
  EXPECT_EQ(controller_.methods(), std::vector<std::string>{"getHeadendConfig"});
}

TEST_F(ConsoleFilesAlone, SaveModeWithoutAControllerWritesTheDefaults) {
  expectOutcome(runConsole({"--save", path_}), kFetchError + saved(path_));
  EXPECT_EQ(contentOf(path_), toJson(HeadendConfig()));
}

TEST_F(ConsoleFiles, SavedFileIsForItsOwnerAlone) {
  const mode_t old = umask(0);
  expectOutcome(runConsole({"--save", path_}), saved(path_));
  umask(old);
  struct stat status {};
  ASSERT_EQ(stat(path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, mode_t{0600});
}

TEST_F(ConsoleFiles, SaveTruncatesAnExistingFileAndKeepsItsPermissions) {
  fill(path_, std::string(1000000, 'x'));
  chmod(path_.c_str(), 0640);
  expectOutcome(runConsole({"--save", path_}), saved(path_));
  EXPECT_EQ(contentOf(path_), toJson(randomHeadendConfig(1)));
  struct stat status {};
  ASSERT_EQ(stat(path_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, mode_t{0640});
}

TEST_F(ConsoleFiles, SaveToARelativePathWritesIntoTheWorkingFolder) {
  expectOutcome(run({.arguments = {"-s", "a.json"}, .folder = folder_.path()}), saved("a.json"));
  EXPECT_EQ(contentOf(folder_.file("a.json")), toJson(randomHeadendConfig(1)));
}

TEST_F(ConsoleFiles, SaveThatFailsSaysSavedAllTheSameAndTheConsoleGoesOn) {
  const std::string missing = folder_.file("missing/config.json");
  expectSession({{"id 7", kIdChanged},
                 {"save " + missing, saved(missing)},
                 {"save " + folder_.path(), saved(folder_.path())},
                 {"save /dev/full", saved("/dev/full")},
                 {"save ", "Please a configuration file\n"},
                 {"save  ", saved("")},
                 {"commit", "", false}});
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
  EXPECT_EQ(controller_.config(), withId7(randomHeadendConfig(1)));
}

TEST_F(ConsoleFiles, SystemCallsOfASaveComeInOrder) {
  const std::string log = folder_.file("strace.log");
  Outcome outcome;
  try {
    outcome = run({.program = "strace",
                   .arguments = {"-o", log, "-s", "0", "-e",
                                 "trace=open,openat,creat,write,syncfs,close,sync,fsync,fdatasync",
                                 kConsoleProgram, "--save", path_},
                   .environment = {{"ASAN_OPTIONS", "detect_leaks=0"}}});
  } catch (const std::runtime_error& error) {
    GTEST_SKIP() << "no strace: " << error.what();
  }
  if (outcome.status != 0 || contentOf(log).find("openat(") == std::string::npos) {
    GTEST_SKIP() << "strace may not trace here: " << outcome.err;
  }

  // From the opening of the file to the end of the save: the calls on its descriptor while it is
  // open, runs of one call as one. (The sanitizers make calls of their own on others.)
  std::ifstream lines(log);
  std::vector<std::string> calls;
  std::string descriptor = "none yet";
  for (std::string line; std::getline(lines, line) && (calls.empty() || calls.back() != "sync");) {
    const std::string call = line.substr(0, line.find('('));
    const std::string arguments = line.substr(line.find('(') + 1);
    if (line.find("\"" + path_ + "\"") != std::string::npos) {
      EXPECT_NE(line.find("O_WRONLY|O_CREAT|O_TRUNC, 0600)"), std::string::npos) << line;
      descriptor = line.substr(line.rfind(' ') + 1);
      calls.emplace_back("open");
    } else if (call == "sync" || arguments.substr(0, arguments.find_first_of(",)")) == descriptor) {
      if (calls.empty() || calls.back() != call) {
        calls.push_back(call);
      }
      if (call == "close") {
        descriptor = "none any more";
      }
    }
  }
  EXPECT_EQ(calls, (std::vector<std::string>{"open", "write", "syncfs", "write", "close", "sync"}))
      << contentOf(log);
}

// ---- restore

TEST_F(ConsoleFiles, SaveThenRestoreSendsTheIdenticalConfigurationAtOnce) {
  expectSession({{"id 7", kIdChanged},
                 {"save " + path_, saved(path_)},
                 {"reset", "", false},
                 {"restore " + path_, restored(path_), false}});
  EXPECT_EQ(controller_.methods().back(), "setHeadendConfig");
  EXPECT_EQ(controller_.calls().back().config, withId7(randomHeadendConfig(1)));
}

TEST_F(ConsoleFiles, RestoreModeSendsTheFileWithoutAFetch) {
  fill(path_, toJson(randomHeadendConfig(3)));
  expectOutcome(runConsole({"--restore", path_}), restored(path_));
  EXPECT_EQ(controller_.methods(), std::vector<std::string>{"setHeadendConfig"});
  EXPECT_EQ(controller_.config(), randomHeadendConfig(3));
}

TEST_F(ConsoleFiles, RestoreOfAMissingFileSendsWhatTheConsoleHas) {
  expectSession({{"id 7", kIdChanged}, {"restore " + path_, restored(path_), false}});
  EXPECT_EQ(controller_.config(), withId7(randomHeadendConfig(1)));
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(ConsoleFiles, RestoreModeOfAMissingFileSendsTheDefaults) {
  expectOutcome(runConsole({"--restore", path_}), restored(path_));
  EXPECT_EQ(controller_.methods(), std::vector<std::string>{"setHeadendConfig"});
  EXPECT_EQ(controller_.config(), HeadendConfig());
}

TEST_F(ConsoleFiles, RestoreOfAFolderOrAnEmptyFileSendsWhatTheConsoleHas) {
  fill(path_, "");
  expectSession({{"restore " + folder_.path(), restored(folder_.path()), false},
                 {"restore " + path_, restored(path_), false},
                 {"restore /dev/null", restored("/dev/null"), false}});
  for (size_t call = 1; call < controller_.calls().size(); ++call) {
    EXPECT_EQ(controller_.calls()[call].config, randomHeadendConfig(1));
  }
}

TEST_F(ConsoleFiles, RestoreKeepsTheFieldsThatTheFileLacks) {
  fill(path_, R"({"2":{"rec":{"1":{"i32":7}}}})");
  expectSession({{"restore " + path_, restored(path_), false}});
  EXPECT_EQ(controller_.config(), withId7(randomHeadendConfig(1)));
}

TEST_F(ConsoleFiles, RestoreSkipsFieldsOfAnotherProgram) {
  std::string text = toJson(randomHeadendConfig(3));
  text.insert(1, R"("90":{"str":"=="},"91":{"lst":["rec",1,{"1":{"dbl":0.5}}]},)");
  fill(path_, text);
  expectOutcome(runConsole({"-r", path_}), restored(path_));
  EXPECT_EQ(controller_.config(), randomHeadendConfig(3));
}

TEST_F(ConsoleFiles, RestoreOfABrokenFileSendsWhatHadBeenReadOverWhatTheConsoleHas) {
  fill(path_, R"({"2":{"rec":{"1":{"i32":7},"2":{"i32":)");
  expectSession({{"restore " + path_, restored(path_), false}});
  EXPECT_EQ(controller_.config(), withId7(randomHeadendConfig(1)));
}

TEST_F(ConsoleFilesAlone, RestoreOfAFileTruncatedAtAnyLengthSendsWhatHadBeenRead) {
  FakeController controller;
  const std::string whole = toJson(HeadendConfig());
  std::vector<Step> steps;
  for (size_t length = 0; length <= whole.size(); ++length) {
    const std::string path = folder_.file(std::to_string(length));
    fill(path, whole.substr(0, length));
    steps.push_back({"restore " + path, restored(path), false});
  }
  expectSession(steps);

  const std::vector<ReceivedCall> calls = controller.calls();
  ASSERT_EQ(calls.size(), whole.size() + 2);
  HeadendConfig expected;
  for (size_t length = 0; length < whole.size(); ++length) {
    ASSERT_THROW(decode<apache::thrift::protocol::TJSONProtocol>(whole.substr(0, length), expected),
                 apache::thrift::TException);
    ASSERT_EQ(calls[1 + length].config, expected) << "length " << length;
  }
  EXPECT_EQ(calls.back().config, HeadendConfig());
}

TEST_F(ConsoleFilesAlone, RestoreWithoutAControllerKeepsTheLoadedConfigurationAndTheFlag) {
  fill(path_, R"({"2":{"rec":{"1":{"i32":9}}}})");
  const Outcome outcome =
      runConsole({}, "restore " + path_ + "\nid 9\nid 7\nrestore " + path_ + "\nid 9\n");
  EXPECT_EQ(outcome.out, kFetchError + "Enter 'help' and press return for help\n> " + kCommitError +
                             restored(path_) + "> " + "Headend was already set to: 9\n" + "> " +
                             kIdChanged + "(changes to commit) > " + kCommitError +
                             restored(path_) + "(changes to commit) > " +
                             "Headend was already set to: 9\n" +
                             "(changes to commit) > \nNOTE: Changes have not been committed\n");
  EXPECT_EQ(outcome.status, 0);
}

TEST_F(ConsoleFilesAlone, RestoreModeWithoutAControllerSaysSo) {
  fill(path_, toJson(randomHeadendConfig(3)));
  expectOutcome(runConsole({"-r", path_}), kCommitError + restored(path_));
}

TEST_F(ConsoleFiles, PathIsOneWordAndFurtherWordsAreIgnored) {
  const std::string other = folder_.file("other");
  expectSession({{"save " + path_ + " " + other, saved(path_), false}});
  EXPECT_TRUE(std::filesystem::exists(path_));
  EXPECT_FALSE(std::filesystem::exists(other));
}

}  // namespace
}  // namespace lineup::test
