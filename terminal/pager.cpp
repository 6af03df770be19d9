#include "terminal/pager.h"

#include <poll.h>
#include <sys/mman.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include "support/descriptor.h"
#include "support/ending_signals.h"
#include "support/signal_sets.h"

namespace lineup {

namespace {

// Neither may start other programs: the console may be all that its user is let into.
constexpr char kUsualPager[] =
    "export LESSSECURE=1 SHELL=/bin/false VISUAL=/bin/false EDITOR=/bin/false;"
    "command -v less >/dev/null 2>&1 && exec less -FRX; exec more";

/// The shell's statuses for a command that it cannot run.
constexpr int kCannotExecute = 126;
constexpr int kNotFound = 127;

/// What the shell is to run.
const char* pagerCommand() {
  const char* const wanted = std::getenv("PAGER");
  return wanted == nullptr || *wanted == '\0' ? kUsualPager : wanted;
}

/// Whether Ctrl-Z stops `command`, too. The usual pager ignores it, as it may start no other
/// program, and would read on beside the shell.
bool canBeStopped(const char* command) {
  return command != kUsualPager;
}

/// A file in memory that holds `text`, to be read from its beginning: unlike a pipe it waits for no
/// reader, and may be read in part.
Descriptor fileWith(std::string_view text) {
  Descriptor file(memfd_create("text", MFD_CLOEXEC));
  if (!writeAll(file.number(), text)) {
    return {};
  }
  lseek(file.number(), 0, SEEK_SET);
  return file;
}

/// The signals that are waited for while `command` runs. All others do what they do.
sigset_t awaitedWhile(const char* command) {
  return canBeStopped(command) ? signalSet({SIGCHLD}) : signalSet({SIGCHLD, SIGTSTP});
}

[[noreturn]] void runPager(const char* command, int text) {
  std::signal(SIGINT, SIG_DFL);
  std::signal(SIGQUIT, SIG_DFL);
  const sigset_t none = signalSet({});
  pthread_sigmask(SIG_SETMASK, &none, nullptr);
  dup2(text, STDIN_FILENO);
  execl("/bin/sh", "sh", "-c", command, nullptr);
  _exit(kNotFound);
}

/// Takes SIGCHLD if it is pending or comes within `time`; returns whether it did.
bool childChangesWithin(std::chrono::seconds time) {
  const sigset_t child = signalSet({SIGCHLD});
  const timespec limit{static_cast<time_t>(time.count()), 0};
  return sigtimedwait(&child, nullptr, &limit) == SIGCHLD;
}

/// Ends `child`, which may be stopped. It is given the time to leave the terminal as it found it.
/// Returns its status.
int endPager(pid_t child) {
  constexpr std::chrono::seconds kMoment(1);
  kill(child, SIGTERM);
  int status = 0;
  while (waitpid(child, &status, WNOHANG) == 0) {
    kill(child, SIGCONT);  // the stop may reach it later than this program
    if (!childChangesWithin(kMoment)) {
      kill(child, SIGKILL);
    }
  }
  return status;
}

/// Waits for the end of `child`, and ends it if a signal is to end this program, or to stop it and
/// is pending. Returns its status. `signals` can be read when one that is awaited is pending; a
/// stop stays so, and a SIGCONT still discards it.
int statusOf(pid_t child, const Descriptor& signals) {
  int status = 0;
  while (true) {
    childChangesWithin(std::chrono::seconds(0));
    if (isPending(SIGTSTP)) {
      return endPager(child);
    }
    if (isSignalled()) {
      kill(child, SIGTERM);
    }
    if (waitpid(child, &status, WNOHANG) != 0) {
      return status;
    }
    pollfd awaited{signals.number(), POLLIN, 0};
    poll(&awaited, 1, -1);
  }
}

}  // namespace

bool showInPager(const std::string& text) {
  const char* const command = pagerCommand();
  const sigset_t awaited = awaitedWhile(command);
  const Descriptor signals(signalfd(-1, &awaited, SFD_CLOEXEC));
  const Descriptor file = fileWith(text);
  if (!file.isOpen() || !signals.isOpen()) {
    return false;
  }
  int status = 0;
  {
    const TerminalSignalsIgnored keys;  // they are the pager's
    const SignalMask mask(SIG_SETMASK, awaited);
    const pid_t child = fork();
    if (child == 0) {
      runPager(command, file.number());
    }
    if (child < 0) {
      return false;
    }
    status = statusOf(child, signals);
  }
  if (WIFSIGNALED(status)) {
    std::cout << "\r\n" << std::flush;  // from wherever it has left the cursor
  }
  throwIfSignalled();
  return !WIFEXITED(status) || WEXITSTATUS(status) < kCannotExecute;
}

}  // namespace lineup
