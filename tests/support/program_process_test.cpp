// Drives small programs of the system: what is tested is the driver, as far as a test that it lets
// down would not fail.

#include "tests/support/program_process.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <stdexcept>
#include <string>

namespace lineup::test {
namespace {

/// The text of what `action` throws, or "nothing".
std::string failureOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "nothing";
}

TEST(ProgramProcess, PassesInputOutputErrorsAndStatus) {
  const Outcome outcome = run(inShell("cat; echo oops >&2; exit 3"), "one\ntwo");
  EXPECT_EQ(outcome.out, "one\ntwo");
  EXPECT_EQ(outcome.err, "oops\n");
  EXPECT_EQ(outcome.status, 3);
  EXPECT_EQ(outcome.signal, 0);
}

TEST(ProgramProcess, NamesTheSignalThatEndedTheProgram) {
  const Outcome outcome = run(inShell("kill -TERM $$"));
  EXPECT_EQ(outcome.status, -1);
  EXPECT_EQ(outcome.signal, SIGTERM);
}

TEST(ProgramProcess, CarriesMoreThanAPipeHoldsInBothDirections) {
  const std::string text(3'000'000, 'x');
  EXPECT_EQ(run({.program = "cat"}, text).out, text);
}

TEST(ProgramProcess, DropsInputThatIsNotRead) {
  EXPECT_EQ(run(inShell("exit 0"), std::string(1'000'000, 'x')).status, 0);
}

TEST(ProgramProcess, StartsWithDefaultSignals) {
  EXPECT_EQ(run(inShell("kill -PIPE $$; echo survived")).signal, SIGPIPE);
}

TEST(ProgramProcess, GoesStepByStep) {
  ProgramProcess process(
      inShell("while read -r line; do echo \"<$line>\"; echo \"!$line\" >&2; done"));
  process.send("one\n");
  EXPECT_EQ(process.readUntil(">"), "<one>");
  EXPECT_EQ(process.readErrorsUntil("\n"), "!one\n");
  process.send("two\n");
  EXPECT_EQ(process.readUntil(">\n"), "\n<two>\n");
  process.closeInput();
  const Outcome outcome = process.finish();
  EXPECT_EQ(outcome.out, "<one>\n<two>\n");
  EXPECT_EQ(outcome.err, "!one\n!two\n");
}

TEST(ProgramProcess, LeavesOutputUnread) {
  ProgramProcess process({.program = "cat", .arguments = {"/dev/zero"}});
  process.waitUntilBlocked();
  process.signal(SIGTERM);
  process.waitForEnd();
  EXPECT_EQ(process.finish().signal, SIGTERM);
}

TEST(ProgramProcess, FailsWhenTheProgramIsMissing) {
  for (const bool terminal : {false, true}) {
    EXPECT_EQ(failureOf([&] { run({.program = "/nonesuch", .terminal = terminal}); }),
              "/nonesuch: No such file or directory");
  }
}

TEST(ProgramProcess, FailsWhenTheOutputEndsBeforeTheExpectedText) {
  EXPECT_EQ(failureOf([] {
              ProgramProcess process(inShell("echo this; echo that >&2"));
              process.readErrorsUntil("that\n");
              process.readUntil("other");
            }),
            "ended before \"other\"\nstandard output: \"this\n\"\nstandard error: \"that\n\"");
}

TEST(ProgramProcess, FailsWhenTheEndedInputIsWrittenTo) {
  ProgramProcess process({.program = "cat"});
  process.closeInput();
  EXPECT_EQ(failureOf([&] { process.send("x"); }),
            "the input has ended\nstandard output: \"\"\nstandard error: \"\"");
}

TEST(ProgramProcess, KillsAndFailsAtTheTimeOut) {
  struct {
    const char* script;
    std::function<void(ProgramProcess&)> wait;
    std::string awaited;
    bool terminal = false;
  } const cases[] = {
      {"exec sleep 1000", [](ProgramProcess& process) { process.finish(); }, "the end"},
      {"exec sleep 1000", [](ProgramProcess& process) { process.readUntil("up"); }, "\"up\"", true},
      {"exec sleep 1000",
       [](ProgramProcess& process) { process.send(std::string(1'000'000, 'x')); },
       "the input to be read"},
      {"while :; do :; done", [](ProgramProcess& process) { process.waitUntilBlocked(); },
       "the program to block"},
      {"exec >&- 2>&-; exec sleep 1000", [](ProgramProcess& process) { process.finish(); },
       "the end"}};
  for (const auto& [script, wait, awaited, terminal] : cases) {
    Start start = inShell(script);
    start.terminal = terminal;
    start.timeout = std::chrono::milliseconds(300);
    pid_t pid = 0;
    EXPECT_EQ(failureOf([&, wait = wait] {
                ProgramProcess process(start);
                pid = process.pid();
                wait(process);
              }),
              "timed out waiting for " + awaited + "\nstandard output: \"\"\nstandard error: \"\"");
    EXPECT_EQ(kill(pid, 0), -1) << script;
  }
}

TEST(ProgramOnATerminal, HasItOnAllThreeStreams) {
  const Outcome outcome =
      run(inShell("test -t 0 && test -t 1 && test -t 2 && tty >/dev/tty", {.terminal = true}));
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out.substr(0, 9), "/dev/pts/");
}

TEST(ProgramOnATerminal, EchoesWhatIsTypedAndEndsWithCtrlD) {
  ProgramProcess process({.program = "cat", .terminal = true});
  process.send("hello\n");
  EXPECT_EQ(process.readUntil("hello\r\nhello\r\n"), "hello\r\nhello\r\n");
  process.closeInput();
  const Outcome outcome = process.finish();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
}

}  // namespace
}  // namespace lineup::test
