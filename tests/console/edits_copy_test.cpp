// The copy of the edits on disk while one works, and what the next console says of it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iomanip>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "controller/complete_config_file.h"
#include "controller/config_file.h"
#include "hub_module_types.h"
#include "tests/support/console_texts.h"
#include "tests/support/copies_in_tmp.h"
#include "tests/support/fake_controller.h"
#include "tests/support/file_content.h"
#include "tests/support/program_process.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;
using korvel::thrift::hub_module::HeadendConfig;

constexpr std::time_t kDay = 24L * 60 * 60;

class EditsCopy : public testing::Test {
 protected:
  Start start(const char* terminal) const {
    Start start;
    start.terminal = true;
    start.environment["XDG_STATE_HOME"] = state.path();
    start.environment["TERM"] = terminal;
    start.environment["LINEUP_HISTORY"] = "";  // nothing but copies is in the folder
    return start;
  }

  std::vector<fs::path> files() const { return pathsIn(state.file("lineup-console")); }

  /// The only file there is, if it holds `text`.
  std::string copyWith(const std::string& text) const {
    const std::vector<fs::path> all = files();
    const bool whole = all.size() == 1 && all[0].extension() == ".json";
    return whole && contentOf(all[0]).find(text) != std::string::npos ? all[0].string() : "";
  }

  /// Waits for that.
  std::string awaitCopyWith(const std::string& text) const {
    std::string path;
    await([&] { return !(path = copyWith(text)).empty(); });
    return path;
  }

  static void await(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition()) {
      ASSERT_LT(std::chrono::steady_clock::now(), deadline);
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }

  static void type(ProgramProcess& console, const std::string& line, const char* prompt) {
    console.send(line + "\n");
    console.readUntil("\n");  // the echo
    console.readUntil(prompt);
  }

  /// Runs the first line of a console, whose call the controller refuses.
  void haveRefused(ProgramProcess& console, const std::string& line) {
    console.readUntil("\n> ");
    controller.answerNext({.kind = Answer::kNotReady});
    type(console, line, "> ");
  }

  /// The path of a copy that a console left which was killed.
  std::string leave() {
    ProgramProcess console(start("dumb"));
    console.readUntil("> ");
    type(console, "id 7", kPending);
    std::string path = awaitCopyWith("{\"i32\":7}");
    console.signal(SIGKILL);
    console.finish();
    return path;
  }

  /// When a file was changed and read last.
  static void setTimes(const std::string& path, std::time_t time) {
    const timespec when[2] = {{time, 0}, {time, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), when, 0), 0);
  }

  static std::string announcement(const std::string& path) {
    return "that were not committed are in " + path + ": \"restore " + path +
           "\" sends them at once, \"lineupctl diff " + path + "\" in a shell shows them first\r\n";
  }

  TemporaryFolder state;
  FakeController controller;
};

class EditsCopyOn : public EditsCopy, public testing::WithParamInterface<const char*> {};

TEST_P(EditsCopyOn, IsThereHalfASecondAfterTheEditAndOutlivesAKill) {
  std::string path;
  {
    ProgramProcess console(start(GetParam()));
    console.readUntil("> ");
    type(console, "id 7", kPending);
    path = awaitCopyWith("{\"i32\":7}");
    console.signal(SIGKILL);
    EXPECT_EQ(console.finish().signal, SIGKILL);
  }
  ASSERT_EQ(copyWith("{\"i32\":7}"), path);
  struct stat status {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  ProgramProcess next(start(GetParam()));
  const std::string begin = next.readUntil("Enter 'help'");
  EXPECT_NE(begin.find(announcement(path)), std::string::npos) << begin;
  next.readUntil("\n> ");
  type(next, "restore " + path, "> ");
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 7);
  EXPECT_TRUE(files().empty());
}

TEST_P(EditsCopyOn, FollowsTheEditsUntilTheyAreCommitted) {
  ProgramProcess console(start(GetParam()));
  console.readUntil("> ");
  type(console, "id 7", kPending);
  const std::string path = awaitCopyWith("{\"i32\":7}");
  type(console, "id 8", kPending);
  EXPECT_EQ(awaitCopyWith("{\"i32\":8}"), path);
  type(console, "commit", "> ");
  EXPECT_TRUE(files().empty());
  type(console, "id 9", kPending);
  awaitCopyWith("{\"i32\":9}");
  type(console, "reset", "> ");
  EXPECT_TRUE(files().empty());
}

