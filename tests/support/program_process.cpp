#include "tests/support/program_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <utility>

#include "tests/support/pipe.h"

namespace lineup::test {

namespace {

const char* consoleProgram() {
  const char* const other = std::getenv("LINEUP_CONSOLE");
  return other == nullptr ? BUILT_CONSOLE : other;
}

int check(int result, const char* what) {
  if (result < 0) {
    throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
  }
  return result;
}

std::vector<std::string> environmentOf(const Start& start) {
  std::vector<std::string> result;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    if (!start.environment.contains(text.substr(0, text.find('=')))) {
      result.push_back(text);
    }
  }
  for (const auto& [name, value] : start.environment) {
    if (value) {
      result.push_back(name + "=" + *value);
    }
  }
  return result;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> result;
  result.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    result.push_back(text.data());
  }
  result.push_back(nullptr);
  return result;
}

/// Where the program's three standard streams come from.
class FileActions {
 public:
  FileActions() { posix_spawn_file_actions_init(&actions_); }
  ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;

  void duplicate(int file, int as) { posix_spawn_file_actions_adddup2(&actions_, file, as); }
  void open(int file, const char* path) {
    posix_spawn_file_actions_addopen(&actions_, file, path, O_RDWR, 0);
  }
  void changeFolder(const std::string& folder) {
    posix_spawn_file_actions_addchdir_np(&actions_, folder.c_str());
  }
  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_{};
};

/// Starts the program with all signals as a shell would leave them, in a process group of its own
/// or, with `sessionFlag`, in a session of its own.
pid_t spawn(const Start& start, FileActions& files, short sessionFlag) {
  if (!start.folder.empty()) {
    files.changeFolder(start.folder);
  }
  posix_spawnattr_t attributes{};
  posix_spawnattr_init(&attributes);
  sigset_t signals;
  sigfillset(&signals);
  posix_spawnattr_setsigdefault(&attributes, &signals);
  sigemptyset(&signals);
  posix_spawnattr_setsigmask(&attributes, &signals);
  posix_spawnattr_setflags(&attributes, static_cast<short>(POSIX_SPAWN_SETSIGDEF |
                                                           POSIX_SPAWN_SETSIGMASK | sessionFlag));

  std::vector<std::string> words = start.arguments;
  words.insert(words.begin(), start.program);
  std::vector<std::string> environment = environmentOf(start);
  pid_t pid = -1;
  const int error = posix_spawnp(&pid, start.program.c_str(), files.get(), &attributes,
                                 pointersTo(words).data(), pointersTo(environment).data());
  posix_spawnattr_destroy(&attributes);
  if (error != 0) {
    throw std::runtime_error(start.program + ": " + std::strerror(error));
  }
  return pid;
}

void setSize(int terminal, unsigned short rows, unsigned short columns) {
  const winsize size{rows, columns, 0, 0};
  check(ioctl(terminal, TIOCSWINSZ, &size), "set the terminal's size");
}

void setNonblocking(int file) {
  check(fcntl(file, F_SETFL, fcntl(file, F_GETFL) | O_NONBLOCK), "fcntl");
}

bool isBlocked(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/syscall");
  long systemCall = -1;
  return file >> systemCall && systemCall >= 0 && systemCall != SYS_ppoll;  // or else "running"
}

/// The signals sent to a process that it has not taken yet, as bits from that of signal 1.
uint64_t pendingSignals(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/status");
  std::string word;
  uint64_t pending = 0;
  while (file >> word) {
    if (word == "ShdPnd:") {
      file >> std::hex >> pending;
    }
  }
  return pending;
}

}  // namespace

const std::string kConsoleProgram = consoleProgram();

ProgramProcess::ProgramProcess(const Start& given)
    : terminal_(given.terminal), timeout_(given.timeout) {
  std::signal(SIGPIPE, SIG_IGN);
  Start start = given;
  start.environment.insert({"XDG_STATE_HOME", stateHome_.path()});
  if (start.terminal) {
    startOnTerminal(start);
  } else {
    startOnPipes(start);
  }
}

void ProgramProcess::startOnPipes(const Start& start) {
  Pipe input;
  Pipe output;
  Pipe errors;
  FileActions files;
  files.duplicate(input.readEnd, STDIN_FILENO);
  files.duplicate(output.writeEnd, STDOUT_FILENO);
  files.duplicate(errors.writeEnd, STDERR_FILENO);
  pid_ = spawn(start, files, POSIX_SPAWN_SETPGROUP);
  input_ = std::exchange(input.writeEnd, -1);
  out_.file = std::exchange(output.readEnd, -1);
  err_.file = std::exchange(errors.readEnd, -1);
  setNonblocking(input_);
}

