// What the system may do to the console without anything being wrong.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "tests/support/console_process.h"
#include "tests/support/fake_controller.h"
#include "tests/support/temporary_folder.h"

namespace {

using lineup::test::Answer;
using lineup::test::ConsoleProcess;
using lineup::test::FakeController;
using lineup::test::Outcome;
using lineup::test::Start;

constexpr char kPending[] = "(changes to commit) > ";

class InterruptedRead : public testing::TestWithParam<bool> {};

TEST_P(InterruptedRead, IsRepeated) {
  const FakeController controller;
  const lineup::test::TemporaryFolder folder;
  const std::string count = folder.file("count");
  Start start;
  start.terminal = GetParam();
  start.environment = {{"TERM", "xterm"},
                       {"LD_PRELOAD", FAULT_INJECTION},
                       {"ASAN_OPTIONS", "verify_asan_link_order=0"},
                       {"FAULT_KIND", "interruption"},
                       {"FAULT_AT", "1"},
                       {"FAULT_ON", "once"},
                       {"FAULT_COUNT", count}};
  ConsoleProcess console(start);
  console.readUntil("> ");
  console.send("id 7\n");
  console.readUntil(kPending);
  console.send("quit\n");
  EXPECT_EQ(console.finish().status, 0);
  int reads = 0;
  std::ifstream(count) >> reads;
  EXPECT_GT(reads, 1);
}

INSTANTIATE_TEST_SUITE_P(Streams, InterruptedRead, testing::Bool(), [](const auto& instance) {
  return instance.param ? "OnATerminal" : "OnAPipe";
});

TEST(TooFewDescriptors, LeaveLinesUnedited) {
  FakeController controller;
  Answer stall;
  stall.sentBytes = 5;
  stall.stalls = true;
  controller.answerNext(stall);
  Start start;
  start.terminal = true;
  start.environment["TERM"] = "xterm";
  ConsoleProcess console(start);
  controller.waitForCalls(1);
  rlimit limit{};
  ASSERT_EQ(prlimit(console.pid(), RLIMIT_NOFILE, nullptr, &limit), 0);
  limit.rlim_cur = STDERR_FILENO + 1;
  ASSERT_EQ(prlimit(console.pid(), RLIMIT_NOFILE, &limit, nullptr), 0);
  controller.release();
  console.readUntil("> ");
  EXPECT_TRUE(console.echoes());
  console.send("id 7\n");
  console.readUntil(kPending);
  console.send("quit\n");
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out.find('\x1b'), std::string::npos);
}

}  // namespace
