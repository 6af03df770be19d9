#include "support/pager.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>

#include "support/descriptor.h"
#include "support/ending_signals.h"

namespace {

// Neither may start other programs: the console may be all that its user is let into.
constexpr char kUsualPager[] =
    "export LESSSECURE=1 SHELL=/bin/false VISUAL=/bin/false EDITOR=/bin/false;"
    "command -v less >/dev/null 2>&1 && exec less -FRX; exec more";

/// What the shell is to run.
const char* pagerCommand() {
  const char* const wanted = std::getenv("PAGER");
  return wanted == nullptr || *wanted == '\0' ? kUsualPager : wanted;
}

/// A file in memory that holds `text`, to be read from its beginning: unlike a pipe it waits for no
/// reader, and may be read in part.
Descriptor fileWith(std::string_view text) {
  Descriptor file(memfd_create("text", MFD_CLOEXEC));
  while (file.isOpen() && !text.empty()) {
    const ssize_t count = write(file.number(), text.data(), text.size());
    if (count < 0 && errno != EINTR) {
      return {};
    }
    text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
  }
  lseek(file.number(), 0, SEEK_SET);
  return file;
}

/// While it lives, the signals of the terminal's keys are not for this program, except that it
/// stops.
class TerminalLeft {
 public:
  TerminalLeft() {
    for (std::size_t n = 0; n < kKeys.size(); ++n) {
      struct sigaction ignored {};
      ignored.sa_handler = SIG_IGN;
      sigaction(kKeys[n], &ignored, &actions_[n]);
    }
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, &mask_);
  }
  ~TerminalLeft() {
    pthread_sigmask(SIG_SETMASK, &mask_, nullptr);
    for (std::size_t n = 0; n < kKeys.size(); ++n) {
      sigaction(kKeys[n], &actions_[n], nullptr);
    }
  }
  TerminalLeft(const TerminalLeft&) = delete;
  TerminalLeft& operator=(const TerminalLeft&) = delete;

 private:
  static constexpr std::array<int, 2> kKeys{SIGINT, SIGQUIT};

  std::array<struct sigaction, kKeys.size()> actions_{};
  sigset_t mask_{};
};

[[noreturn]] void runPager(int text) {
  // GCOVR_EXCL_START: the counts of this process get lost
  std::signal(SIGINT, SIG_DFL);
  std::signal(SIGQUIT, SIG_DFL);
  dup2(text, STDIN_FILENO);
  execl("/bin/sh", "sh", "-c", pagerCommand(), nullptr);
  constexpr int kNotRun = 127;  // as the shell says it
  _exit(kNotRun);
  // GCOVR_EXCL_STOP
}

/// Waits for the end of `child`, and ends it if a signal is to end this program. Returns its
/// status.
int statusOf(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    if (isSignalled()) {
      kill(child, SIGTERM);
    }
  }
  return status;
}

}  // namespace

bool showInPager(const std::string& text) {
  const Descriptor file = fileWith(text);
  if (!file.isOpen()) {
    return false;
  }
  int status = 0;
  {
    const TerminalLeft left;
    const pid_t child = fork();
    if (child == 0) {
      runPager(file.number());
    }
    if (child < 0) {
      return false;
    }
    status = statusOf(child);
  }
  throwIfSignalled();
  constexpr int kNotFound = 127;
  return !WIFEXITED(status) || WEXITSTATUS(status) < kNotFound - 1;
}
