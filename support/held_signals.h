// Work that no signal cuts short.

#pragma once

#include <csignal>

namespace lineup {

/// Holds back, for its lifetime, the signals that people and systems end programs with. They arrive
/// after.
class HeldSignals {
 public:
  HeldSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : kSignals) {
      struct sigaction action {};
      sigaction(signal, nullptr, &action);
      if (action.sa_handler != SIG_IGN) {  // one that is ignored ends nothing
        sigaddset(&signals, signal);
      }
    }
    pthread_sigmask(SIG_BLOCK, &signals, &before_);
  }
  ~HeldSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;

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

  sigset_t before_;
};

}  // namespace lineup