TEST_P(EditsCopyOn, GoesWithTheEditsThatAreGivenUp) {
  for (const char* end : {"quit\n", "\x04"}) {
    ProgramProcess console(start(GetParam()));
    console.readUntil("> ");
    type(console, "id 7", kPending);
    awaitCopyWith("{\"i32\":7}");
    console.send(end);
    const Outcome outcome = console.finish();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find("NOTE: Changes have not been committed"), std::string::npos);
    EXPECT_TRUE(files().empty());
  }
}

TEST_P(EditsCopyOn, IsWrittenBeforeTheNextCommandBegins) {
  ProgramProcess console(start(GetParam()));
  console.readUntil("> ");
  controller.answerNext(stalled(false));
  console.send("id 7\ncommit\n");
  controller.waitForCalls(2);
  awaitCopyWith("{\"i32\":7}");
  console.signal(SIGKILL);
  controller.release();
  console.finish();
  EXPECT_NE(copyWith("{\"i32\":7}"), "");
}

INSTANTIATE_TEST_SUITE_P(Terminals, EditsCopyOn, testing::Values("dumb", "xterm"));

TEST_F(EditsCopy, IsNotWrittenAgainWithoutAChange) {
  ProgramProcess console(start("xterm"));
  console.readUntil("> ");
  type(console, "id 7", kPending);
  const std::string path = awaitCopyWith("{\"i32\":7}");
  struct stat before {};
  ASSERT_EQ(stat(path.c_str(), &before), 0);
  type(console, "help", kPending);
  type(console, "id 7", kPending);
  console.send("x");
  std::this_thread::sleep_for(std::chrono::milliseconds(1500));  // nothing is to happen in it
  struct stat after {};
  ASSERT_EQ(stat(path.c_str(), &after), 0);
  EXPECT_EQ(before.st_ino, after.st_ino);
  EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
}

TEST_F(EditsCopy, IsNotWrittenOnPipesBeforeTheEnd) {
  Start pipes = start("dumb");
  pipes.terminal = false;
  ProgramProcess console(pipes);
  console.readUntil("> ");
  console.send("id 7\n");
  console.readUntil(kPending);
  std::this_thread::sleep_for(std::chrono::milliseconds(1000));
  EXPECT_TRUE(files().empty());
  console.signal(SIGTERM);
  EXPECT_EQ(console.finish().signal, SIGTERM);
  EXPECT_NE(copyWith("{\"i32\":7}"), "");
}

TEST_F(EditsCopy, OfAConsoleThatRunsIsNotAnnounced) {
  ProgramProcess console(start("xterm"));
  console.readUntil("> ");
  type(console, "id 7", kPending);
  awaitCopyWith("{\"i32\":7}");
  ProgramProcess other(start("xterm"));
  EXPECT_EQ(other.readUntil("Enter 'help'").find("not committed"), std::string::npos);
}

TEST_F(EditsCopy, IsAnnouncedWithoutLineupctlWhereThatIsNotAtHand) {
  const std::string path = leave();
  Start start = this->start("dumb");
  start.environment["LINEUPCTL"] = "";
  ProgramProcess next(start);
  const std::string begin = next.readUntil("Enter 'help'");
  EXPECT_NE(begin.find("\"restore " + path + "\" sends them at once\r\n"), std::string::npos)
      << begin;
}

TEST_F(EditsCopy, ThatIsNotTakenStays) {
  const std::string path = leave();
  for (int count = 0; count < 2; ++count) {
    ProgramProcess console(start("dumb"));
    EXPECT_NE(console.readUntil("Enter 'help'").find(announcement(path)), std::string::npos);
    console.send("quit\n");
    console.finish();
  }
  EXPECT_TRUE(fs::exists(path));
}

TEST_F(EditsCopy, OfWhatTheControllerRunsGoesWithoutAWord) {
  controller.setConfig(readCompleteConfigFile(leave()));
  ProgramProcess console(start("dumb"));
  EXPECT_EQ(console.readUntil("Enter 'help'").find("not committed"), std::string::npos);
  EXPECT_TRUE(files().empty());
}

TEST_F(EditsCopy, OfAnotherConfigurationOfTheSameLengthIsAnnounced) {
  const std::string path = leave();
  HeadendConfig other = readCompleteConfigFile(path);
  other.headendGlobalConfig.headendId = 8;
  controller.setConfig(other);
  ProgramProcess(start("dumb")).readUntil(announcement(path));
  EXPECT_NE(copyWith("{\"i32\":7}"), "");
}

