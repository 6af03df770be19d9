// The signals that end a program, and signals that are blocked for a while.

#pragma once

#include <algorithm>
#include <csignal>
#include <iterator>

namespace lineup {

/// The signals that do not end a program by default, or must be neither caught nor blocked: a fault
/// that is caught returns into itself. SIGXFSZ is ignored, so that a write fails.
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

/// Blocks `signals`, for its lifetime, in addition to those that are blocked already. One that
/// arrives meanwhile is pending, and delivered after.
class BlockedSignals {
 public:
  explicit BlockedSignals(const sigset_t& signals) {
    pthread_sigmask(SIG_BLOCK, &signals, &maskBefore_);
  }
  ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &maskBefore_, nullptr); }
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;

  /// The mask that was in force before.
  const sigset_t& maskBefore() const { return maskBefore_; }

 private:
  sigset_t maskBefore_;
};

/// Blocks, for its lifetime, the signals that end the program, unless they are ignored: what is
/// done meanwhile is done whole.
class BlockedEndingSignals {
 public:
  BlockedEndingSignals() : signals_(signalsNotIgnored()), blocked_(signals_) {}

  /// Whether one is pending that ends the program after the lifetime.
  bool isAnyPending() const {
    sigset_t pending;
    sigpending(&pending);
    bool isAny = false;
    forEachEndingSignal([&](int signal) {
      isAny = isAny || (sigismember(&pending, signal) == 1 && sigismember(&signals_, signal) == 1 &&
                        sigismember(&blocked_.maskBefore(), signal) == 0);
    });
    return isAny;
  }

 private:
  static sigset_t signalsNotIgnored() {
    sigset_t signals;
    sigemptyset(&signals);
    forEachEndingSignal([&](int signal) {
      struct sigaction action {};
      sigaction(signal, nullptr, &action);
      if (action.sa_handler != SIG_IGN) {
        sigaddset(&signals, signal);
      }
    });
    return signals;
  }

  const sigset_t signals_;
  const BlockedSignals blocked_;
};

}  // namespace lineup
