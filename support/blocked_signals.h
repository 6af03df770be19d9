// Signals that are blocked for a while.

#pragma once

#include <csignal>

namespace lineup {

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

/// Blocks, for its lifetime, the signals by which people and systems end programs, unless they are
/// ignored: what is done meanwhile is done whole.
class BlockedEndingSignals {
 public:
  BlockedEndingSignals() : blocked_(signalsNotIgnored()) {}

  /// Whether one is pending.
  static bool isAnyPending() {
    sigset_t pending;
    sigpending(&pending);
    for (const int signal : kSignals) {
      if (sigismember(&pending, signal) == 1) {
        return true;
      }
    }
    return false;
  }

 private:
  static constexpr int kSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE};

  static sigset_t signalsNotIgnored() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : kSignals) {
      struct sigaction action {};
      sigaction(signal, nullptr, &action);
      if (action.sa_handler != SIG_IGN) {
        sigaddset(&signals, signal);
      }
    }
    return signals;
  }

  const BlockedSignals blocked_;
};

}  // namespace lineup
