// The copy of the edits on disk while one works, and what the next console says of it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <iomanip>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "controller/complete_config_file.h"
#include "controller/config_file.h"
#include "hub_module_types.h"
#include "tests/console/edits_on_disk.h"
#include "tests/console/keys.h"
#include "tests/support/copies_in_tmp.h"
#include "tests/support/expect_end.h"
#include "tests/support/expect_for_owner_alone.h"
#include "tests/support/wait_until.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;
using korvel::thrift::hub_module::HeadendConfig;

constexpr std::time_t kDay = 24L * 60 * 60;

/// How the copy of the edit `id` has it.
std::string field(int id) {
  return "{\"i32\":" + std::to_string(id) + "}";
}

class EditsCopy : public EditsOnDisk {
 protected:
  /// The path of the only file there is, if it holds the edit `id`.
  std::string copyOf(int id) const {
    const std::vector<fs::path> all = copies();
    const bool whole = all.size() == 1 && all[0].extension() == ".json";
    return whole && contentOf(all[0]).find(field(id)) != std::string::npos ? all[0].string() : "";
  }

  /// Waits for that.
  std::string awaitCopyOf(int id) const {
    std::string path;
    waitUntil([&] { return !(path = copyOf(id)).empty(); });
    return path;
  }

  /// Waits for a copy beside which others' files lie.
  void awaitCopyAmongOthers(int id) const {
    waitUntil([&] {
      const std::vector<fs::path> all = copies();
      return std::any_of(all.begin(), all.end(), [&](const fs::path& file) {
        return !fs::is_symlink(file) && file.extension() == ".json" &&
               contentOf(file).find(field(id)) != std::string::npos;
      });
    });
  }

  static void type(ProgramProcess& console, const std::string& line,
                   const std::string& prompt = kPending) {
    console.send(line + "\n");
    console.readUntil("\n");  // the echo
    console.readUntil(prompt);
  }

  /// Begins a console, and has the controller refuse the call of its first line.
  std::unique_ptr<ProgramProcess> haveRefused(const std::string& line) {
    auto console = std::make_unique<ProgramProcess>(start(true));
    console->readUntil("\n> ");
    controller.answerNext({.kind = Answer::kNotReady});
    type(*console, line, "> ");
    return console;
  }

  /// The path of a copy that a console left which was killed.
  std::string leave(const std::string& terminal = "dumb") {
    EditedConsole console(start(true, terminal));
    std::string path = awaitCopyOf(7);
    endBy(console, SIGKILL);
    return path;
  }

  /// What the next console says before it can be used.
  std::string nextSays(const Start& start) {
    ProgramProcess console(start);
    std::string text = console.readUntil("Enter 'help'");
    console.send("quit\n");
    console.finish();
    return text;
  }
  std::string nextSays() { return nextSays(start(true)); }

  /// Expects that the next console announces the copy, or nothing.
  void expectAnnounced(const std::string& path) {
    EXPECT_NE(nextSays().find(announcement(path)), std::string::npos);
  }
  void expectNothingAnnounced() { EXPECT_EQ(nextSays().find("not committed"), std::string::npos); }

  /// The names, without a suffix, that copies of the console would have in the next ten minutes.
  std::vector<std::string> namesOfTenMinutes(const ProgramProcess& console) const {
    std::vector<std::string> names;
    const std::time_t now = std::time(nullptr);
    for (std::time_t time = now; time < now + 600; ++time) {
      std::tm local{};
      localtime_r(&time, &local);
      std::ostringstream name;
      name << "lineup-console/lineup-console-" << std::put_time(&local, "%Y%m%d-%H%M%S") << "-"
           << console.pid();
      names.push_back(folder.file(name.str()));
    }
    return names;
  }

  /// Sets when a file was last read and changed.
  static void setTimes(const std::string& path, std::time_t time) {
    const timespec when[2] = {{time, 0}, {time, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), when, 0), 0);
  }

  static std::string announcement(const std::string& path) {
    return "that were not committed are in " + path + ": \"restore " + path +
           "\" sends them at once, \"lineupctl diff " + path + "\" in a shell shows them first\r\n";
  }
};

class EditsCopyOn : public EditsCopy, public testing::WithParamInterface<const char*> {
 protected:
  Start start() const { return EditsOnDisk::start(true, GetParam()); }
};

INSTANTIATE_TEST_SUITE_P(Terminals, EditsCopyOn, testing::Values("dumb", "xterm"));

