#include "support/ending_signals.h"

#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>

#include "support/signal_sets.h"

namespace lineup {

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;

/// The signals that nohup and shells leave ignored for a program in the background.
constexpr int kMayStayIgnored[] = {SIGHUP, SIGINT, SIGQUIT};

constexpr microseconds kUntilOverdue = seconds(1);
constexpr microseconds kBetweenInterrupts = milliseconds(50);
constexpr seconds kUntilForced{2};
constexpr seconds kForForcedWork{1};
constexpr seconds kForForcedWorkInAll{10};

bool isOneOf(std::span<const int> signals, int signal) {
  return std::find(signals.begin(), signals.end(), signal) != signals.end();
}

sigset_t endingSignals() {
  sigset_t signals = signalSet({});
  forEachEndingSignal([&](int signal) { sigaddset(&signals, signal); });
  return signals;
}

// The handlers and what they share. They do not interrupt each other; elsewhere single flags are
// set as they are, and the signals are blocked around all other changes.

// The first signal caught, except that an interrupt, which may be forgotten, gives way to the
// others; 0 for none.
volatile std::sig_atomic_t caughtSignal = 0;
volatile std::sig_atomic_t overdue = 0;
volatile std::sig_atomic_t remoteCall = 0;   // the longest time in seconds of one under way, or 0
volatile std::sig_atomic_t commandRuns = 0;  // an InterruptibleCommand
volatile std::sig_atomic_t interrupted = 0;  // whether what was caught ends it alone
volatile std::sig_atomic_t terminalIgnored = 0;  // a TerminalSignalsIgnored
timespec force{};                                // when the end is forced, once a signal is caught

timespec now() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time;
}

timeval asTimeval(microseconds duration) {
  const auto whole = std::chrono::duration_cast<seconds>(duration);
  return {static_cast<time_t>(whole.count()), static_cast<suseconds_t>((duration - whole).count())};
}

/// Starts the timer, whose handler is called after `first` and then again and again: some callers
/// try again what was interrupted, and an interrupt may come just before the call that blocks.
void startTimer(microseconds first, seconds untilForced) {
  force = now();
  force.tv_sec += static_cast<time_t>(untilForced.count());
  const itimerval timer{asTimeval(kBetweenInterrupts), asTimeval(first)};
  setitimer(ITIMER_REAL, &timer, nullptr);
}

void stopTimer() {
  const itimerval none{};
  setitimer(ITIMER_REAL, &none, nullptr);
}

void startTimer() {
  if (remoteCall != 0) {
    startTimer(seconds(remoteCall), seconds(remoteCall));
  } else {
    startTimer(kUntilOverdue, kUntilForced);
  }
}

/// Whether `signal` is one more SIGINT while the command it interrupts is ending: an impatient one.
bool isRepeated(int signal) {
  return signal == SIGINT && interrupted != 0 && remoteCall == 0 && overdue == 0;
}

/// Whether a key of the terminal sent the signal, and no process, while the keys are for another
/// program.
bool isKeyOfAnother(int signal, const siginfo_t& info) {
  const bool hasKey = signal == SIGINT || signal == SIGQUIT;
  return terminalIgnored != 0 && hasKey && info.si_code == SI_KERNEL;
}

void catchSignal(int signal, siginfo_t* info, void* /*context*/) {
  const int error = errno;
  if (!isRepeated(signal) && !isKeyOfAnother(signal, *info)) {
    const bool isFirst = caughtSignal == 0;
    if (isFirst || interrupted != 0) {
      startTimer();
    }
    if (isFirst || caughtSignal == SIGINT) {
      caughtSignal = signal;
    }
    interrupted = isFirst && signal == SIGINT ? commandRuns : 0;
  }
  errno = error;
}

void unblock(int signal) {
  const sigset_t one = signalSet({signal});
  pthread_sigmask(SIG_UNBLOCK, &one, nullptr);
}

void (*forcedWork)() = nullptr;

/// In a handler: what the child does with memory may fail, as the handler may have come in the
/// middle of an allocation.
void forceTheEnd() {
  const pid_t child = forcedWork == nullptr ? -1 : _Fork();
  if (child == 0) {
    std::signal(SIGALRM, SIG_DFL);
    unblock(SIGALRM);
    alarm(static_cast<unsigned>(kForForcedWorkInAll.count()));
    forcedWork();
    _exit(EXIT_SUCCESS);
  }
  constexpr timespec kStep{0, 10'000'000};
  constexpr auto kSteps = kForForcedWork / milliseconds(10);
  for (int step = 0; child > 0 && step < kSteps && waitpid(child, nullptr, WNOHANG) == 0; ++step) {
    nanosleep(&kStep, nullptr);
  }
  endBySignal(caughtSignal);
}

void onTimer() {
  const int error = errno;
  if (caughtSignal != 0) {
    overdue = 1;
    const timespec time = now();
    const bool isOver = time.tv_sec > force.tv_sec ||
                        (time.tv_sec == force.tv_sec && time.tv_nsec >= force.tv_nsec);
    if (isOver && interrupted == 0) {
      forceTheEnd();
    }
  }
  errno = error;
}

/// SIGALRM: from the timer, or from another process, as any other signal.
void catchAlarm(int signal, siginfo_t* info, void* context) {
  if (info->si_code <= 0) {
    catchSignal(signal, info, context);
  } else {
    onTimer();
  }
}

