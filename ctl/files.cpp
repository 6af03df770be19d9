#include "ctl/files.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <span>
#include <stdexcept>

#include "controller/complete_config_file.h"
#include "ctl/failure.h"
#include "support/descriptor.h"
#include "support/replace_file.h"
#include "support/signal_sets.h"

namespace lineup::ctl {

namespace {

/// Reads what there is, and waits for it where the descriptor does not block. 0 at the end,
/// negative with the reason in errno if it cannot be read.
ssize_t readSome(int descriptor, std::span<char> buffer) {
  ssize_t count = 0;
  while ((count = read(descriptor, buffer.data(), buffer.size())) < 0 && errno == EAGAIN) {
    pollfd input{descriptor, POLLIN, 0};
    poll(&input, 1, -1);
  }
  return count;
}

}  // namespace

std::string fileName(const std::string& path) {
  return path == "-" ? "standard input" : path;
}

std::string textInFile(const std::string& path) {
  const Descriptor file = openForReading(path);
  std::string text;
  std::array<char, 4096> part{};
  ssize_t count = file.isOpen() ? readSome(file.number(), part) : -1;
  for (; count > 0; count = readSome(file.number(), part)) {
    text.append(part.data(), static_cast<std::size_t>(count));
  }
  if (count < 0) {
    throw Failure(kFile, fileName(path) + ": " + std::strerror(errno));
  }
  return text;
}

hub_module::HeadendConfig configInFile(const std::string& path) {
  try {
    return readCompleteConfigFile(path);
  } catch (const std::runtime_error& error) {
    throw Failure(kFile, fileName(path) + ": " + error.what());
  }
}

void writeFile(const std::string& path, const std::string& content) {
  const BlockedEndingSignals uninterrupted;
  try {
    replaceFile(path, content);
  } catch (const std::runtime_error& error) {
    throw Failure(kFile, path + ": " + error.what());
  }
}

void print(const std::string& text) {
  if (!writeAll(STDOUT_FILENO, text)) {
    throw Failure(kFile, std::string("standard output: ") + std::strerror(errno));
  }
}

}  // namespace lineup::ctl
