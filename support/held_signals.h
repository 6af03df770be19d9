// Work that no signal cuts short.

#pragma once

#include <csignal>

#include "support/blocked_signals.h"

namespace lineup {

/// Holds back, for its lifetime, the signals that people and systems end programs with. They arrive
/// after.
class HeldSignals {
 public:
  HeldSignals() : blocked_(signalsNotIgnored()) {}

  /// Whether one has arrived.
  static bool hasArrived() {
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

  /// One that is ignored ends nothing.
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
