// Signals that end the program: a hang-up, an interrupt, a request to terminate, an output
// that nobody reads any more. They are caught so that what is under way ends in order; the program
// then ends by the same signal. Except for an interrupt, which can be forgotten, the end is certain
// from the first signal on, and comes within three seconds of it or of the end of a remote call,
// whatever blocks, except a system call that no signal interrupts:
//
//   state          begins with                       what blocks then                 ends after
//   running        the start                         continues                        -
//   signalled      the first signal, or              continues; most of it ends soon  1 second
//                  beginEnding()
//   overdue        1 second after that               fails with EINTR, again and      1 second
//                                                    again; output is dropped
//   remote call    the first signal during a         continues, up to its time-outs   `longest`, or
//                  RemoteCallUnderWay                                                 with the call
//                                                                                     (signalled)
//   interrupted    SIGINT during an                  fails with EINTR, then as        -
//                  InterruptibleCommand              overdue
//   forced         the time of overdue or remote     is left to the work that         1 second
//                  call has passed                   whenEndIsForced() was given,
//                                                    if any
//   ended          endBySignal(), or the end of forced; the process ends by the signal
//
// Where the program waits by the functions below, or asks, it sees a signal at once. Forgetting an
// interrupt leads back to running. From interrupted any other signal leads to signalled (to remote
// call during one), and so does a further SIGINT during a remote call or once overdue.

#pragma once

#include <poll.h>

#include <chrono>
#include <csignal>
#include <span>

namespace lineup {

/// Thrown where the program may end because of a signal. Not a std::exception: what handles errors
/// lets it pass.
struct EndedBySignal {
  int signal;
};

/// Catches, from now on, every signal that would end the program, except those that a fault in it
/// raises (SIGSEGV and the like), which end it at once, and SIGKILL. SIGHUP, SIGINT and SIGQUIT
/// stay ignored if the program was started to ignore them, as nohup and shells do; all other
/// signals that the program inherited as ignored or blocked are caught, too. Takes SIGALRM and the
/// timer of setitimer(ITIMER_REAL).
///
/// A write beyond the limit on the size of a file fails with EFBIG from now on, as on a full disk,
/// instead of ending the program by SIGXFSZ.
void catchEndingSignals();

/// Throws EndedBySignal if a signal has been caught. To be called where the program may end:
/// between two lines of a listing, after a command.
void throwIfSignalled();

/// Whether a signal has been caught.
bool isSignalled();

/// Whether the program should have ended by now: nothing is to be waited for any more.
bool isEndOverdue();

/// Throws EndedBySignal{SIGHUP} if `terminal` has hung up: its input has ended then, perhaps before
/// the signal says so, or without it where it is ignored.
void throwIfHungUp(int terminal);

/// Forgets a SIGINT that has been caught, where it means something else than the program's end.
void forgetInterrupt();

/// For its lifetime, SIGINT ends the command that runs and not the program: EndedBySignal is thrown
/// all the same, and what catches it asks isInterrupted() and calls forgetInterrupt().
class InterruptibleCommand {
 public:
  /// Without `interruptible` nothing changes. There is one at a time.
  explicit InterruptibleCommand(bool interruptible);
  ~InterruptibleCommand();
  InterruptibleCommand(const InterruptibleCommand&) = delete;
  InterruptibleCommand& operator=(const InterruptibleCommand&) = delete;

 private:
  const bool interruptible_;
};

/// Whether what was caught is a SIGINT that ends an InterruptibleCommand alone.
bool isInterrupted();

/// Throws EndedBySignal in that case only: to be called where a long output has no other end.
void throwIfInterrupted();

/// For its lifetime, SIGINT and SIGQUIT that the terminal's keys send are ignored, as they are
/// meant for another program that runs on it; those that a process sends are caught.
class TerminalSignalsIgnored {
 public:
  TerminalSignalsIgnored();
  ~TerminalSignalsIgnored();
  TerminalSignalsIgnored(const TerminalSignalsIgnored&) = delete;
  TerminalSignalsIgnored& operator=(const TerminalSignalsIgnored&) = delete;
};

/// Waits `duration`, or throws EndedBySignal as soon as a signal is caught.
void waitFor(std::chrono::microseconds duration);

/// Waits until one of `inputs` has something to read, ended or failed, as its `revents` then say,
/// or throws EndedBySignal as soon as a signal is caught. A negative descriptor is left out.
void waitForInput(std::span<pollfd> inputs);
void waitForInput(int descriptor);

/// The same for at most `timeout`; returns whether there is anything.
bool waitForInput(std::span<pollfd> inputs, std::chrono::milliseconds timeout);

/// Begins the end of the program by `signal`. The time that is left to it runs from the signal that
/// has been caught, or from now on if none was.
void beginEnding(int signal);

/// Sets what is called when the end of the program is forced because something blocks; null for
/// nothing. `work` runs in a child process, forked in a signal handler wherever the program was, so
/// it may fail. The program waits a second for it, and it has nine more after the program's end.
void whenEndIsForced(void (*work)());

/// Ends the program by `signal` with its default action.
[[noreturn]] void endBySignal(int signal);

/// For its lifetime, a call to the controller is under way, which a signal does not break off
/// within `longest` after it. Throws EndedBySignal if one was caught before.
class RemoteCallUnderWay {
 public:
  explicit RemoteCallUnderWay(std::chrono::seconds longest);
  ~RemoteCallUnderWay();
  RemoteCallUnderWay(const RemoteCallUnderWay&) = delete;
  RemoteCallUnderWay& operator=(const RemoteCallUnderWay&) = delete;
};

/// Ignores the signals from now on: for a child process that is to finish its work.
void ignoreEndingSignals();

}  // namespace lineup