TEST_P(EditsCopyOn, IsThereAfterTheEditAndOutlivesAKill) {
  const std::string path = leave(GetParam());
  ASSERT_EQ(copyOf(7), path);
  expectForOwnerAlone(path);
  ProgramProcess next(start());
  const std::string begin = next.readUntil("Enter 'help'");
  EXPECT_NE(begin.find(announcement(path)), std::string::npos) << begin;
  next.readUntil("\n> ");
  type(next, "restore " + path, "> ");
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 7);
  EXPECT_TRUE(copies().empty());
}

TEST_P(EditsCopyOn, FollowsTheEditsUntilTheyAreCommitted) {
  EditedConsole console(start());
  const std::string path = awaitCopyOf(7);
  type(console, "id 8");
  EXPECT_EQ(awaitCopyOf(8), path);
  type(console, "commit", "> ");
  EXPECT_TRUE(copies().empty());
  type(console, "id 9");
  awaitCopyOf(9);
  type(console, "reset", "> ");
  EXPECT_TRUE(copies().empty());
}

TEST_P(EditsCopyOn, IsRemovedWithTheEditsThatAreGivenUp) {
  for (const std::string& end : {std::string("quit\n"), kCtrlD}) {
    EditedConsole console(start());
    awaitCopyOf(7);
    console.send(end);
    const Outcome outcome = console.finish();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find("\r\nNOTE: Changes have not been committed\r\n"), std::string::npos);
    EXPECT_TRUE(copies().empty());
  }
}

TEST_P(EditsCopyOn, IsWrittenBeforeTheNextCommandBegins) {
  ProgramProcess console(start());
  console.readUntil("> ");
  controller.answerNext(stalled(false));
  console.send("id 7\ncommit\n");
  controller.waitForCalls(2);
  awaitCopyOf(7);
  console.signal(SIGKILL);
  controller.release();
  console.finish();
  EXPECT_NE(copyOf(7), "");
}

// ---- while one works

TEST_F(EditsCopy, IsNotWrittenAgainWithoutAChange) {
  EditedConsole console(start(true, "xterm"));
  const std::string path = awaitCopyOf(7);
  struct stat before {};
  ASSERT_EQ(stat(path.c_str(), &before), 0);
  type(console, "help");
  type(console, "id 7");
  console.send("x");
  std::this_thread::sleep_for(std::chrono::milliseconds(1500));  // nothing is to happen in it
  struct stat after {};
  ASSERT_EQ(stat(path.c_str(), &after), 0);
  EXPECT_EQ(before.st_ino, after.st_ino);
  EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
}

TEST_F(EditsCopy, IsNotWrittenOnPipesBeforeTheEnd) {
  EditedConsole console(start(false));
  std::this_thread::sleep_for(std::chrono::milliseconds(1000));
  EXPECT_TRUE(copies().empty());
  endBy(console, SIGTERM);
  EXPECT_NE(copyOf(7), "");
}

TEST_F(EditsCopy, OfAConsoleThatRunsIsNotAnnounced) {
  const EditedConsole console(start(true, "xterm"));
  awaitCopyOf(7);
  expectNothingAnnounced();
}

TEST_F(EditsCopy, IsAnnouncedWithoutLineupctlWhereThatIsNotAtHand) {
  const std::string path = leave();
  Start start = this->start(true);
  start.environment["LINEUPCTL"] = "";
  const std::string begin = nextSays(start);
  EXPECT_NE(begin.find("\"restore " + path + "\" sends them at once\r\n"), std::string::npos)
      << begin;
}

TEST_F(EditsCopy, ThatIsNotRestoredStays) {
  const std::string path = leave();
  expectAnnounced(path);
  expectAnnounced(path);
  EXPECT_TRUE(fs::exists(path));
}

TEST_F(EditsCopy, OfWhatTheControllerRunsIsRemovedSilently) {
  controller.setConfig(readCompleteConfigFile(leave()));
  expectNothingAnnounced();
  EXPECT_TRUE(copies().empty());
}

TEST_F(EditsCopy, OfAnotherConfigurationOfTheSameLengthIsAnnounced) {
  const std::string path = leave();
  HeadendConfig other = readCompleteConfigFile(path);
  other.headendGlobalConfig.headendId = 8;
  controller.setConfig(other);
  expectAnnounced(path);
  EXPECT_NE(copyOf(7), "");
}

