// Outputs that fail or block, and signals, with the built lineupctl.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstddef>
#include <string>
#include <vector>

#include "tests/ctl/ctl_process.h"
#include "tests/support/pipe.h"

namespace lineup::test {
namespace {

using korvel::thrift::hub_module::HeadendConfig;
using Words = std::vector<std::string>;

/// How to start lineupctl by the shell, with its streams as `redirection` says.
Start redirected(const std::string& words, const std::string& redirection) {
  return Start{.program = "sh",
               .arguments = {"-c", "exec \"$0\" " + words + " " + redirection, kCtlProgram}};
}

Outcome runRedirected(const std::string& words, const std::string& redirection) {
  return run(redirected(words, redirection));
}

/// Has a program that is started get the end of a pipe, which does not block.
void inherit(int end) {
  fcntl(end, F_SETFD, 0);
  fcntl(end, F_SETFL, O_NONBLOCK);
}

/// Everything up to the end of a pipe, which is full most of the time meanwhile.
std::string slowlyRead(int pipe) {
  std::string text;
  std::array<char, 4096> part{};
  for (ssize_t count = 0; (count = read(pipe, part.data(), part.size())) > 0;) {
    text.append(part.data(), static_cast<std::size_t>(count));
    usleep(1'000);
  }
  return text;
}

TEST_F(CtlWithController, FailsIfItsOutputCannotBeWritten) {
  const std::string file = fileWith(withId(7));
  for (const std::string& words :
       Words{"show", "show --format=json", "diff " + file, "apply " + file, "--help"}) {
    const Outcome full = runRedirected(words, ">/dev/full");
    EXPECT_EQ(full.status, 3) << words;
    EXPECT_EQ(full.err, "lineupctl: standard output: No space left on device\n");
    const Outcome closed = runRedirected(words, ">&-");
    EXPECT_EQ(closed.status, 3) << words;
    EXPECT_EQ(closed.err, "lineupctl: standard output: Bad file descriptor\n");
  }
  EXPECT_EQ(controller_.config(), withId(1));  // nothing was sent
}

TEST_F(Ctl, WaitsForAnOutputThatDoesNotBlock) {
  HeadendConfig large;
  large.lineupConfig.rfEntries.resize(3'000);
  const std::string file = fileWith(large);
  const std::string expected = runCtl({"show", "--format=json", file}).out;
  ASSERT_GT(expected.size(), std::size_t{10} << 16);  // ten times what a pipe holds
  Pipe pipe;
  inherit(pipe.writeEnd);
  ProgramProcess showing(
      redirected("show --format=json " + file, ">&" + std::to_string(pipe.writeEnd)));
  closeFile(pipe.writeEnd);
  EXPECT_TRUE(slowlyRead(pipe.readEnd) == expected);
  const Outcome outcome = showing.finish();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
}

TEST_F(Ctl, WaitsForAnInputThatDoesNotBlock) {
  const std::string file = toJson(withId(7));
  Pipe pipe;
  inherit(pipe.readEnd);
  ProgramProcess showing(redirected("show -", "<&" + std::to_string(pipe.readEnd)));
  for (const std::string& part : {file.substr(0, 600), file.substr(600)}) {
    showing.waitUntilBlocked();
    EXPECT_EQ(write(pipe.writeEnd, part.data(), part.size()), static_cast<ssize_t>(part.size()));
  }
  closeFile(pipe.writeEnd);
  const Outcome outcome = showing.finish();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_NE(outcome.out.find("id             7\n"), std::string::npos) << outcome.out;
}

TEST_F(CtlWithController, ItsStatusSaysThatSomethingElseRunsAlsoIfNobodyReads) {
  controller_.answerRightly();
  controller_.answerNext(stalled(true, 0));
  controller_.answerNext(recordAnswer("getHeadendConfig", toBinary(withId(1))));
  const std::string file = fileWith(withId(7));
  ProgramProcess applying(ctl({"apply", file}));
  controller_.waitForCalls(2);
  applying.stopReading();
  controller_.release();
  const Outcome outcome = applying.finish();
  EXPECT_EQ(outcome.status, 5) << outcome.signal;
  EXPECT_EQ(outcome.err, "lineupctl: standard output: Broken pipe\nlineupctl: " + file +
                             ": was sent, but something else runs\n");
}

TEST_F(Ctl, ItsStatusHoldsAlsoIfNobodyReadsItsErrors) {
  const std::string withoutReader =
      "mkfifo fifo; exec 3<>fifo 4>fifo 3<&-; \"$0\" show none 2>&4; echo $?";
  Start start{.program = "sh", .arguments = {"-c", withoutReader, kCtlProgram}};
  start.folder = folder_.path();
  EXPECT_EQ(run(start).out, "3\n");
}

TEST_F(CtlWithController, ASignalEndsIt) {
  controller_.answerAll(stalled(false, 0));
  ProgramProcess asking(ctl({"diff", fileWith(withId(7))}));
  controller_.waitForCalls(1);
  asking.signal(SIGTERM);
  EXPECT_EQ(asking.finish().signal, SIGTERM);
}

/// Those by which people, systems and their timers end programs.
const int kEndingSignals[] = {SIGHUP,  SIGINT,    SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2,  SIGALRM,
                              SIGXCPU, SIGVTALRM, SIGPROF, SIGPOLL, SIGPWR,  SIGRTMIN, SIGRTMAX};

TEST_F(CtlWithController, ASignalLetsACallThatHasBegunToSendFinish) {
  const std::string file = fileWith(withId(7));
  std::size_t calls = 0;
  for (const int signal : kEndingSignals) {
    controller_.setConfig(withId(1));
    controller_.answerRightly();
    controller_.answerNext(stalled(true, 0));
    ProgramProcess applying(ctl({"apply", file}));
    controller_.waitForCalls(calls += 2);
    applying.signal(signal);
    applying.waitUntilPending(signal);
    controller_.release();
    const Outcome outcome = applying.finish();
    EXPECT_EQ(outcome.signal, signal);
    EXPECT_EQ(outcome.out, "id: 1 -> 7\n");
    EXPECT_EQ(outcome.err, "lineupctl: " + file + kEndedBeforeReadBack + "\n");
    EXPECT_EQ(controller_.config(), withId(7));
  }
}

// A signal that does not end it is not mentioned.
TEST_F(CtlWithController, ASignalThatWasBlockedBeforeIsNoEnd) {
  controller_.answerRightly();
  controller_.answerNext(stalled(true, 0));
  ProgramProcess applying(
      Start{.program = "env",
            .arguments = {"--block-signal=TERM", kCtlProgram, "apply", fileWith(withId(7))}});
  controller_.waitForCalls(2);
  applying.signal(SIGTERM);
  applying.waitUntilPending(SIGTERM);
  controller_.release();
  const Outcome outcome = applying.finish();
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.err, "");
}

}  // namespace
}  // namespace lineup::test
