// System calls that fail or are interrupted and that the console can do without.

#include <gtest/gtest.h>

#include <string>

#include "tests/support/console_texts.h"
#include "tests/support/edited_console.h"
#include "tests/support/fake_controller.h"
#include "tests/support/program_process.h"
#include "tests/support/temporary_folder.h"
#include "tests/torture/faulty_console.h"

namespace lineup::test {
namespace {

/// A console on a terminal or on pipes, of whose calls of the kind the one at `place` fails.
/// `counts` receives how many it makes.
Start withFault(const std::string& kind, bool terminal, const std::string& counts, long place = 1) {
  Start start;
  start.terminal = terminal;
  start.environment = {{"TERM", "xterm"}};
  injectFault(start, {kind, place}, counts);
  return start;
}

class AdverseSystem : public testing::Test {
 protected:
  long calls() const { return FaultCounts(count).calls; }

  const FakeController controller;
  const TemporaryFolder folder;
  const std::string count = folder.file("count");
};

class AdverseStreams : public AdverseSystem, public testing::WithParamInterface<bool> {};

TEST_P(AdverseStreams, AnInterruptedReadIsRepeated) {
  EditedConsole console(withFault("interruption", GetParam(), count));
  console.send("quit\n");
  EXPECT_EQ(console.finish().status, 0);
  EXPECT_GT(calls(), 1);
}

INSTANTIATE_TEST_SUITE_P(Streams, AdverseStreams, testing::Bool(),
                         [](const auto& instance) { return nameOfStreams(instance.param); });

TEST_F(AdverseSystem, WithoutADescriptorForSignalsLinesAreNotEdited) {
  ProgramProcess console(withFault("signalfd", true, count));
  console.readUntil("> ");
  EXPECT_FALSE(console.editsLines());
  console.send("id 7\n");
  console.readUntil(kPending);
  console.send("quit\n");
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out.find('\x1b'), std::string::npos);
  EXPECT_EQ(calls(), 1);
}

// A line may then be read without editing; it only has to be read.
TEST_F(AdverseSystem, ATerminalThatFailsOnceLeavesTheConsoleToReadLines) {
  const auto session = [&](long place) {
    ProgramProcess console(withFault("terminal", true, count, place));
    console.readUntil("> ");
    const long before = calls();
    console.send("id 7\n");
    console.readUntil(kPending);
    console.send("quit\n");
    const Outcome outcome = console.finish();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find("NOTE: Changes have not been committed"), std::string::npos)
        << outcome.out;
    return before;
  };
  const long startCalls = session(0);
  ASSERT_GT(startCalls, 10);
  for (long place = 1; place <= startCalls; ++place) {
    SCOPED_TRACE("call " + std::to_string(place));
    session(place);
  }
}

}  // namespace
}  // namespace lineup::test
