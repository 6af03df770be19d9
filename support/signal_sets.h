// Sets of signals, those that end a program among them, and changes of the signal mask for a while.

#pragma once

#include <algorithm>
#include <csignal>
#include <ctime>
#include <initializer_list>
#include <iterator>

namespace lineup {

inline sigset_t signalSet(std::initializer_list<int> signals) {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : signals) {
    sigaddset(&set, signal);
  }
  return set;
}

inline sigset_t pendingSignals() {
  sigset_t pending;
  sigpending(&pending);
  return pending;
}

/// Whether `signal`, which is blocked, is pending.
inline bool isPending(int signal) {
  const sigset_t pending = pendingSignals();
  return sigismember(&pending, signal) == 1;
}

/// Accepts `signal`, which is blocked, if it is pending; returns whether it was.
inline bool acceptPending(int signal) {
  const sigset_t one = signalSet({signal});
  const timespec atOnce{};
  return sigtimedwait(&one, nullptr, &atOnce) == signal;
}

inline bool isIgnored(int signal) {
  struct sigaction action {};
  sigaction(signal, nullptr, &action);
  return action.sa_handler == SIG_IGN;
}

/// The signals that concern the terminal and not the program's end. They are blocked while a line
/// is edited, so that none is acted on within the editing library.
inline sigset_t terminalSignals() {
  return signalSet({SIGWINCH, SIGTSTP, SIGCONT});
}

/// The signals that do not end a program by default, that cannot be caught (SIGKILL, SIGSTOP), or
/// that report a fault in the program, which would recur when a handler returns. SIGXFSZ is
/// ignored, so that a write fails.
inline constexpr int kNotEndingSignals[] = {SIGKILL, SIGSTOP, SIGCHLD,  SIGCONT, SIGTSTP, SIGTTIN,
                                            SIGTTOU, SIGURG,  SIGWINCH, SIGSEGV, SIGBUS,  SIGILL,
                                            SIGFPE,  SIGTRAP, SIGABRT,  SIGSYS,  SIGXFSZ};

/// Calls `work` for each signal that ends the program, the real-time signals as well.
template <class Work>
void forEachEndingSignal(Work work) {
  for (int signal = 1; signal <= SIGRTMAX; ++signal) {
    const bool isOfTheLibrary = signal > SIGSYS && signal < SIGRTMIN;
    const auto* const end = std::end(kNotEndingSignals);
    if (!isOfTheLibrary && std::find(std::begin(kNotEndingSignals), end, signal) == end) {
      work(signal);
    }
  }
}

/// Changes the signal mask for its lifetime. A signal that is blocked is pending until it is
/// unblocked, and delivered then.
class SignalMask {
 public:
  /// `how` is SIG_BLOCK, SIG_UNBLOCK or SIG_SETMASK, as for pthread_sigmask().
  SignalMask(int how, const sigset_t& signals) { pthread_sigmask(how, &signals, &before_); }
  ~SignalMask() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalMask(const SignalMask&) = delete;
  SignalMask& operator=(const SignalMask&) = delete;

  /// The mask that was in force before.
  const sigset_t& before() const { return before_; }

 private:
  sigset_t before_;
};

/// Blocks, for its lifetime, the signals that end the program, unless they are ignored: what is
/// done meanwhile is done whole.
class BlockedEndingSignals {
 public:
  BlockedEndingSignals() : signals_(signalsNotIgnored()), mask_(SIG_BLOCK, signals_) {}

  /// Whether one is pending that ends the program after the lifetime.
  bool isAnyPending() const {
    const sigset_t pending = pendingSignals();
    bool isAny = false;
    forEachEndingSignal([&](int signal) {
      isAny = isAny || (sigismember(&pending, signal) == 1 && sigismember(&signals_, signal) == 1 &&
                        sigismember(&mask_.before(), signal) == 0);
    });
    return isAny;
  }

 private:
  static sigset_t signalsNotIgnored() {
    sigset_t signals = signalSet({});
    forEachEndingSignal([&](int signal) {
      if (!isIgnored(signal)) {
        sigaddset(&signals, signal);
      }
    });
    return signals;
  }

  const sigset_t signals_;
  const SignalMask mask_;
};

}  // namespace lineup