// Without an answer the console holds the defaults.
TEST_F(EditsCopy, OfWhatTheControllerRunsIsAnnouncedIfThatIsNotKnown) {
  const std::string path = leave();
  const std::string content = configFileContent(HeadendConfig());
  std::ofstream(path) << content;
  for (const Answer& answer : {Answer{.kind = Answer::kNotReady}, Answer{.sentBytes = 20}}) {
    controller.answerNext(answer);
    ProgramProcess console(start("dumb"));
    const std::string begin = console.readUntil("Enter 'help'");
    EXPECT_NE(begin.find(announcement(path)), std::string::npos) << begin;
  }
  EXPECT_EQ(contentOf(path), content);
}

TEST_F(EditsCopy, ThatCouldNotBeRestoredStays) {
  const std::string path = leave();
  ProgramProcess console(start("dumb"));
  console.readUntil("> ");
  controller.answerNext({.kind = Answer::kNotReady});
  console.send("restore " + path + "\nquit\n");
  EXPECT_NE(console.finish().out.find("ERROR: Could not set"), std::string::npos);
  EXPECT_TRUE(fs::exists(path));
}

TEST_F(EditsCopy, ThatCouldNotBeRestoredGoesWithALaterCommit) {
  const std::string path = leave();
  ProgramProcess console(start("dumb"));
  haveRefused(console, "restore " + path);
  type(console, "commit", "> ");
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 7);
  EXPECT_TRUE(files().empty());
}

TEST_F(EditsCopy, ThatCouldNotBeRestoredStaysIfSomethingElseIsCommitted) {
  const std::string path = leave();
  ProgramProcess console(start("dumb"));
  haveRefused(console, "restore " + path);
  type(console, "reset", "> ");
  type(console, "id 8", kPending);
  type(console, "commit", "> ");
  EXPECT_TRUE(fs::exists(path));
}

TEST_F(EditsCopy, ThatWasAnnouncedAMonthAgoGoes) {
  const std::string path = leave();
  ProgramProcess(start("dumb")).readUntil("Enter 'help'");
  setTimes(path, std::time(nullptr) - 29 * kDay);
  ProgramProcess(start("dumb")).readUntil(announcement(path));
  setTimes(path, std::time(nullptr) - 31 * kDay);
  ProgramProcess console(start("dumb"));
  EXPECT_EQ(console.readUntil("Enter 'help'").find("not committed"), std::string::npos);
  EXPECT_TRUE(files().empty());
}

TEST_F(EditsCopy, IsAnnouncedHoweverOldItIs) {
  const std::string path = leave();
  setTimes(path, 100);  // a clock that was not set yet
  for (int count = 0; count < 2; ++count) {
    ProgramProcess console(start("dumb"));
    EXPECT_NE(console.readUntil("Enter 'help'").find(announcement(path)), std::string::npos);
  }
  EXPECT_TRUE(fs::exists(path));
}

