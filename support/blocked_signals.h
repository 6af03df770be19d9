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

}  // namespace lineup