// Without an answer the console holds the defaults.
TEST_F(EditsCopy, OfWhatTheControllerRunsIsAnnouncedIfThatIsNotKnown) {
  const std::string path = leave();
  const std::string content = configFileContent(HeadendConfig());
  writeFile(path, content);
  for (const Answer& answer : {Answer{.kind = Answer::kNotReady}, Answer{.sentBytes = 20}}) {
    controller.answerNext(answer);
    expectAnnounced(path);
  }
  EXPECT_EQ(contentOf(path), content);
}

TEST_F(EditsCopy, ThatCouldNotBeRestoredStays) {
  const std::string path = leave();
  ProgramProcess console(start(true));
  console.readUntil("> ");
  controller.answerNext({.kind = Answer::kNotReady});
  console.send("restore " + path + "\nquit\n");
  EXPECT_NE(console.finish().out.find("ERROR: Could not set"), std::string::npos);
  EXPECT_TRUE(fs::exists(path));
}

TEST_F(EditsCopy, ThatCouldNotBeRestoredGoesWithALaterCommit) {
  const std::string path = leave();
  type(*haveRefused("restore " + path), "commit", "> ");
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 7);
  EXPECT_TRUE(copies().empty());
}

TEST_F(EditsCopy, ThatCouldNotBeRestoredStaysIfSomethingElseIsCommitted) {
  const std::string path = leave();
  const auto console = haveRefused("restore " + path);
  type(*console, "reset", "> ");
  type(*console, "id 8");
  type(*console, "commit", "> ");
  EXPECT_TRUE(fs::exists(path));
}

TEST_F(EditsCopy, ThatWasAnnouncedAMonthAgoIsRemoved) {
  const std::string path = leave();
  expectAnnounced(path);
  setTimes(path, std::time(nullptr) - 29 * kDay);
  expectAnnounced(path);
  setTimes(path, std::time(nullptr) - 31 * kDay);
  expectNothingAnnounced();
  EXPECT_TRUE(copies().empty());
}

TEST_F(EditsCopy, IsAnnouncedHoweverOldItIs) {
  const std::string path = leave();
  setTimes(path, 100);  // a clock that was not set yet
  expectAnnounced(path);
  expectAnnounced(path);
  EXPECT_TRUE(fs::exists(path));
}

