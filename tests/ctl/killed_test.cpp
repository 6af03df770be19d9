// lineupctl killed where it enters or leaves a system call, from its first connect() on: a file is
// the old one or the new one, and what was sent is whole or nothing.

#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/ctl/ctl_process.h"
#include "tests/support/encoding.h"
#include "tests/support/fake_controller.h"
#include "tests/support/long_series.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;
using korvel::thrift::hub_module::HeadendConfig;

/// Starts lineupctl, traced by this process.
pid_t startTraced(const std::vector<std::string>& words) {
  std::vector<std::string> all = {kCtlProgram};
  all.insert(all.end(), words.begin(), words.end());
  std::vector<char*> arguments;
  for (std::string& word : all) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  // The sanitizer's detection of leaks cannot be traced.
  setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
  const pid_t child = fork();
  if (child == 0) {
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    execv(kCtlProgram, arguments.data());
    _exit(127);
  }
  return child;
}

/// Runs lineupctl and kills it where it enters or leaves a system call, for the `stop`-th time
/// after its first connection was begun. Returns false if it ended before.
bool killAt(const std::vector<std::string>& words, int stop) {
  const pid_t child = startTraced(words);
  int status = 0;
  waitpid(child, &status, 0);
  if (!WIFSTOPPED(status)) {
    throw std::runtime_error("lineupctl cannot be traced");
  }
  ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  bool connecting = false;
  for (int signal = 0; stop > 0;) {
    ptrace(PTRACE_SYSCALL, child, nullptr, signal);
    waitpid(child, &status, 0);
    if (!WIFSTOPPED(status)) {
      return false;
    }
    const bool isCall = WSTOPSIG(status) == (SIGTRAP | 0x80);
    signal = isCall ? 0 : WSTOPSIG(status);
    __ptrace_syscall_info call{};
    ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof(call), &call);
    connecting =
        connecting || (call.op == PTRACE_SYSCALL_INFO_ENTRY && call.entry.nr == SYS_connect);
    stop -= isCall && connecting ? 1 : 0;
  }
  kill(child, SIGKILL);
  waitpid(child, &status, 0);
  return true;
}

class CtlKilled : public testing::Test {
 protected:
  CtlKilled() { writeFile(file_, toJson(wanted_)); }

  /// Kills the command at each of these places, with sanitizers at every seventh; `prepare` comes
  /// before each run, `check` after.
  template <class Prepare, class Check>
  void killEverywhere(const std::vector<std::string>& words, Prepare prepare, Check check) {
    int stops = 0;
    for (bool killed = true; killed; stops += kCaseStep) {
      FakeController controller;
      controller.setConfig(running_);
      prepare();
      killed = killAt(words, stops + 1);
      check(controller, killed);
      ASSERT_FALSE(HasFailure()) << "at stop " << stops;
    }
    EXPECT_GT(stops, 20);
  }

  /// Puts the copies of three earlier nights there, and nothing else.
  void makeOldCopies() {
    fs::remove_all(copies_);
    fs::create_directory(copies_);
    for (const std::string& name : kOldCopies) {
      writeFile(copies_ + "/" + name, name);
    }
  }

  /// Of the old copies and the new one, if it was made, the newest two are there as they were, and
  /// of the others the oldest went first; exactly two where the program was not killed.
  void expectTheNewestTwoCopies(bool killed) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(copies_)) {
      if (entry.path().filename().string().front() != '.') {
        names.insert(entry.path().filename());
      }
    }
    const bool hasNew = !names.empty() && !kOldCopies.contains(*names.rbegin());
    EXPECT_GE(names.size(), 2U);
    EXPECT_TRUE(killed || (hasNew && names.size() == 2));
    std::set<std::string> all = kOldCopies;
    all.insert(names.begin(), names.end());
    EXPECT_LE(all.size(), kOldCopies.size() + 1);
    EXPECT_TRUE(std::equal(names.rbegin(), names.rend(), all.rbegin()));
    for (const std::string& name : names) {
      EXPECT_EQ(contentOf(copies_ + "/" + name),
                kOldCopies.contains(name) ? name : toJson(running_));
    }
  }

  const std::set<std::string> kOldCopies = {"lineup-20260101T000000.000Z.json",
                                            "lineup-20260102T000000.000Z.json",
                                            "lineup-20260103T000000.000Z.json"};
  TemporaryFolder folder_;
  const std::string copies_ = folder_.file("copies");
  const std::string file_ = folder_.file("wanted.json");
  const HeadendConfig running_ = withId(3);
  const HeadendConfig wanted_ = withId(7);
};

TEST_F(CtlKilled, WhileItSavesLeavesTheOldFileOrTheNewOne) {
  const std::string saved = folder_.file("saved.json");
  killEverywhere(
      {"save", saved}, [&] { writeFile(saved, "old"); },
      [&](FakeController&, bool killed) {
        const std::string content = contentOf(saved);
        EXPECT_TRUE(content == toJson(running_) || (killed && content == "old")) << content;
      });
}

TEST_F(CtlKilled, WhileItKeepsACopyAndRemovesOldOnesLeavesTheNewest) {
  killEverywhere(
      {"backup", "--keep", "2", copies_}, [&] { makeOldCopies(); },
      [&](FakeController&, bool killed) { expectTheNewestTwoCopies(killed); });
}

TEST_F(CtlKilled, WhileItAppliesHasSentAllOrNothingAndKeptWhatRan) {
  killEverywhere(
      {"apply", "--backup", copies_, "--keep", "2", file_}, [&] { makeOldCopies(); },
      [&](FakeController& controller, bool killed) {
        expectTheNewestTwoCopies(killed);
        const HeadendConfig now = controller.config();
        EXPECT_TRUE(now == wanted_ || (killed && now == running_));
        if (now == wanted_) {
          expectTheNewestTwoCopies(false);  // what ran is kept before anything is sent
        }
      });
}

}  // namespace
}  // namespace lineup::test
