// Runs the built console, or another program, the way a person or a script does: on pipes or on a
// terminal, in one go or step by step.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace lineup::test {

/// The path of the console that was built along with the tests, or of the one that LINEUP_CONSOLE
/// names in the environment: a console for another processor, say, behind an emulator.
extern const std::string kConsoleProgram;

/// What to start, and how.
struct Start {
  std::string program = kConsoleProgram;  ///< a path, or a name to be found in PATH
  std::vector<std::string> arguments{};
  /// Environment variables to set, or with nothing to unset; the test's own hold for the rest,
  /// except that XDG_STATE_HOME is a folder of the program's own, which is removed with it.
  std::map<std::string, std::optional<std::string>> environment{};
  std::string folder{};   ///< the working folder; empty for the test's own
  bool terminal = false;  ///< a terminal in place of the three pipes
  unsigned short rows = 24;
  unsigned short columns = 80;
  /// The longest time to wait for any one thing; then the program is killed and the test fails.
  std::chrono::milliseconds timeout = std::chrono::seconds(60);
};

/// How a program ended and all that it wrote. A terminal has one stream, `out`, on which what was
/// typed is echoed and lines end with "\r\n".
struct Outcome {
  std::string out{};
  std::string err{};
  int status = -1;  ///< the exit status, -1 if a signal ended it
  int signal = 0;   ///< the signal that ended it, 0 if it exited
};

/// A running program. Every operation throws `std::runtime_error`, with all that was written, when
/// the program cannot be started or the time-out passes. Starting one makes this process ignore
/// SIGPIPE.
class ProgramProcess {
 public:
  explicit ProgramProcess(const Start& given);
  ~ProgramProcess();  ///< kills the program, and what it started in its process group, if still
                      ///< running
  ProgramProcess(const ProgramProcess&) = delete;
  ProgramProcess& operator=(const ProgramProcess&) = delete;

  /// Writes `text` to the program's standard input, or types it on the terminal. What a program
  /// that no longer reads leaves is dropped.
  void send(std::string_view text);

  /// Ends the standard input; on a terminal types Ctrl-D, which does so at the start of a line.
  void closeInput();

  /// Waits until `expected` appears on standard output after what earlier calls returned. Returns
  /// everything new up to and with it.
  std::string readUntil(std::string_view expected);

  /// Waits for something new on standard output and returns all of it.
  std::string readMore();

  /// The like of readUntil() on standard error.
  std::string readErrorsUntil(std::string_view expected);

  /// Reads what the program writes while `condition` holds, or until the program has closed its
  /// output.
  void readWhile(const std::function<bool()>& condition);

  /// Closes the end of standard output that is read here, as "head" does.
  void stopReading();

  /// Waits until the program sleeps in a system call other than ppoll(), with which the console
  /// waits for input.
  void waitUntilBlocked();

  /// Waits until `signal`, which was sent to it, is pending.
  void waitUntilPending(int signal);
  /// Waits until the program has taken `signal`, which was sent to it.
  void waitUntilTaken(int signal);

  /// Waits for the program to end without reading what it writes meanwhile.
  void waitForEnd();

  /// Gives the terminal a new size; the program gets SIGWINCH.
  void resize(unsigned short rows, unsigned short columns);

  /// Hangs the terminal up, as a line that drops does. No more can be read.
  void hangUp();

  /// Whether the terminal is in the console's mode for editing lines. Unlike the one that libedit
  /// tries at its start, it keeps carriage returns.
  bool editsLines() const;
  /// Waits until it is, or no longer is.
  void waitUntilLinesAreEdited(bool edited);

  /// Sends the signal to the program alone.
  void signal(int number) const;

  pid_t pid() const { return pid_; }

  /// Ends the input on pipes (on a terminal does not type anything), and waits for the program to
  /// end.
  Outcome finish();

 private:
  struct Stream {
    int file = -1;  ///< -1 once it has ended
    std::string text{};
    std::size_t taken = 0;  ///< how much of the text earlier reads returned
  };
  using Deadline = std::chrono::steady_clock::time_point;

  void startOnPipes(const Start& start);
  void startOnTerminal(const Start& start);
  std::string readUntil(Stream& stream, std::string_view expected);
  void pump(Deadline deadline, const std::string& awaited,
            std::chrono::milliseconds atMost = std::chrono::hours(1));
  void waitALittle(Deadline deadline, const std::string& awaited);
  void reap(Deadline deadline);
  [[noreturn]] void fail(const std::string& reason);

  const TemporaryFolder stateHome_;
  bool terminal_;
  std::chrono::milliseconds timeout_;
  pid_t pid_ = -1;
  bool ended_ = false;
  int waitStatus_ = 0;
  int input_ = -1;
  std::string pending_{};  ///< input that the program has not taken yet
  Stream out_{};
  Stream err_{};
};

/// Runs a program on all of `input` to its end. On a terminal the input is typed ahead.
Outcome run(const Start& start, std::string_view input = "");

/// `start` with root's program lacking powers that set root apart from other users: `capabilities`
/// is a list such as "-sys_admin" for setpriv(1).
Start withoutCapabilities(const std::string& capabilities, Start start);

/// `start` with a shell that runs `script` in place of the program.
Start inShell(const std::string& script, Start start = {});

/// How a test is named that is the same on a terminal and on pipes.
inline std::string nameOfStreams(bool terminal) {
  return terminal ? "OnATerminal" : "OnAPipe";
}

/// Runs the console on pipes to its end.
Outcome runConsole(const std::vector<std::string>& arguments, std::string_view input = "");

}  // namespace lineup::test