void ProgramProcess::startOnTerminal(const Start& start) {
  int terminal = check(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC), "open a terminal");
  std::array<char, 100> name{};
  grantpt(terminal);
  unlockpt(terminal);
  ptsname_r(terminal, name.data(), name.size());
  setSize(terminal, start.rows, start.columns);
  // Held until the program has it open too: without anybody there the terminal would hang up.
  int otherEnd = open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  FileActions files;
  files.open(STDIN_FILENO, name.data());
  files.duplicate(STDIN_FILENO, STDOUT_FILENO);
  files.duplicate(STDIN_FILENO, STDERR_FILENO);
  try {
    pid_ = spawn(start, files, POSIX_SPAWN_SETSID);
  } catch (...) {
    closeFile(otherEnd);
    closeFile(terminal);
    throw;
  }
  closeFile(otherEnd);
  setNonblocking(terminal);
  out_.file = terminal;
  input_ = check(fcntl(terminal, F_DUPFD_CLOEXEC, 0), "duplicate the terminal");
}

ProgramProcess::~ProgramProcess() {
  if (!ended_ && pid_ > 0) {
    kill(-pid_, SIGKILL);
    kill(pid_, SIGKILL);
    while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
  closeFile(input_);
  closeFile(out_.file);
  closeFile(err_.file);
}

void ProgramProcess::fail(const std::string& reason) {
  throw std::runtime_error(reason + "\nstandard output: \"" + out_.text + "\"\nstandard error: \"" +
                           err_.text + "\"");
}

/// Waits until the program takes input or writes something, and passes it on.
void ProgramProcess::pump(Deadline deadline, const std::string& awaited,
                          std::chrono::milliseconds atMost) {
  std::array<pollfd, 3> files{{{pending_.empty() ? -1 : input_, POLLOUT, 0},
                               {out_.file, POLLIN, 0},
                               {err_.file, POLLIN, 0}}};
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
      deadline - std::chrono::steady_clock::now());
  if (left.count() <= 0) {
    fail("timed out waiting for " + awaited);
  }
  const int timeout = static_cast<int>(std::min(left, atMost).count());
  if (poll(files.data(), files.size(), timeout) < 0 && errno != EINTR) {
    fail(std::string("poll: ") + std::strerror(errno));
  }
  if (files[0].revents != 0) {
    const ssize_t length = write(input_, pending_.data(), pending_.size());
    if (length >= 0) {
      pending_.erase(0, static_cast<std::size_t>(length));
    } else if (errno != EAGAIN && errno != EINTR) {
      pending_.clear();
    }
  }
  for (const std::size_t index : {std::size_t{1}, std::size_t{2}}) {
    if (files[index].revents != 0) {
      Stream& stream = index == 1 ? out_ : err_;
      std::array<char, 65536> buffer{};
      const ssize_t length = read(stream.file, buffer.data(), buffer.size());
      if (length > 0) {
        stream.text.append(buffer.data(), static_cast<std::size_t>(length));
      } else if (length == 0 || (errno != EAGAIN && errno != EINTR)) {
        closeFile(stream.file);
      }
    }
  }
}

void ProgramProcess::send(std::string_view text) {
  const Deadline deadline = std::chrono::steady_clock::now() + timeout_;
  if (input_ < 0) {
    fail("the input has ended");
  }
  pending_ += text;
  while (!pending_.empty()) {
    pump(deadline, "the input to be read");
  }
}

void ProgramProcess::closeInput() {
  if (terminal_) {
    send("\x04");
  } else {
    closeFile(input_);
  }
}

std::string ProgramProcess::readUntil(std::string_view expected) {
  return readUntil(out_, expected);
}

std::string ProgramProcess::readMore() {
  const Deadline deadline = std::chrono::steady_clock::now() + timeout_;
  while (out_.taken == out_.text.size()) {
    if (out_.file < 0) {
      fail("ended before more output");
    }
    pump(deadline, "more output");
  }
  const std::size_t start = out_.taken;
  out_.taken = out_.text.size();
  return out_.text.substr(start);
}

