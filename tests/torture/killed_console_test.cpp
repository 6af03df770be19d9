// A console is killed, with the child that writes its copy, at each call from the first edit to the
// commit: what the copy holds then, and what the next console makes of it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/descriptor.h"
#include "tests/support/console_texts.h"
#include "tests/support/fake_controller.h"
#include "tests/support/file_content.h"
#include "tests/support/program_process.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/wait_until.h"
#include "tests/torture/faulty_console.h"

namespace lineup::test {
namespace {

constexpr int32_t kFirst = 7;
constexpr int32_t kLast = 9;

/// A session that edits the headend's id again and again, each time until the copy has it.
class KilledSession {
 public:
  explicit KilledSession(const Fault& fault, const char* terminal = "dumb")
      : terminal_(terminal), console_(start(fault)) {}

  void begin() { readUntil("> "); }
  void type(const std::string& text) { console_.send(text); }
  void readUntil(const std::string& text) { console_.readUntil(text); }
  void readWhile(const std::function<bool()>& condition) { console_.readWhile(condition); }

  /// Goes on until it is over or killed.
  void play() {
    try {
      begin();
      callsBefore = calls();
      for (int32_t id = kFirst; id <= kLast && !isKilled(); ++id) {
        typed = id;
        console_.send("id " + std::to_string(id) + "\n");
        console_.readUntil(kPending);
        console_.readWhile([&] {
          copied = std::max(copied, copiedId());
          return !isKilled() && copied != id;
        });
      }
      console_.send("commit\n");
      console_.readUntil("\r\n> ");
      callsAfter = calls();
      console_.send("quit\n");
    } catch (const std::runtime_error&) {
      EXPECT_TRUE(isKilled());
    }
    console_.finish();
  }

  /// Kills the console, but not the child that writes its copy.
  void kill() {
    console_.signal(SIGKILL);
    console_.waitForEnd();
  }

  /// Waits until the writer, which may just have been forked, has closed the copy in place.
  void awaitUnlockedCopy() const {
    const Descriptor file(open(copy().c_str(), O_RDONLY | O_CLOEXEC));
    flock(file.number(), LOCK_SH);
  }

  /// The next console announces the copy and restores it, if `path` says that there is one with
  /// edits that the controller has not taken.
  void expectNextToRestore(const std::string& path) const {
    const int32_t id = path.empty() ? 0 : idIn(path);
    ProgramProcess console(start({}));
    const std::string beginning = console.readUntil("Enter 'help'");
    // Only now: what was killed may have sent a commit that the controller had yet to take.
    const bool isWaiting = !path.empty() && id != committedId();
    expectAnnounced(beginning, isWaiting ? path : "");
    if (isWaiting) {
      console.send("restore " + path + "\n");
      console.readUntil("Restored config from: " + path);
      EXPECT_EQ(committedId(), id);
    }
    console.send("quit\n");
    EXPECT_EQ(console.finish().status, 0);
    EXPECT_EQ(copy(), "");
  }

  void expectNextToAnnounce(const std::string& path) const {
    ProgramProcess console(start({}));
    expectAnnounced(console.readUntil("Enter 'help'"), path);
    console.send("quit\n");
    console.finish();
  }

  static void expectAnnounced(const std::string& beginning, const std::string& path) {
    EXPECT_EQ(beginning.find("restore " + path) != std::string::npos, !path.empty()) << beginning;
  }

  long calls() const { return FaultCounts(countsPath()).calls; }
  bool isKilled() const { return FaultCounts(countsPath()).faults > 0; }
  int32_t committedId() const { return controller_.config().headendGlobalConfig.headendId; }

  /// The path of the copy, or nothing.
  std::string copy() const {
    const auto copies = copiesIn(folder_);
    return copies.empty() ? "" : copies[0].string();
  }
  bool isBeingWritten() const {
    return std::ranges::any_of(pathsIn(folder_.file("lineup-console")), [](const auto& path) {
      return path.extension() == ".new" || path.extension() == ".newer";
    });
  }

  int32_t copiedId() const {
    const std::string path = copy();
    return path.empty() ? 0 : idIn(path);
  }

  int32_t typed = 0;
  int32_t copied = 0;
  long callsBefore = 0;
  long callsAfter = 0;

 private:
  std::string countsPath() const { return folder_.file("counts"); }

  Start start(const Fault& fault) const {
    Start start = startIn(folder_, true);
    start.environment["TERM"] = terminal_;
    if (!fault.kind.empty()) {
      injectFault(start, fault, countsPath());
    }
    return start;
  }

  const char* const terminal_;
  const TemporaryFolder folder_;
  const FakeController controller_;
  ProgramProcess console_;
};

const Fault kSlowDisk{"copy", 1, "late"};

class KilledConsoleOn : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Terminals, KilledConsoleOn, testing::Values("dumb", "xterm"));

TEST_P(KilledConsoleOn, LeavesACopyThatIsWholeOrTheOneBefore) {
  long before = 0;
  long span = 0;
  {
    KilledSession undisturbed({"system"}, GetParam());
    undisturbed.play();
    ASSERT_EQ(undisturbed.committedId(), kLast);
    before = undisturbed.callsBefore;
    span = undisturbed.callsAfter - before;
  }
  ASSERT_GT(span, 0);
  for (const long place : placesAmong(span, 15)) {
    SCOPED_TRACE("call " + std::to_string(place) + " of " + std::to_string(span));
    KilledSession session({"system", before + place, "kill"}, GetParam());
    session.play();
    const std::string copy = session.copy();
    if (!copy.empty()) {
      const int32_t id = idIn(copy);
      EXPECT_TRUE(id == session.typed || id == session.copied) << id;
    } else {
      EXPECT_TRUE(session.copied == 0 || session.committedId() == kLast);
    }
    session.expectNextToRestore(copy);
  }
}

TEST(KilledConsole, HasNeverWaitedForAWriter) {
  KilledSession session({"wait"});
  session.begin();
  std::string lines;
  for (int n = 0; n < 20; ++n) {
    lines += "id 7\ncommit\nid 8\nreset\n";
  }
  session.type(lines + "id 9\n");
  session.readUntil("changed to: 9");
  session.readWhile([&] { return session.copiedId() != 9; });
  session.kill();
  EXPECT_EQ(session.calls(), 0);
}

TEST(KilledConsole, WhoseTerminalTakesNoOutputHasACopyOfTheEditsBeforeIt) {
  KilledSession session(kSlowDisk);
  session.begin();
  std::string lines = "id 7\nid 8\nid 9\n";  // while 7 is written, 9 takes the place of 8
  for (int n = 0; n < 16; ++n) {
    lines += "show\n";
  }
  session.type(lines);
  waitUntil([&] { return session.copiedId() == 9; });
  session.kill();
  EXPECT_EQ(session.copiedId(), 9);
  session.expectNextToRestore(session.copy());
}

TEST(KilledConsole, WhoseWriterIsStillAtWorkHasTheCopyBeforeAnnounced) {
  KilledSession session(kSlowDisk);
  session.begin();
  session.type("id 7\n");
  session.readWhile([&] { return session.copiedId() != 7; });
  session.type("id 8\n");
  session.readWhile([&] { return !session.isBeingWritten(); });
  session.kill();
  session.awaitUnlockedCopy();
  session.expectNextToAnnounce(session.copy());
}

}  // namespace
}  // namespace lineup::test
