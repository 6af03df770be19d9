#include "support/ending_signals.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <vector>

#include "tests/support/pipe.h"

namespace lineup::test {
namespace {

constexpr std::chrono::seconds kLongestCall(45);

using std::chrono::microseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

/// Signals are caught for the whole process: each test has one for itself, as CTest gives it.
class EndingSignalsAtTheStart : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(testing::UnitTest::GetInstance()->test_to_run_count(), 1); }
};

class EndingSignals : public EndingSignalsAtTheStart {
 protected:
  EndingSignals() { catchEndingSignals(); }
};

/// The signal that ends `wait`, or 0 if it returns.
template <class Wait>
int endedBy(Wait wait) {
  try {
    wait();
  } catch (const EndedBySignal& end) {
    return end.signal;
  }
  return 0;
}

TEST_F(EndingSignals, WithoutASignalAWaitLastsItsTime) {
  const auto begin = steady_clock::now();
  EXPECT_EQ(endedBy([] { waitFor(microseconds(50'000)); }), 0);
  EXPECT_GE(steady_clock::now() - begin, microseconds(50'000));
}

TEST_F(EndingSignals, ASignalCaughtBeforeAWaitEndsItAtOnce) {
  std::raise(SIGTERM);
  EXPECT_EQ(endedBy([] { waitFor(seconds(3600)); }), SIGTERM);
}

TEST_F(EndingSignals, ASignalDuringAWaitEndsIt) {
  std::signal(SIGALRM, [](int) { std::raise(SIGHUP); });
  ualarm(20'000, 0);
  EXPECT_EQ(endedBy([] { waitFor(seconds(3600)); }), SIGHUP);
}

TEST_F(EndingSignals, ASignalEndsTheWaitForInput) {
  const Pipe pipe;
  std::signal(SIGALRM, [](int) { std::raise(SIGINT); });
  ualarm(20'000, 0);
  EXPECT_EQ(endedBy([&] { waitForInput(pipe.readEnd); }), SIGINT);
}

TEST_F(EndingSignals, InputEndsTheWaitForInput) {
  const Pipe pipe;
  ASSERT_EQ(write(pipe.writeEnd, "x", 1), 1);
  EXPECT_EQ(endedBy([&] { waitForInput(pipe.readEnd); }), 0);
}

TEST_F(EndingSignals, WhatBlocksAfterASignalIsInterrupted) {
  const Pipe pipe;
  std::raise(SIGTERM);
  std::array<char, 1> byte{};
  for (int count = 0; count < 2; ++count) {
    EXPECT_EQ(read(pipe.readEnd, byte.data(), byte.size()), -1);
    EXPECT_EQ(errno, EINTR);
  }
}

TEST_F(EndingSignals, WhatBlocksDuringARemoteCallIsNotInterrupted) {
  const RemoteCallUnderWay call(kLongestCall);
  std::raise(SIGTERM);
  EXPECT_EQ(poll(nullptr, 0, 1'200), 0);
  EXPECT_FALSE(isEndOverdue());
}

TEST_F(EndingSignals, WhatBlocksAfterARemoteCallIsInterrupted) {
  {
    const RemoteCallUnderWay call(kLongestCall);
    std::raise(SIGTERM);
  }
  EXPECT_EQ(poll(nullptr, 0, 20'000), -1);
  EXPECT_EQ(errno, EINTR);
  EXPECT_TRUE(isEndOverdue());
}

TEST_F(EndingSignals, NoRemoteCallBeginsAfterASignal) {
  std::raise(SIGTERM);
  EXPECT_EQ(endedBy([] { const RemoteCallUnderWay call(kLongestCall); }), SIGTERM);
}

TEST_F(EndingSignals, WhatBlocksAfterAnInterruptWasForgottenIsNotInterrupted) {
  std::raise(SIGINT);
  forgetInterrupt();
  EXPECT_EQ(poll(nullptr, 0, 1'200), 0);
}

TEST_F(EndingSignals, AnInterruptOfACommandInterruptsWhatBlocksAndDoesNotEndTheProgram) {
  const InterruptibleCommand command(true);
  std::raise(SIGINT);
  EXPECT_TRUE(isInterrupted());
  EXPECT_EQ(endedBy(throwIfInterrupted), SIGINT);
  EXPECT_EQ(endedBy(throwIfSignalled), SIGINT);
  const auto begin = steady_clock::now();
  while (steady_clock::now() - begin < microseconds(3'200'000)) {
    EXPECT_EQ(poll(nullptr, 0, 20'000), -1);
  }
  forgetInterrupt();
  EXPECT_FALSE(isInterrupted());
  EXPECT_EQ(endedBy(throwIfSignalled), 0);
}

TEST_F(EndingSignals, ASecondInterruptAtOnceCountsAsTheFirst) {
  const InterruptibleCommand command(true);
  std::raise(SIGINT);
  std::raise(SIGINT);
  EXPECT_TRUE(isInterrupted());
}

TEST_F(EndingSignals, AnInterruptOfACommandThatBlocksAllTheSameEndsTheProgram) {
  const InterruptibleCommand command(true);
  std::raise(SIGINT);
  EXPECT_EQ(poll(nullptr, 0, 20'000), -1);
  EXPECT_TRUE(isEndOverdue());
  std::raise(SIGINT);
  EXPECT_FALSE(isInterrupted());
  EXPECT_EQ(endedBy(throwIfSignalled), SIGINT);
}

TEST_F(EndingSignals, ASecondInterruptDuringARemoteCallEndsTheProgram) {
  const InterruptibleCommand command(true);
  const RemoteCallUnderWay call(kLongestCall);
  std::raise(SIGINT);
  EXPECT_TRUE(isInterrupted());
  std::raise(SIGINT);
  EXPECT_FALSE(isInterrupted());
  EXPECT_EQ(endedBy(throwIfInterrupted), 0);
  EXPECT_EQ(endedBy(throwIfSignalled), SIGINT);
}

TEST_F(EndingSignals, AnotherSignalAfterAnInterruptOfACommandEndsTheProgram) {
  const InterruptibleCommand command(true);
  std::raise(SIGINT);
  std::raise(SIGTERM);
  EXPECT_FALSE(isInterrupted());
  EXPECT_EQ(endedBy(throwIfSignalled), SIGTERM);
}

TEST_F(EndingSignals, AnInterruptOutsideAnInterruptibleCommandEndsTheProgram) {
  { const InterruptibleCommand over(true); }
  const InterruptibleCommand command(false);
  std::raise(SIGINT);
  EXPECT_FALSE(isInterrupted());
  EXPECT_EQ(endedBy(throwIfSignalled), SIGINT);
}

TEST_F(EndingSignals, AnOutputThatNobodyReadsEndsTheProgram) {
  Pipe pipe;
  closeFile(pipe.readEnd);
  EXPECT_EQ(write(pipe.writeEnd, "x", 1), -1);
  EXPECT_EQ(endedBy(throwIfSignalled), SIGPIPE);
}

TEST_F(EndingSignals, TheFirstSignalCounts) {
  std::raise(SIGHUP);
  std::raise(SIGTERM);
  EXPECT_EQ(endedBy(throwIfSignalled), SIGHUP);
}

TEST_F(EndingSignals, AnInterruptGivesWayToAnotherSignal) {
  std::raise(SIGINT);
  std::raise(SIGTERM);
  std::raise(SIGINT);
  EXPECT_EQ(endedBy(throwIfSignalled), SIGTERM);
}

TEST_F(EndingSignals, OnlyAnInterruptIsForgotten) {
  std::raise(SIGINT);
  forgetInterrupt();
  EXPECT_EQ(endedBy(throwIfSignalled), 0);
  std::raise(SIGHUP);
  forgetInterrupt();
  EXPECT_EQ(endedBy(throwIfSignalled), SIGHUP);
}

TEST_F(EndingSignals, AWaitForSeveralInputsSaysWhichHasSomething) {
  const Pipe pipe;
  ASSERT_EQ(write(pipe.writeEnd, "x", 1), 1);
  std::array<pollfd, 3> inputs{
      {{-1, POLLIN, 0}, {pipe.readEnd, POLLIN, 0}, {pipe.writeEnd, POLLIN, 0}}};
  waitForInput(inputs);
  EXPECT_EQ(inputs[0].revents, 0);
  EXPECT_EQ(inputs[1].revents, POLLIN);
  EXPECT_EQ(inputs[2].revents, 0);
}

TEST_F(EndingSignals, AHungUpTerminalEndsTheProgram) {
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_GE(terminal, 0);
  ASSERT_EQ(unlockpt(terminal), 0);
  const int otherEnd = open(ptsname(terminal), O_RDWR | O_NOCTTY);
  EXPECT_EQ(endedBy([&] { throwIfHungUp(otherEnd); }), 0);
  close(terminal);
  EXPECT_EQ(endedBy([&] { throwIfHungUp(otherEnd); }), SIGHUP);
}

/// The signals that end a program by default, but for those that a fault raises, SIGKILL, and
/// SIGXFSZ, which stands for a full disk.
std::vector<int> endingSignals() {
  std::vector<int> signals{SIGHUP,  SIGINT,  SIGQUIT, SIGPIPE,   SIGALRM, SIGTERM, SIGUSR1,
                           SIGUSR2, SIGXCPU, SIGPROF, SIGVTALRM, SIGPOLL, SIGPWR,  SIGSTKFLT};
  for (int signal = SIGRTMIN; signal <= SIGRTMAX; ++signal) {
    signals.push_back(signal);
  }
  return signals;
}

/// Expects that `signal` is caught when it is raised in a process that `prepare` has set up.
template <class Prepare>
void expectCaught(int signal, Prepare prepare) {
  const pid_t child = fork();
  if (child == 0) {
    prepare();
    catchEndingSignals();
    std::raise(signal);
    _exit(endedBy(throwIfSignalled));
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == signal) << sigabbrev_np(signal);
}

TEST_F(EndingSignalsAtTheStart, EverySignalThatEndsAProgramIsCaught) {
  for (const int signal : endingSignals()) {
    expectCaught(signal, [] {});
  }
}

TEST_F(EndingSignalsAtTheStart, OneThatWasBlockedAtTheStartIsCaught) {
  for (const int signal : endingSignals()) {
    expectCaught(signal, [] {
      sigset_t all;
      sigfillset(&all);
      pthread_sigmask(SIG_SETMASK, &all, nullptr);
    });
  }
}

TEST_F(EndingSignalsAtTheStart, OtherSignalsThatWereIgnoredAreCaught) {
  for (const int signal : endingSignals()) {
    if (signal != SIGHUP && signal != SIGINT && signal != SIGQUIT) {
      expectCaught(signal, [signal] { std::signal(signal, SIG_IGN); });
    }
  }
}

TEST_F(EndingSignalsAtTheStart, ATimerThatWasRunningAtTheStartIsStopped) {
  ualarm(20'000, 0);
  catchEndingSignals();
  EXPECT_EQ(poll(nullptr, 0, 100), 0);
}

TEST_F(EndingSignalsAtTheStart, AnIgnoredHangUpInterruptOrQuitStaysIgnored) {
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT}) {
    std::signal(signal, SIG_IGN);
    catchEndingSignals();
    std::raise(signal);
    EXPECT_EQ(endedBy(throwIfSignalled), 0);
  }
}

[[noreturn]] void blockForEver() {
  while (true) {
    poll(nullptr, 0, -1);
  }
}

TEST(EndingSignalsDeathTest, TheEndComesWhateverBlocks) {
  const auto begin = steady_clock::now();
  EXPECT_EXIT(
      {
        catchEndingSignals();
        std::raise(SIGQUIT);
        blockForEver();
      },
      testing::KilledBySignal(SIGQUIT), "");
  EXPECT_GE(steady_clock::now() - begin, seconds(2));
}

TEST(EndingSignalsDeathTest, TheEndComesWhateverBlocksAtTheEnd) {
  EXPECT_EXIT(
      {
        catchEndingSignals();
        beginEnding(SIGTERM);
        blockForEver();
      },
      testing::KilledBySignal(SIGTERM), "");
}

TEST(EndingSignalsDeathTest, TheTimeThatIsLeftRunsFromTheSignal) {
  EXPECT_EXIT(
      {
        catchEndingSignals();
        std::raise(SIGTERM);
        for (const auto begin = steady_clock::now(); steady_clock::now() < begin + seconds(20);) {
          beginEnding(SIGTERM);
        }
      },
      testing::KilledBySignal(SIGTERM), "");
}

TEST(EndingSignalsDeathTest, AForcedEndWaitsASecondForItsWorkWhichGoesOnAfterIt) {
  EXPECT_EXIT(
      {
        catchEndingSignals();
        whenEndIsForced([] {
          std::cerr << "worked";
          sleep(3);
          std::cerr << " to its end";
        });
        std::raise(SIGTERM);
        blockForEver();
      },
      testing::KilledBySignal(SIGTERM), "worked to its end");
}

TEST(EndingSignalsDeathTest, TheProgramEndsByTheSignal) {
  EXPECT_EXIT(
      {
        catchEndingSignals();
        endBySignal(SIGTERM);
      },
      testing::KilledBySignal(SIGTERM), "");
}

}  // namespace
}  // namespace lineup::test
