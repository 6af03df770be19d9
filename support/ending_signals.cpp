#include "support/ending_signals.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>

namespace {

constexpr int kEndingSignals[] = {SIGHUP, SIGINT, SIGTERM, SIGPIPE};

// The first one caught, except that an interrupt, which may be forgotten, gives way to the others;
// 0 for none.
volatile std::sig_atomic_t caughtSignal = 0;

// Sends SIGALRM, whose handler does nothing: but the call that is blocked meanwhile fails with
// EINTR. Again and again, because some callers try again, and because one may come just before the
// call. Without a timer, which the system may refuse, such a call lasts as long as it lasts.
timer_t interrupter;
constexpr itimerspec kInterrupt = {.it_interval = {0, 50'000'000}, .it_value = {1, 0}};
constexpr itimerspec kDoNotInterrupt = {};

void catchSignal(int signal) {
  if (caughtSignal == 0 || caughtSignal == SIGINT) {
    caughtSignal = signal;
  }
  timer_settime(interrupter, 0, &kInterrupt, nullptr);
}

void handle(int signal, void (*handler)(int), int flags) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = flags;
  sigaction(signal, &action, nullptr);
}

/// Waits with the signals let through only while it waits, so that one that is caught just before
/// is seen at once and not after the wait. Returns ppoll's result.
int pollFor(pollfd* descriptors, nfds_t count, const timespec* timeout) {
  const EndingSignalsHeld held;
  endIfSignalled();
  const int result = ppoll(descriptors, count, timeout, &held.maskBefore());
  endIfSignalled();
  return result;
}

}  // namespace

void catchEndingSignals() {
  timer_create(CLOCK_MONOTONIC, nullptr, &interrupter);
  handle(
      SIGALRM, [](int) {}, 0);
  std::signal(SIGXFSZ, SIG_IGN);
  for (const int signal : kEndingSignals) {
    struct sigaction before {};
    sigaction(signal, nullptr, &before);
    if (before.sa_handler != SIG_IGN) {
      handle(signal, catchSignal, SA_RESTART);  // output is not cut short; waits end all the same
    }
  }
}

void endIfSignalled() {
  if (caughtSignal != 0) {
    throw EndedBySignal{caughtSignal};
  }
}

void endIfHungUp(int terminal) {
  pollfd input{terminal, POLLIN, 0};
  if (poll(&input, 1, 0) == 1 && (input.revents & POLLHUP) != 0) {
    throw EndedBySignal{SIGHUP};
  }
}

void forgetInterrupt() {
  const EndingSignalsHeld held;
  if (caughtSignal == SIGINT) {
    caughtSignal = 0;
    timer_settime(interrupter, 0, &kDoNotInterrupt, nullptr);
  }
}

void waitFor(std::chrono::microseconds duration) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end = Clock::now() + duration;
  while (true) {
    const auto left = std::chrono::ceil<std::chrono::nanoseconds>(end - Clock::now());
    if (left.count() <= 0) {
      return;
    }
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    const timespec timeout{static_cast<time_t>(seconds.count()),
                           static_cast<long>((left - seconds).count())};
    pollFor(nullptr, 0, &timeout);
  }
}

void waitForInput(std::span<pollfd> inputs) {
  while (pollFor(inputs.data(), inputs.size(), nullptr) < 0 && errno == EINTR) {
  }
}

void waitForInput(int descriptor) {
  pollfd input{descriptor, POLLIN, 0};
  waitForInput({&input, 1});
}

void endBySignal(int signal) {
  std::signal(signal, SIG_DFL);
  std::raise(signal);
  std::abort();  // GCOVR_EXCL_LINE: only the first process of a container survives its own signal
}

EndingSignalsHeld::EndingSignalsHeld() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : kEndingSignals) {
    sigaddset(&signals, signal);
  }
  sigaddset(&signals, SIGALRM);
  pthread_sigmask(SIG_BLOCK, &signals, &maskBefore_);
}

EndingSignalsHeld::~EndingSignalsHeld() {
  pthread_sigmask(SIG_SETMASK, &maskBefore_, nullptr);
}