void catchWith(int signal) {
  struct sigaction action {};
  action.sa_mask = endingSignals();
  if (signal == SIGALRM) {
    action.sa_sigaction = catchAlarm;
    action.sa_flags = SA_SIGINFO;  // what blocks is interrupted
  } else {
    action.sa_sigaction = catchSignal;
    action.sa_flags = SA_SIGINFO | SA_RESTART;  // output is not cut short; waits end all the same
  }
  sigaction(signal, &action, nullptr);
}

/// Whether SIGINT, if it is caught, interrupts what blocks.
void letInterruptsThrough(bool through) {
  struct sigaction action {};
  sigaction(SIGINT, nullptr, &action);
  if (action.sa_sigaction == catchSignal) {
    action.sa_flags = SA_SIGINFO | (through ? 0 : SA_RESTART);
    sigaction(SIGINT, &action, nullptr);
  }
}

timespec asTimespec(std::chrono::nanoseconds duration) {
  const auto whole = std::chrono::duration_cast<seconds>(duration);
  return {static_cast<time_t>(whole.count()), static_cast<long>((duration - whole).count())};
}

/// Waits with the signals let through only while it waits, so that one that is caught just before
/// is seen at once and not after the wait. Returns ppoll's result.
int pollFor(pollfd* descriptors, nfds_t count, const timespec* timeout) {
  int result = 0;
  {
    const SignalMask blocked(SIG_BLOCK, endingSignals());
    throwIfSignalled();
    result = ppoll(descriptors, count, timeout, &blocked.before());
  }
  throwIfSignalled();  // also for one that came together with input, and stayed pending
  return result;
}

}  // namespace

void catchEndingSignals() {
  stopTimer();  // one of alarm(2) outlives exec
  forEachEndingSignal([](int signal) {
    if (!isOneOf(kMayStayIgnored, signal) || !isIgnored(signal)) {
      catchWith(signal);
    }
  });
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGCHLD, SIG_DFL);
  const sigset_t none = signalSet({});
  pthread_sigmask(SIG_SETMASK, &none, nullptr);
}

void throwIfSignalled() {
  if (caughtSignal != 0) {
    throw EndedBySignal{caughtSignal};
  }
}

bool isSignalled() {
  return caughtSignal != 0;
}

bool isEndOverdue() {
  return overdue != 0;
}

void throwIfHungUp(int terminal) {
  pollfd input{terminal, POLLIN, 0};
  if (poll(&input, 1, 0) == 1 && (input.revents & POLLHUP) != 0) {
    throw EndedBySignal{SIGHUP};
  }
}

void forgetInterrupt() {
  const SignalMask blocked(SIG_BLOCK, endingSignals());
  if (caughtSignal == SIGINT) {
    caughtSignal = 0;
    overdue = 0;
    interrupted = 0;
    stopTimer();
  }
}

InterruptibleCommand::InterruptibleCommand(bool interruptible) : interruptible_(interruptible) {
  if (interruptible_) {
    letInterruptsThrough(true);
    commandRuns = 1;
  }
}

InterruptibleCommand::~InterruptibleCommand() {
  if (interruptible_) {
    commandRuns = 0;
    letInterruptsThrough(false);
  }
}

bool isInterrupted() {
  return interrupted != 0;
}

void throwIfInterrupted() {
  if (interrupted != 0) {
    throwIfSignalled();
  }
}

TerminalSignalsIgnored::TerminalSignalsIgnored() {
  terminalIgnored = 1;
}

TerminalSignalsIgnored::~TerminalSignalsIgnored() {
  terminalIgnored = 0;
}

void waitFor(microseconds duration) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point until = Clock::now() + duration;
  while (true) {
    const auto left = std::chrono::ceil<std::chrono::nanoseconds>(until - Clock::now());
    if (left.count() <= 0) {
      return;
    }
    const timespec timeout = asTimespec(left);
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

bool waitForInput(std::span<pollfd> inputs, milliseconds timeout) {
  const timespec time = asTimespec(timeout);
  int ready = -1;
  do {
    ready = pollFor(inputs.data(), inputs.size(), &time);
  } while (ready < 0 && errno == EINTR);
  return ready != 0;
}

void beginEnding(int signal) {
  const SignalMask blocked(SIG_BLOCK, endingSignals());
  if (caughtSignal == 0 || interrupted != 0) {
    startTimer();
  }
  interrupted = 0;
  caughtSignal = signal;
}

void whenEndIsForced(void (*work)()) {
  forcedWork = work;
}

void endBySignal(int signal) {
  std::signal(signal, SIG_DFL);
  unblock(signal);
  std::raise(signal);
  // COVERAGE_EXCL_START: only the first process of a container survives its own signal
  constexpr int kStatusOfSignals = 128;
  _exit(kStatusOfSignals + signal);
  // COVERAGE_EXCL_STOP
}

RemoteCallUnderWay::RemoteCallUnderWay(seconds longest) {
  const SignalMask blocked(SIG_BLOCK, endingSignals());
  throwIfSignalled();
  remoteCall = static_cast<std::sig_atomic_t>(longest.count());
}

RemoteCallUnderWay::~RemoteCallUnderWay() {
  const SignalMask blocked(SIG_BLOCK, endingSignals());
  remoteCall = 0;
  if (caughtSignal != 0) {
    startTimer();
  }
}

void ignoreEndingSignals() {
  forEachEndingSignal([](int signal) { std::signal(signal, SIG_IGN); });
}

}  // namespace lineup
