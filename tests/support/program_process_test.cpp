// Drives small programs of the system: what is tested is the driver.

#include "tests/support/program_process.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <optional>
#include <stdexcept>
#include <string>

namespace lineup::test {
namespace {

using std::chrono::milliseconds;

Start shell(const std::string& script) {
  return {.program = "/bin/sh", .arguments = {"-c", script}};
}

Start terminalShell(const std::string& script) {
  Start start = shell(script);
  start.terminal = true;
  return start;
}

/// The text of what `action` throws, or "nothing".
template <class Action>
std::string failureOf(Action action) {
  try {
    action();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "nothing";
}

TEST(ProgramProcess, PassesInputOutputErrorsAndStatus) {
  const Outcome outcome = run(shell("cat; echo oops >&2; exit 3"), "one\ntwo");
  EXPECT_EQ(outcome.out, "one\ntwo");
  EXPECT_EQ(outcome.err, "oops\n");
  EXPECT_EQ(outcome.status, 3);
  EXPECT_EQ(outcome.signal, 0);
}

TEST(ProgramProcess, NamesTheSignalThatEndedTheProgram) {
  const Outcome outcome = run(shell("kill -TERM $$"));
  EXPECT_EQ(outcome.status, -1);
  EXPECT_EQ(outcome.signal, SIGTERM);
}

TEST(ProgramProcess, CarriesMoreThanAPipeHoldsInBothDirections) {
  const std::string text(3'000'000, 'x');
  EXPECT_EQ(run({.program = "cat"}, text).out, text);
}

TEST(ProgramProcess, DropsInputThatIsNotRead) {
  EXPECT_EQ(run(shell("exit 0"), std::string(1'000'000, 'x')).status, 0);
}

TEST(ProgramProcess, GivesArgumentsUnchanged) {
  const Outcome outcome = run({.program = "printf", .arguments = {"[%s]", "", "a b", "*"}});
  EXPECT_EQ(outcome.out, "[][a b][*]");
}

TEST(ProgramProcess, SetsAndUnsetsTheEnvironment) {
  Start start = shell("echo ${TERM-none} ${HOME-none}; test -n \"$PATH\"");
  start.environment = {{"TERM", "vt100"}, {"HOME", std::nullopt}};
  const Outcome outcome = run(start);
  EXPECT_EQ(outcome.out, "vt100 none\n");
  EXPECT_EQ(outcome.status, 0);
}

TEST(ProgramProcess, RunsInTheFolderGiven) {
  EXPECT_EQ(run({.program = "pwd", .folder = "/usr"}).out, "/usr\n");
}

TEST(ProgramProcess, StartsWithDefaultSignals) {
  EXPECT_EQ(run(shell("kill -PIPE $$; echo survived")).signal, SIGPIPE);
}

TEST(ProgramProcess, GoesStepByStep) {
  ProgramProcess process(
      shell("while read -r line; do echo \"<$line>\"; echo \"!$line\" >&2; done"));
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

TEST(ProgramProcess, SendsASignal) {
  ProgramProcess process(shell("trap 'exit 4' USR1; echo up; while :; do sleep 0.01; done"));
  process.readUntil("up\n");
  process.signal(SIGUSR1);
  EXPECT_EQ(process.finish().status, 4);
}

TEST(ProgramProcess, LeavesOutputUnread) {
  ProgramProcess process({.program = "cat", .arguments = {"/dev/zero"}});
  process.waitUntilBlocked();
  process.signal(SIGTERM);
  process.waitForEnd();
  EXPECT_EQ(process.finish().signal, SIGTERM);
}

TEST(ProgramProcess, StopsReading) {
  ProgramProcess process({.program = "cat", .arguments = {"/dev/zero"}});
  process.readMore();
  process.stopReading();
  EXPECT_EQ(process.finish().signal, SIGPIPE);
}

TEST(ProgramProcess, FailsWhenTheProgramDoesNotBlock) {
  Start start = shell("while :; do :; done");
  start.timeout = milliseconds(300);
  EXPECT_EQ(failureOf([&] { ProgramProcess(start).waitUntilBlocked(); }).substr(0, 38),
            "timed out waiting for the program to b");
}

TEST(ProgramProcess, FailsWhenTheProgramIsMissing) {
  EXPECT_EQ(failureOf([] { run({.program = "/nonesuch"}); }),
            "/nonesuch: No such file or directory");
  EXPECT_EQ(failureOf([] { run({.program = "/nonesuch", .terminal = true}); }),
            "/nonesuch: No such file or directory");
}

TEST(ProgramProcess, FailsWhenTheOutputEndsBeforeTheExpectedText) {
  EXPECT_EQ(failureOf([] {
              ProgramProcess process(shell("echo this; echo that >&2"));
              process.readErrorsUntil("that\n");
              process.readUntil("other");
            }),
            "ended before \"other\"\nstandard output: \"this\n\"\nstandard error: \"that\n\"");
}

TEST(ProgramProcess, KillsAndFailsAtTheTimeOut) {
  Start start{.program = "sleep", .arguments = {"1000"}};
  start.timeout = milliseconds(300);
  pid_t pid = 0;
  const std::string failure = failureOf([&] {
    ProgramProcess process(start);
    pid = process.pid();
    process.finish();
  });
  EXPECT_EQ(failure, "timed out waiting for the end\nstandard output: \"\"\nstandard error: \"\"");
  EXPECT_EQ(kill(pid, 0), -1);
}

TEST(ProgramProcess, FailsWhenTheInputIsNotTaken) {
  Start start = shell("exec sleep 1000");
  start.timeout = milliseconds(300);
  EXPECT_EQ(failureOf([&] { run(start, std::string(1'000'000, 'x')); }).substr(0, 45),
            "timed out waiting for the input to be read\nst");
}

TEST(ProgramProcess, FailsWhenTheEndedInputIsWrittenTo) {
  ProgramProcess process({.program = "cat"});
  process.closeInput();
  EXPECT_EQ(failureOf([&] { process.send("x"); }),
            "the input has ended\nstandard output: \"\"\nstandard error: \"\"");
}

TEST(ProgramProcess, FailsWhenTheProgramStaysAfterItsOutputEnded) {
  Start start = shell("exec >&- 2>&-; exec sleep 1000");
  start.timeout = milliseconds(300);
  EXPECT_EQ(failureOf([&] { run(start); }).substr(0, 29), "timed out waiting for the end");
}

TEST(ProgramOnATerminal, IsATerminalOnAllThreeStreams) {
  const Outcome outcome =
      run(terminalShell("test -t 0 && test -t 1 && test -t 2 && tty >/dev/tty"));
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

TEST(ProgramOnATerminal, CtrlCInterrupts) {
  ProgramProcess process(terminalShell("echo up; exec sleep 1000"));
  process.readUntil("up");
  process.send("\x03");
  EXPECT_EQ(process.finish().signal, SIGINT);
}

TEST(ProgramOnATerminal, HasTheSizeGivenAndIsResized) {
  Start start =
      terminalShell("trap 'stty size; exit' WINCH; stty size; while :; do sleep 0.01; done");
  start.rows = 30;
  start.columns = 100;
  ProgramProcess process(start);
  EXPECT_EQ(process.readUntil("\n"), "30 100\r\n");
  process.resize(10, 40);
  EXPECT_EQ(process.readUntil("\n"), "10 40\r\n");
  EXPECT_EQ(process.finish().status, 0);
}

TEST(ProgramOnATerminal, KillsAndFailsAtTheTimeOut) {
  Start start{.program = "sleep", .arguments = {"1000"}, .terminal = true};
  start.timeout = milliseconds(300);
  pid_t pid = 0;
  const std::string failure = failureOf([&] {
    ProgramProcess process(start);
    pid = process.pid();
    process.readUntil("up");
  });
  EXPECT_EQ(failure, "timed out waiting for \"up\"\nstandard output: \"\"\nstandard error: \"\"");
  EXPECT_EQ(kill(pid, 0), -1);
}

}  // namespace
}  // namespace lineup::test