std::string ProgramProcess::readErrorsUntil(std::string_view expected) {
  return readUntil(err_, expected);
}

std::string ProgramProcess::readUntil(Stream& stream, std::string_view expected) {
  const Deadline deadline = std::chrono::steady_clock::now() + timeout_;
  const std::string awaited = "\"" + std::string(expected) + "\"";
  std::size_t found = 0;
  while ((found = stream.text.find(expected, stream.taken)) == std::string::npos) {
    if (stream.file < 0) {
      fail("ended before " + awaited);
    }
    pump(deadline, awaited);
  }
  const std::size_t start = stream.taken;
  stream.taken = found + expected.size();
  return stream.text.substr(start, stream.taken - start);
}

void ProgramProcess::readWhile(const std::function<bool()>& condition) {
  const Deadline deadline = std::chrono::steady_clock::now() + timeout_;
  while (out_.file >= 0 && condition()) {
    pump(deadline, "a condition", std::chrono::milliseconds(2));
  }
}

void ProgramProcess::stopReading() {
  closeFile(out_.file);
}

void ProgramProcess::waitUntilBlocked() {
  const Deadline deadline = std::chrono::steady_clock::now() + timeout_;
  while (!isBlocked(pid_)) {
    waitALittle(deadline, "the program to block");
  }
}

void ProgramProcess::waitUntilPending(int signal) {
  const Deadline deadline = std::chrono::steady_clock::now() + timeout_;
  while (((pendingSignals(pid_) >> (signal - 1)) & 1) == 0) {
    waitALittle(deadline, "the signal to be pending");
  }
}

void ProgramProcess::waitUntilTaken(int signal) {
  const Deadline deadline = std::chrono::steady_clock::now() + timeout_;
  while (((pendingSignals(pid_) >> (signal - 1)) & 1) != 0) {
    waitALittle(deadline, "the signal to be taken");
  }
}

void ProgramProcess::waitForEnd() {
  reap(std::chrono::steady_clock::now() + timeout_);
}

void ProgramProcess::resize(unsigned short rows, unsigned short columns) {
  setSize(out_.file, rows, columns);
}

void ProgramProcess::hangUp() {
  closeFile(input_);
  closeFile(out_.file);
}

bool ProgramProcess::editsLines() const {
  termios mode{};
  check(tcgetattr(out_.file, &mode), "read the terminal's mode");
  return (mode.c_iflag & ICRNL) == 0;
}

void ProgramProcess::waitUntilLinesAreEdited(bool edited) {
  const Deadline deadline = std::chrono::steady_clock::now() + timeout_;
  while (editsLines() != edited) {
    waitALittle(deadline, "a change of the terminal's mode");
  }
}

void ProgramProcess::signal(int number) const {
  kill(pid_, number);
}

void ProgramProcess::waitALittle(Deadline deadline, const std::string& awaited) {
  if (std::chrono::steady_clock::now() > deadline) {
    fail("timed out waiting for " + awaited);
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void ProgramProcess::reap(Deadline deadline) {
  while (!ended_ && waitpid(pid_, &waitStatus_, WNOHANG) != pid_) {
    waitALittle(deadline, "the end");
  }
  ended_ = true;
}

Outcome ProgramProcess::finish() {
  const Deadline deadline = std::chrono::steady_clock::now() + timeout_;
  if (!terminal_) {
    closeFile(input_);
  }
  while (out_.file >= 0 || err_.file >= 0) {
    pump(deadline, "the end");
  }
  reap(deadline);
  Outcome outcome{out_.text, err_.text};
  if (WIFEXITED(waitStatus_)) {
    outcome.status = WEXITSTATUS(waitStatus_);
  } else {
    outcome.signal = WTERMSIG(waitStatus_);
  }
  return outcome;
}

Outcome run(const Start& start, std::string_view input) {
  ProgramProcess process(start);
  process.send(input);
  return process.finish();
}

Start withoutCapabilities(const std::string& capabilities, Start start) {
  if (geteuid() == 0) {
    start.arguments.insert(start.arguments.begin(),
                           {"--bounding-set", capabilities, start.program});
    start.program = "setpriv";
  }
  return start;
}

Start inShell(const std::string& script, Start start) {
  start.program = "/bin/sh";
  start.arguments = {"-c", script};
  return start;
}

Outcome runConsole(const std::vector<std::string>& arguments, std::string_view input) {
  return run({.arguments = arguments}, input);
}

}  // namespace lineup::test
