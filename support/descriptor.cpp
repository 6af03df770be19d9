#include "support/descriptor.h"

#include <fcntl.h>
#include <poll.h>

#include <cerrno>
#include <cstddef>

namespace lineup {

Descriptor openForReading(const std::string& path) {
  return Descriptor(path == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                : open(path.c_str(), O_RDONLY | O_CLOEXEC));
}

ssize_t writeSome(int descriptor, std::string_view text) {
  const ssize_t count = write(descriptor, text.data(), text.size());
  if (count >= 0) {
    return count;
  }
  if (errno == EAGAIN) {
    pollfd output{descriptor, POLLOUT, 0};
    poll(&output, 1, -1);
    return 0;
  }
  return errno == EINTR ? 0 : -1;
}

bool writeAll(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = writeSome(descriptor, text);
    if (count < 0) {
      return false;
    }
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace lineup
