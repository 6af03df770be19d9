// A console is killed, with the child that writes its copy, at each call from the first edit to the
// commit: what the copy holds then, and what the next console makes of it.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "controller/whole_config_file.h"
#include "tests/support/console_process.h"
#include "tests/support/console_texts.h"
#include "tests/support/fake_controller.h"
#include "tests/support/temporary_folder.h"
#include "tests/torture/faulty_console.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;

constexpr int32_t kFirst = 7;
constexpr int32_t kLast = 9;

/// A session that edits the headend's id again and again, each time until the copy has it.
class Session {
 public:
  explicit Session(const Fault& fault) : console_(start(fault)) {}

  /// Goes on until it is over or killed.
  void play() {
    try {
      console_.readUntil("> ");
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

  /// The next console announces the copy and restores it.
  void expectNextToRestore(const std::string& path) {
    Start next = start({});
    ConsoleProcess console(next);
    const std::string beginning = console.readUntil("Enter 'help'");
    EXPECT_EQ(beginning.find("restore " + path) != std::string::npos, !path.empty()) << beginning;
    if (!path.empty()) {
      const int32_t id = idIn(path);
      console.send("restore " + path + "\n");
      console.readUntil("Restored config from: " + path);
      EXPECT_EQ(committedId(), id);
    }
    console.send("quit\n");
    EXPECT_EQ(console.finish().status, 0);
  }

  bool isKilled() const { return FaultCounts(countsPath()).faults > 0; }
  int32_t committedId() const { return controller_.config().headendGlobalConfig.headendId; }

  /// The path of the copy, or nothing.
  std::string copy() const {
    std::error_code none;
    for (const auto& entry : fs::directory_iterator(folder_.file("lineup-console"), none)) {
      if (entry.path().extension() == ".json") {
        return entry.path();
      }
    }
    return "";
  }
  static int32_t idIn(const std::string& path) {
    return lineup::readWholeConfigFile(path).headendGlobalConfig.headendId;
  }

  int32_t typed = 0;
  int32_t copied = 0;
  long callsBefore = 0;
  long callsAfter = 0;

 private:
  std::string countsPath() const { return folder_.file("counts"); }
  long calls() const { return FaultCounts(countsPath()).calls; }

  int32_t copiedId() const {
    const std::string path = copy();
    return path.empty() ? 0 : idIn(path);
  }

  Start start(const Fault& fault) const {
    Start start;
    start.terminal = true;
    start.folder = folder_.path();
    start.environment = {
        {"TERM", "dumb"}, {"XDG_STATE_HOME", folder_.path()}, {"TMPDIR", folder_.path()}};
    if (!fault.kind.empty()) {
      injectFault(start, fault, countsPath());
    }
    return start;
  }

  const TemporaryFolder folder_;
  const FakeController controller_;
  ConsoleProcess console_;
};

TEST(KilledConsole, LeavesACopyThatIsWholeOrTheOneBefore) {
  long before = 0;
  long span = 0;
  {
    Session undisturbed({"system"});
    undisturbed.play();
    ASSERT_EQ(undisturbed.committedId(), kLast);
    before = undisturbed.callsBefore;
    span = undisturbed.callsAfter - before;
  }
  ASSERT_GT(span, 0);
  for (const long place : placesAmong(span, 15)) {
    SCOPED_TRACE("call " + std::to_string(place) + " of " + std::to_string(span));
    Session session({"system", before + place, "kill"});
    session.play();
    const std::string copy = session.copy();
    if (!copy.empty()) {
      const int32_t id = Session::idIn(copy);
      EXPECT_TRUE(id == session.typed || id == session.copied) << id;
    } else {
      EXPECT_TRUE(session.copied == 0 || session.committedId() == kLast);
    }
    session.expectNextToRestore(copy);
  }
}

}  // namespace
}  // namespace lineup::test
