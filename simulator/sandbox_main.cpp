// headend-sandbox COMMAND ARG...: runs a command in a sandbox and ends with its exit status.
// Nothing of the sandbox is left then, and no process that the command started.

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

#include "simulator/sandbox.h"

namespace {

constexpr int kFailed = 125;         ///< this program's own failures
constexpr int kCannotExecute = 126;  ///< the command is there but cannot be executed
constexpr int kNotFound = 127;
constexpr int kSignalled = 128;  ///< and the signal's number

constexpr const char* kUsage =
    "Usage: headend-sandbox COMMAND [ARG]...\n"
    "Run COMMAND where port 9190 of 127.0.0.1 and the folder\n"
    "/etc/korvel/conf/ControllerTask are its own, and end with its exit status.\n"
    "\n"
    "Where namespaces are forbidden, root uses the machine's own port and folder,\n"
    "one sandbox at a time. HEADEND_SANDBOX=shared in the environment forces this.\n";

sigset_t awaitedSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : {SIGCHLD, SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    sigaddset(&set, signal);
  }
  return set;
}

[[noreturn]] void execute(char** command, const sigset_t& signals, pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    _exit(kFailed);  // GCOVR_EXCL_LINE: the parent was killed just now
  }
  sigprocmask(SIG_SETMASK, &signals, nullptr);
  execvp(command[0], command);
  const int error = errno;
  std::cerr << "headend-sandbox: " << command[0] << ": " << std::strerror(error) << std::endl;
  _exit(error == ENOENT ? kNotFound : kCannotExecute);
}

/// Waits for `child` to end and returns its wait status. Signals sent to this process alone are the
/// child's; those of the terminal have reached it already.
int waitFor(pid_t child, const sigset_t& awaited) {
  while (true) {
    siginfo_t info{};
    const int signal = sigwaitinfo(&awaited, &info);
    if (signal != SIGCHLD) {
      if (signal > 0 && info.si_code != SI_KERNEL) {
        kill(child, signal);
      }
      continue;
    }
    int status = 0;
    for (pid_t ended = 0; (ended = waitpid(-1, &status, WNOHANG)) > 0;) {
      if (ended == child) {
        return status;
      }
    }
  }
}

std::vector<pid_t> children() {
  std::ifstream list("/proc/thread-self/children");
  std::vector<pid_t> result;
  for (pid_t child = 0; list >> child;) {
    result.push_back(child);
  }
  return result;
}

/// Ends what the command left running. A process that ends hands its children to this one, so there
/// is an end when there are no more.
void endChildren() {
  for (std::vector<pid_t> left = children(); !left.empty(); left = children()) {
    for (const pid_t child : left) {
      kill(child, SIGKILL);
    }
    waitpid(-1, nullptr, 0);
  }
}

int run(char** command) {
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  signal(SIGCHLD, SIG_DFL);
  const sigset_t awaited = awaitedSignals();
  sigset_t before;
  sigprocmask(SIG_BLOCK, &awaited, &before);
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child < 0) {
    // GCOVR_EXCL_START: only where there is no room for another process
    throw std::system_error(errno, std::generic_category(), "fork");
    // GCOVR_EXCL_STOP
  }
  if (child == 0) {
    execute(command, before, parent);
  }
  const int status = waitFor(child, awaited);
  endChildren();
  return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argv[1][0] == '-') {
    const bool asked = argc == 2 && std::string(argv[1]) == "--help";
    (asked ? std::cout : std::cerr) << kUsage;
    return asked ? 0 : kFailed;
  }
  try {
    lineup::enterSandbox();
    return run(argv + 1);
  } catch (const std::exception& error) {
    std::cerr << "headend-sandbox: " << error.what() << std::endl;
    return kFailed;
  }
}
