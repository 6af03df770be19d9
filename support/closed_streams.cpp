#include "support/closed_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

namespace lineup {

void openClosedStreams(int access) {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) < 0) {
      // Returns the lowest free descriptor, which stays open.
      open("/dev/null", access);  // cppcheck-suppress leakReturnValNotUsed
    }
  }
}

}  // namespace lineup