TEST_F(EditsCopy, ThatWasAnnouncedBeforeTheClockWasSetIsAnnouncedAnew) {
  const std::string path = leave();
  ProgramProcess(start("dumb")).readUntil("Enter 'help'");
  setTimes(path, 100);
  ProgramProcess console(start("dumb"));
  EXPECT_NE(console.readUntil("Enter 'help'").find(announcement(path)), std::string::npos);
  struct stat status {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_GT(status.st_atime, std::time(nullptr) - kDay) << "the month begins now";
}

TEST_F(EditsCopy, WhoseWriterWasKilledAMonthAgoGoes) {
  const std::string path = leave();
  const std::string unfinished = path + ".new";
  fs::copy_file(path, unfinished);
  for (const bool old : {false, true}) {
    setTimes(unfinished, std::time(nullptr) - (old ? 31 : 29) * kDay);
    ProgramProcess console(start("dumb"));
    EXPECT_EQ(console.readUntil("Enter 'help'").find(unfinished), std::string::npos);
    EXPECT_NE(fs::exists(unfinished), old);
  }
  EXPECT_TRUE(fs::exists(path));
}

TEST_F(EditsCopy, LeavesOneOfTheSameNameAlone) {
  ProgramProcess console(start("dumb"));
  console.readUntil("> ");
  constexpr int kSeconds = 600;
  for (std::time_t time = std::time(nullptr), end = time + kSeconds; time < end; ++time) {
    std::tm local{};
    localtime_r(&time, &local);
    std::ostringstream name;
    name << "lineup-console/lineup-console-" << std::put_time(&local, "%Y%m%d-%H%M%S") << "-"
         << console.pid() << ".json";
    fs::create_directories(state.file("lineup-console"));
    std::ofstream(state.file(name.str())) << "another's";
  }
  type(console, "id 7", kPending);
  const auto holdsTheEdit = [](const fs::path& file) {
    return file.extension() == ".json" && contentOf(file).find("{\"i32\":7}") != std::string::npos;
  };
  await([&] {
    const std::vector<fs::path> all = files();
    return std::any_of(all.begin(), all.end(), holdsTheEdit);
  });
  console.send("quit\n");
  console.finish();
  const std::vector<fs::path> left = files();
  EXPECT_EQ(left.size(), kSeconds);
  EXPECT_TRUE(std::all_of(left.begin(), left.end(),
                          [](const fs::path& file) { return contentOf(file) == "another's"; }));
}

TEST_F(EditsCopy, ThatSomebodyRemovesIsWrittenAgain) {
  ProgramProcess console(start("xterm"));
  console.readUntil("> ");
  type(console, "id 7", kPending);
  fs::remove(awaitCopyWith("{\"i32\":7}"));
  type(console, "help", kPending);
  const std::string path = awaitCopyWith("{\"i32\":7}");
  EXPECT_NE(path, "");
  fs::remove(path);
  console.signal(SIGTERM);
  EXPECT_NE(console.finish().out.find(kUncommittedIn), std::string::npos);
  EXPECT_NE(copyWith("{\"i32\":7}"), "");
}

TEST_F(EditsCopy, NothingElseIsAnnouncedOrRemoved) {
  fs::create_directories(state.file("lineup-console"));
  const std::string old = state.file("lineup-console/lineup-console-mine.json");
  std::ofstream(old) << "{}";
  fs::last_write_time(old, fs::last_write_time(old) - std::chrono::hours(24 * 365));
  fs::create_symlink(old, state.file("lineup-console/lineup-console-20260101-000000-1.json"));
  ProgramProcess console(start("dumb"));
  EXPECT_EQ(console.readUntil("Enter 'help'").find("not committed"), std::string::npos);
  EXPECT_EQ(files().size(), 2U);
}

TEST_F(EditsCopy, StaysInItsFolderWhateverCommitsBreakOff) {
  ProgramProcess console(start("dumb"));
  console.readUntil("> ");
  std::string lines;
  for (int count = 0; count < 20; ++count) {
    lines += "id 3\ncommit\nid 4\ncommit\n";
  }
  console.send(lines + "id 9\n");
  EXPECT_NE(awaitCopyWith("{\"i32\":9}"), "");
  EXPECT_TRUE(copiesInTmp(console.pid()).empty());
}

TEST_F(EditsCopy, IsWrittenOnceTheDiskHasRoomAgain) {
  Start full = start("xterm");
  full.environment["TMPDIR"] = std::nullopt;
  ProgramProcess console(full);
  console.readUntil("> ");
  type(console, "id 7", kPending);
  awaitCopyWith("{\"i32\":7}");
  const rlimit none{10, RLIM_INFINITY};
  ASSERT_EQ(prlimit(console.pid(), RLIMIT_FSIZE, &none, nullptr), 0);
  type(console, "id 8", kPending);
  type(console, "help", kPending);
  awaitCopyWith("{\"i32\":7}");
  const rlimit room{RLIM_INFINITY, RLIM_INFINITY};
  ASSERT_EQ(prlimit(console.pid(), RLIMIT_FSIZE, &room, nullptr), 0);
  await([&] { return !copyWith("{\"i32\":8}").empty() || !copiesInTmp(console.pid()).empty(); });
  console.send("quit\n");
  console.finish();
  EXPECT_TRUE(copiesInTmp(console.pid()).empty());
}

TEST_F(EditsCopy, OnAFullDiskTheOneBeforeStays) {
  Start shell = start("dumb");
  shell.program = "/bin/sh";
  shell.arguments = {"-c", std::string("exec ") + kConsoleProgram};
  shell.environment["TMPDIR"] = std::nullopt;
  ProgramProcess console(shell);
  console.readUntil("> ");
  type(console, "id 7", kPending);
  const std::string path = awaitCopyWith("{\"i32\":7}");
  const rlimit full{10, RLIM_INFINITY};
  ASSERT_EQ(prlimit(console.pid(), RLIMIT_FSIZE, &full, nullptr), 0);
  type(console, "id 8", kPending);
  console.signal(SIGTERM);
  const Outcome outcome = console.finish();
  EXPECT_NE(outcome.out.find("The uncommitted changes could not be written to a file; earlier ones "
                             "are in " +
                             path + ": \"restore " + path),
            std::string::npos)
      << outcome.out;
  EXPECT_NE(copyWith("{\"i32\":7}"), "");
}

}  // namespace
}  // namespace lineup::test
