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
#include <vector>

namespace lineup::test {
namespace {

constexpr std::chrono::seconds kLongestCall(45);

using std::chrono::microseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

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

TEST(EndingSignals, WithoutASignalAWaitLastsItsTime) {
  catchEndingSignals();
  const auto begin = steady_clock::now();
  EXPECT_EQ(endedBy([] { waitFor(microseconds(50'000)); }), 0);
  EXPECT_GE(steady_clock::now() - begin, microseconds(50'000));
}

TEST(EndingSignals, ASignalCaughtBeforeAWaitEndsItAtOnce) {
  catchEndingSignals();
  std::raise(SIGTERM);
  EXPECT_EQ(endedBy([] { waitFor(seconds(3600)); }), SIGTERM);
}

TEST(EndingSignals, ASignalDuringAWaitEndsIt) {
  catchEndingSignals();
  std::signal(SIGALRM, [](int) { std::raise(SIGHUP); });
  ualarm(20'000, 0);
  EXPECT_EQ(endedBy([] { waitFor(seconds(3600)); }), SIGHUP);
}

TEST(EndingSignals, ASignalEndsTheWaitForInput) {
  catchEndingSignals();
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  std::signal(SIGALRM, [](int) { std::raise(SIGINT); });
  ualarm(20'000, 0);
  EXPECT_EQ(endedBy([&] { waitForInput(ends[0]); }), SIGINT);
}

TEST(EndingSignals, InputEndsTheWaitForInput) {
  catchEndingSignals();
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(write(ends[1], "x", 1), 1);
  EXPECT_EQ(endedBy([&] { waitForInput(ends[0]); }), 0);
}

TEST(EndingSignals, WhatBlocksAfterASignalIsInterrupted) {
  catchEndingSignals();
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  std::raise(SIGTERM);
  std::array<char, 1> byte{};
  for (int count = 0; count < 2; ++count) {
    EXPECT_EQ(read(ends[0], byte.data(), byte.size()), -1);
    EXPECT_EQ(errno, EINTR);
  }
}

TEST(EndingSignals, WhatBlocksDuringARemoteCallIsNot) {
  catchEndingSignals();
  const RemoteCallUnderWay call(kLongestCall);
  std::raise(SIGTERM);
  EXPECT_EQ(poll(nullptr, 0, 1'200), 0);
  EXPECT_FALSE(isEndOverdue());
}

TEST(EndingSignals, WhatBlocksAfterARemoteCallIsInterrupted) {
  catchEndingSignals();
  {
    const RemoteCallUnderWay call(kLongestCall);
    std::raise(SIGTERM);
  }
  EXPECT_EQ(poll(nullptr, 0, 20'000), -1);
  EXPECT_EQ(errno, EINTR);
  EXPECT_TRUE(isEndOverdue());
}

TEST(EndingSignals, NoRemoteCallBeginsAfterASignal) {
  catchEndingSignals();
  std::raise(SIGTERM);
  EXPECT_EQ(endedBy([] { const RemoteCallUnderWay call(kLongestCall); }), SIGTERM);
}

TEST(EndingSignals, WhatBlocksAfterAnInterruptWasForgottenIsNot) {
  catchEndingSignals();
  std::raise(SIGINT);
  forgetInterrupt();
  EXPECT_EQ(poll(nullptr, 0, 1'200), 0);
}

TEST(EndingSignals, AnInterruptOfACommandInterruptsWhatBlocksAndDoesNotEndTheProgram) {
  catchEndingSignals();
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

TEST(EndingSignals, AnImpatientInterruptOfACommandIsTheSameOne) {
  catchEndingSignals();
  const InterruptibleCommand command(true);
  std::raise(SIGINT);
  std::raise(SIGINT);
  EXPECT_TRUE(isInterrupted());
}

TEST(EndingSignals, AnInterruptOfACommandThatBlocksAllTheSameEndsTheProgram) {
  catchEndingSignals();
  const InterruptibleCommand command(true);
  std::raise(SIGINT);
  EXPECT_EQ(poll(nullptr, 0, 20'000), -1);
  EXPECT_TRUE(isEndOverdue());
  std::raise(SIGINT);
  EXPECT_FALSE(isInterrupted());
  EXPECT_EQ(endedBy(throwIfSignalled), SIGINT);
}

TEST(EndingSignals, ASecondInterruptDuringARemoteCallEndsTheProgram) {
  catchEndingSignals();
  const InterruptibleCommand command(true);
  const RemoteCallUnderWay call(kLongestCall);
  std::raise(SIGINT);
  EXPECT_TRUE(isInterrupted());
  std::raise(SIGINT);
  EXPECT_FALSE(isInterrupted());
  EXPECT_EQ(endedBy(throwIfInterrupted), 0);
  EXPECT_EQ(endedBy(throwIfSignalled), SIGINT);
}

TEST(EndingSignals, AnotherSignalAfterAnInterruptOfACommandEndsTheProgram) {
  catchEndingSignals();
  const InterruptibleCommand command(true);
  std::raise(SIGINT);
  std::raise(SIGTERM);
  EXPECT_FALSE(isInterrupted());
  EXPECT_EQ(endedBy(throwIfSignalled), SIGTERM);
}

TEST(EndingSignals, AnInterruptOutsideAnInterruptibleCommandEndsTheProgram) {
  catchEndingSignals();
  { const InterruptibleCommand over(true); }
  const InterruptibleCommand command(false);
  std::raise(SIGINT);
  EXPECT_FALSE(isInterrupted());
  EXPECT_EQ(endedBy(throwIfSignalled), SIGINT);
}

TEST(EndingSignals, AnOutputThatNobodyReadsEndsTheProgram) {
  catchEndingSignals();
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  close(ends[0]);
  EXPECT_EQ(write(ends[1], "x", 1), -1);
  EXPECT_EQ(endedBy(throwIfSignalled), SIGPIPE);
}

TEST(EndingSignals, TheFirstSignalCounts) {
  catchEndingSignals();
  std::raise(SIGHUP);
  std::raise(SIGTERM);
  EXPECT_EQ(endedBy(throwIfSignalled), SIGHUP);
}

TEST(EndingSignals, AnInterruptGivesWayToAnotherSignal) {
  catchEndingSignals();
  std::raise(SIGINT);
  std::raise(SIGTERM);
  std::raise(SIGINT);
  EXPECT_EQ(endedBy(throwIfSignalled), SIGTERM);
}

TEST(EndingSignals, OnlyAnInterruptIsForgotten) {
  catchEndingSignals();
  std::raise(SIGINT);
  forgetInterrupt();
  EXPECT_EQ(endedBy(throwIfSignalled), 0);
  std::raise(SIGHUP);
  forgetInterrupt();
  EXPECT_EQ(endedBy(throwIfSignalled), SIGHUP);
}

TEST(EndingSignals, AWaitForSeveralInputsSaysWhichHasSomething) {
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  ASSERT_EQ(write(ends[1], "x", 1), 1);
  std::array<pollfd, 3> inputs{{{-1, POLLIN, 0}, {ends[0], POLLIN, 0}, {ends[1], POLLIN, 0}}};
  waitForInput(inputs);
  EXPECT_EQ(inputs[0].revents, 0);
  EXPECT_EQ(inputs[1].revents, POLLIN);
  EXPECT_EQ(inputs[2].revents, 0);
}

TEST(EndingSignals, AHungUpTerminalEndsTheProgram) {
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

/// The signal that is caught when `signal` is raised in a process that `prepare` has set up.
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

TEST(EndingSignals, EverySignalThatEndsAProgramIsCaught) {
  for (const int signal : endingSignals()) {
    expectCaught(signal, [] {});
  }
}

TEST(EndingSignals, OneThatWasHeldBackAtTheStartIsCaught) {
  for (const int signal : endingSignals()) {
    expectCaught(signal, [] {
      sigset_t all;
      sigfillset(&all);
      pthread_sigmask(SIG_SETMASK, &all, nullptr);
    });
  }
}

TEST(EndingSignals, OnlyHupIntAndQuitStayIgnored) {
  for (const int signal : endingSignals()) {
    if (signal != SIGHUP && signal != SIGINT && signal != SIGQUIT) {
      expectCaught(signal, [signal] { std::signal(signal, SIG_IGN); });
    }
  }
}

TEST(EndingSignals, ATimerThatWasRunningAtTheStartIsStopped) {
  ualarm(20'000, 0);
  catchEndingSignals();
  EXPECT_EQ(poll(nullptr, 0, 100), 0);
}

TEST(EndingSignals, AnIgnoredHangUpInterruptOrQuitStaysIgnored) {
  for (const int signal : {SIGHUP, SIGINT, SIGQUIT}) {
    std::signal(signal, SIG_IGN);
    catchEndingSignals();
    std::raise(signal);
    EXPECT_EQ(endedBy(throwIfSignalled), 0);
  }
}

TEST(EndingSignalsDeathTest, TheEndComesWhateverBlocks) {
  const auto begin = steady_clock::now();
  EXPECT_EXIT(
      {
        catchEndingSignals();
        std::raise(SIGQUIT);
        while (true) {
          poll(nullptr, 0, -1);
        }
      },
      testing::KilledBySignal(SIGQUIT), "");
  EXPECT_GE(steady_clock::now() - begin, seconds(3));
}

TEST(EndingSignalsDeathTest, TheEndComesWhateverBlocksAtTheEnd) {
  EXPECT_EXIT(
      {
        catchEndingSignals();
        beginEnding(SIGTERM);
        while (true) {
          poll(nullptr, 0, -1);
        }
      },
      testing::KilledBySignal(SIGTERM), "");
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
