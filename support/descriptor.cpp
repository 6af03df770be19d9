#include "support/descriptor.h"

#include <fcntl.h>
#include <poll.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <span>

namespace lineup {

namespace {

/// Reads some of what there is: 0 at the end; negative, with the reason in errno, if it cannot be
/// read.
ssize_t readSome(int descriptor, std::span<char> buffer) {
  ssize_t count = 0;
  while ((count = read(descriptor, buffer.data(), buffer.size())) < 0 &&
         (errno == EAGAIN || errno == EINTR)) {
    if (errno == EAGAIN) {
      pollfd input{descriptor, POLLIN, 0};
      poll(&input, 1, -1);
    }
  }
  return count;
}

}  // namespace

Descriptor openForReading(const std::string& path) {
  return Descriptor(path == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                : open(path.c_str(), O_RDONLY | O_CLOEXEC));
}

std::optional<std::string> readAll(int descriptor) {
  std::string text;
  std::array<char, 4096> part{};
  ssize_t count = 0;
  while ((count = readSome(descriptor, part)) > 0) {
    text.append(part.data(), static_cast<std::size_t>(count));
  }
  return count < 0 ? std::nullopt : std::optional(std::move(text));
}

bool fileHolds(const std::string& path, std::string_view content) {
  const Descriptor file = openForReading(path);
  return file.isOpen() && readAll(file.number()) == content;
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
