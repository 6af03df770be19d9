#include "ctl/failure.h"

#include <unistd.h>

#include <csignal>

#include "support/descriptor.h"

namespace lineup::ctl {

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
