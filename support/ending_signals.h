// Signals that end the program: a dropped line, an interrupt, a request to terminate, an output
// that nobody reads any more. They are caught so that what is under way ends in order; the program
// then ends by the same signal.

#pragma once

#include <poll.h>

#include <chrono>
#include <csignal>
#include <span>

/// Thrown where the program may end because of a signal. Not a std::exception: nothing but main
/// catches it.
struct EndedBySignal {
  int signal;
};

/// Catches SIGHUP, SIGINT, SIGTERM and SIGPIPE from now on. One that the program was started to
/// ignore stays ignored.
///
/// A system call that is blocked when one is caught goes on, and so no output is cut short. If the
/// program has not ended a second later, every call that blocks it (a write to a pipe that nobody
/// reads) fails with EINTR from then on. Takes SIGALRM for this.
///
/// A write beyond the limit on the size of a file fails with EFBIG from now on, as on a full disk,
/// instead of ending the program by SIGXFSZ.
void catchEndingSignals();

/// Throws EndedBySignal if a signal has been caught. To be called where the program may end:
/// between two lines of a listing, after a command.
void endIfSignalled();

/// Throws EndedBySignal{SIGHUP} if `terminal` has hung up: its input has ended then, perhaps before
/// the signal says so, or without it where it is ignored.
void endIfHungUp(int terminal);

/// Forgets a SIGINT that has been caught, where it means something else than the program's end.
void forgetInterrupt();

/// Waits `duration`, or throws EndedBySignal as soon as a signal is caught.
void waitFor(std::chrono::microseconds duration);

/// Waits until one of `inputs` has something to read, ended or failed, as its `revents` then say,
/// or throws EndedBySignal as soon as a signal is caught. A negative descriptor is left out.
void waitForInput(std::span<pollfd> inputs);
void waitForInput(int descriptor);

/// Ends the program as `signal` does when nobody catches it.
[[noreturn]] void endBySignal(int signal);

/// Holds the signals back for its lifetime, so that no call in it is interrupted, however long it
/// takes. They arrive after.
class EndingSignalsHeld {
 public:
  EndingSignalsHeld();
  ~EndingSignalsHeld();
  EndingSignalsHeld(const EndingSignalsHeld&) = delete;
  EndingSignalsHeld& operator=(const EndingSignalsHeld&) = delete;

  /// The mask that was in force before.
  const sigset_t& maskBefore() const { return maskBefore_; }

 private:
  sigset_t maskBefore_;
};
