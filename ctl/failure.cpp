#include "ctl/failure.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace lineup::ctl {

bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(descriptor, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      pollfd output{descriptor, POLLOUT, 0};
      poll(&output, 1, -1);
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

void complain(const std::string& message) {
  std::string line = "lineupctl: " + message;
  for (char& character : line) {
    character = character == '\n' ? ' ' : character;
  }
  line += '\n';
  std::signal(SIGPIPE, SIG_IGN);  // a closed standard error does not change how the program ends
  writeAll(STDERR_FILENO, line);  // where this fails there is nowhere else to say it
}

}  // namespace lineup::ctl
