#include "ctl/files.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <utility>

#include "controller/complete_config_file.h"
#include "ctl/failure.h"
#include "support/descriptor.h"
#include "support/replace_file.h"
#include "support/signal_sets.h"

namespace lineup::ctl {

std::string fileName(const std::string& path) {
  return path == "-" ? "standard input" : path;
}

std::string textInFile(const std::string& path) {
  const Descriptor file = openForReading(path);
  std::optional<std::string> text = file.isOpen() ? readAll(file.number()) : std::nullopt;
  if (!text) {
    throw Failure(kFile, fileName(path) + ": " + std::strerror(errno));
  }
  return *std::move(text);
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