TEST_F(EditsCopy, ThatWasAnnouncedBeforeTheClockWasSetIsAnnouncedAnew) {
  const std::string path = leave();
  expectAnnounced(path);
  setTimes(path, 100);
  expectAnnounced(path);
  struct stat status {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_GT(status.st_atime, std::time(nullptr) - kDay) << "the month begins now";
}

TEST_F(EditsCopy, WhoseWriterWasKilledAMonthAgoIsRemoved) {
  const std::string path = leave();
  const std::string unfinished = path + ".new";
  fs::copy_file(path, unfinished);
  for (const bool old : {false, true}) {
    setTimes(unfinished, std::time(nullptr) - (old ? 31 : 29) * kDay);
    EXPECT_EQ(nextSays().find(unfinished), std::string::npos);
    EXPECT_NE(fs::exists(unfinished), old);
  }
  EXPECT_TRUE(fs::exists(path));
}

TEST_F(EditsCopy, LeavesOneOfTheSameNameAlone) {
  ProgramProcess console(start(true));
  console.readUntil("> ");
  fs::create_directories(folder.file("lineup-console"));
  const std::vector<std::string> names = namesOfTenMinutes(console);
  for (const std::string& name : names) {
    writeFile(name + ".json", "another's");
  }
  type(console, "id 7");
  awaitCopyAmongOthers(7);
  console.send("quit\n");
  console.finish();
  const std::vector<fs::path> left = copies();
  EXPECT_EQ(left.size(), names.size());
  EXPECT_TRUE(std::all_of(left.begin(), left.end(),
                          [](const fs::path& file) { return contentOf(file) == "another's"; }));
}

TEST_F(EditsCopy, IsNotWrittenThroughALinkThatHasItsTemporaryName) {
  const std::string theirs = folder.file("theirs");
  writeFile(theirs, "another's");
  ProgramProcess console(start(true));
  console.readUntil("> ");
  fs::create_directories(folder.file("lineup-console"));
  for (const std::string& name : namesOfTenMinutes(console)) {
    fs::create_symlink(theirs, name + ".json.new");
    fs::create_symlink(theirs, name + ".json.newer");
  }
  type(console, "id 7");
  type(console, "id 8");
  awaitCopyAmongOthers(8);
  EXPECT_EQ(contentOf(theirs), "another's");
}

TEST_F(EditsCopy, ThatSomebodyRemovesIsWrittenAgain) {
  EditedConsole console(start(true, "xterm"));
  fs::remove(awaitCopyOf(7));
  type(console, "help");
  const std::string path = awaitCopyOf(7);
  EXPECT_NE(path, "");
  fs::remove(path);
  console.signal(SIGTERM);
  EXPECT_NE(console.finish().out.find(kUncommittedIn), std::string::npos);
  EXPECT_NE(copyOf(7), "");
}

TEST_F(EditsCopy, NothingElseIsAnnouncedOrRemoved) {
  fs::create_directories(folder.file("lineup-console"));
  const std::string old = folder.file("lineup-console/lineup-console-mine.json");
  writeFile(old, "{}");
  fs::last_write_time(old, fs::last_write_time(old) - std::chrono::hours(24 * 365));
  fs::create_symlink(old, folder.file("lineup-console/lineup-console-20260101-000000-1.json"));
  writeFile(folder.file("lineup-console/lineup-console-2026011-00000-1.json"), "{}");
  expectNothingAnnounced();
  EXPECT_EQ(copies().size(), 3U);
}

TEST_F(EditsCopy, StaysInItsFolderWhateverCommitsBreakOff) {
  Start withoutTmpdir = start(true);
  withoutTmpdir.environment["TMPDIR"] = std::nullopt;
  ProgramProcess console(withoutTmpdir);
  console.readUntil("> ");
  std::string lines;
  for (int count = 0; count < 20; ++count) {
    lines += "id 3\ncommit\nid 4\ncommit\n";
  }
  console.send(lines + "id 9\n");
  EXPECT_NE(awaitCopyOf(9), "");
  EXPECT_TRUE(copiesInTmp(console.pid()).empty());
}

/// Leaves the console's files no more room than that, as on a full disk.
void limitFiles(const ProgramProcess& console, rlim_t bytes) {
  const rlimit limit{bytes, RLIM_INFINITY};
  EXPECT_EQ(prlimit(console.pid(), RLIMIT_FSIZE, &limit, nullptr), 0);
}

TEST_F(EditsCopy, IsWrittenOnceTheDiskHasRoomAgain) {
  Start full = start(true, "xterm");
  full.environment["TMPDIR"] = std::nullopt;
  EditedConsole console(full);
  awaitCopyOf(7);
  limitFiles(console, 10);
  type(console, "id 8");
  type(console, "help");
  awaitCopyOf(7);
  limitFiles(console, RLIM_INFINITY);
  waitUntil([&] { return !copyOf(8).empty() || !copiesInTmp(console.pid()).empty(); });
  console.send("quit\n");
  console.finish();
  EXPECT_TRUE(copiesInTmp(console.pid()).empty());
}

#ifndef SANITIZED  // which needs memory of its own

// What the console has allocated and freed is enough.
TEST_F(EditsCopy, IsWrittenWhereTheSystemGivesNoMoreMemory) {
  for (const bool terminal : {false, true}) {
    EditedConsole console(start(terminal));
    for (const auto resource : {RLIMIT_AS, RLIMIT_DATA}) {
      const rlimit none{4096, RLIM_INFINITY};
      ASSERT_EQ(prlimit(console.pid(), resource, &none, nullptr), 0);
    }
    type(console, "id 8");
    if (terminal) {
      EXPECT_NE(awaitCopyOf(8), "");
    }
    endBy(console, SIGTERM);
    const std::string path = copyOf(8);
    EXPECT_NE(path, "");
    fs::remove(path);
  }
}

#endif

TEST_F(EditsCopy, OnAFullDiskTheOneBeforeStays) {
  Start full = start(true);
  full.environment["TMPDIR"] = std::nullopt;
  EditedConsole console(full);
  const std::string path = awaitCopyOf(7);
  limitFiles(console, 10);
  type(console, "id 8");
  console.signal(SIGTERM);
  const Outcome outcome = console.finish();
  EXPECT_NE(outcome.out.find("The uncommitted changes could not be written to a file; earlier ones "
                             "are in " +
                             path + ": \"restore " + path),
            std::string::npos)
      << outcome.out;
  EXPECT_NE(copyOf(7), "");
}

}  // namespace
}  // namespace lineup::test
