#include "ctl/failure.h"

#include <unistd.h>

namespace lineup::ctl {

void complain(const std::string& message) {
  std::string line = "lineupctl: " + message;
  for (char& character : line) {
    character = character == '\n' ? ' ' : character;
  }
  line += '\n';
  // Where this fails there is nowhere else to say it.
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace lineup::ctl
