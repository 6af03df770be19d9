// inherit STATE... -- PROGRAM [ARGUMENT]...: becomes the program, with what whoever starts it may
// leave it: see kStates. Ends with 126 at an unknown state.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <map>
#include <string>

namespace {

void blockSignal(int signal) {
  sigset_t signals;
  sigemptyset(&signals);
  signal == 0 ? sigfillset(&signals) : sigaddset(&signals, signal);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
}

void ignore(int signal) {
  for (int number = 1; number < NSIG; ++number) {
    if (signal == 0 || signal == number) {
      std::signal(number, SIG_IGN);
    }
  }
}

void limit(__rlimit_resource_t resource, rlim_t most) {
  const rlimit limits{most, most};
  setrlimit(resource, &limits);
}

void setNonblocking(int file) {
  fcntl(file, F_SETFL, fcntl(file, F_GETFL) | O_NONBLOCK);
}

const std::map<std::string, void (*)()> kStates = {
    {"mask=all", [] { blockSignal(0); }},
    {"mask=alarm", [] { blockSignal(SIGALRM); }},
    {"ignored=all", [] { ignore(0); }},
    {"ignored=pipe", [] { ignore(SIGPIPE); }},
    {"ignored=child", [] { ignore(SIGCHLD); }},
    {"input=nonblocking", [] { setNonblocking(STDIN_FILENO); }},
    {"output=nonblocking", [] { setNonblocking(STDOUT_FILENO); }},
    {"output=closed", [] { close(STDOUT_FILENO); }},
    {"errors=nonblocking", [] { setNonblocking(STDERR_FILENO); }},
    {"errors=closed", [] { close(STDERR_FILENO); }},
    {"umask=none", [] { umask(0); }},
    {"umask=all", [] { umask(0777); }},
    {"limit=files", [] { limit(RLIMIT_NOFILE, 16); }},
    {"limit=core", [] { limit(RLIMIT_CORE, 0); }},
    {"limit=stack", [] { limit(RLIMIT_STACK, 1 << 20); }},
    {"limit=filesize", [] { limit(RLIMIT_FSIZE, 1 << 20); }},
    {"limit=processes", [] { limit(RLIMIT_NPROC, 0); }},  // not for root
    {"limit=memory", [] { limit(RLIMIT_DATA, 32 << 20); }},
    {"timer=on", [] { alarm(1); }},
};

}  // namespace

int main(int /*argc*/, char** argv) {
  char** word = argv + 1;
  for (; *word != nullptr && std::string(*word) != "--"; ++word) {
    const auto state = kStates.find(*word);
    if (state == kStates.end()) {
      return 126;
    }
    state->second();
  }
  if (*word != nullptr) {
    execv(word[1], word + 1);
  }
  return 127;
}
