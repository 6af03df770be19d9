#include "simulator/locked_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace lineup::simulator {

namespace {

/// `result` unless it is negative: then throws errno.
int checked(int result) {
  if (result < 0) {
    throw std::system_error(errno, std::generic_category());
  }
  return result;
}

// Read before there are threads, as it can only be read by setting it.
const mode_t kCreationMask = [] {
  const mode_t mask = umask(022);
  umask(mask);
  return mask;
}();

Descriptor openFolder(const std::string& path) {
  return Descriptor(checked(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
}

}  // namespace

bool fileExists(const std::string& path) {
  std::error_code unknown;
  const std::filesystem::file_status file = std::filesystem::status(path, unknown);
  if (!std::filesystem::exists(file)) {
    return false;
  }
  if (!std::filesystem::is_regular_file(file)) {
    throw std::runtime_error("cannot use " + path + ": it is no regular file");
  }
  return true;
}

Descriptor replaceLocked(const std::string& path, const std::string& contents) {
  std::string temporary = path + ".XXXXXX";
  bool made = false;
  try {
    const std::filesystem::path folder = std::filesystem::absolute(path).parent_path();
    std::filesystem::create_directories(folder);
    Descriptor file(checked(mkostemp(temporary.data(), O_CLOEXEC)));
    made = true;
    checked(fchmod(file.number(), 0666 & ~kCreationMask));
    checked(flock(file.number(), LOCK_EX | LOCK_NB));
    checked(writeAll(file.number(), contents) ? 0 : -1);
    checked(fsync(file.number()));
    checked(rename(temporary.c_str(), path.c_str()));
    checked(fsync(openFolder(folder.string()).number()));
    return file;
  } catch (const std::system_error& error) {
    if (made) {
      unlink(temporary.c_str());
    }
    throw std::runtime_error("cannot write " + path + ": " + error.code().message());
  }
}

}  // namespace lineup::simulator
