#include "ctl/failure.h"

#include <unistd.h>

#include <csignal>

namespace lineup::ctl {

void complain(const std::string& message) {
  std::string line = "lineupctl: " + message;
  for (char& character : line) {
    character = character == '\n' ? ' ' : character;
  }
  line += '\n';
  std::signal(SIGPIPE, SIG_IGN);  // a closed standard error does not change how the program ends
  // Where this fails there is nowhere else to say it.
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace lineup::ctl
