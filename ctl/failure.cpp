#include "ctl/failure.h"

#include <unistd.h>

#include <csignal>

#include "print/printed_text.h"
#include "support/descriptor.h"

namespace lineup::ctl {

std::string failureLine(const std::string& message) {
  return "lineupctl: " + inOneLine(message) + "\n";
}

void complain(const std::string& message) {
  std::signal(SIGPIPE, SIG_IGN);  // a closed standard error does not change how the program ends
  writeAll(STDERR_FILENO, failureLine(message));  // if this fails, there is nowhere to say it
}

}  // namespace lineup::ctl
