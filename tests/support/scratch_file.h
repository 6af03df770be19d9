// A file for contents of which thousands are tried.

#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace lineup::test {

/// A file in memory.
class ScratchFile {
 public:
  ScratchFile() = default;
  ~ScratchFile() { close(descriptor_); }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  const std::string& path() const { return path_; }

  void fill(std::string_view content) const {
    if (ftruncate(descriptor_, 0) != 0 ||
        pwrite(descriptor_, content.data(), content.size(), 0) != std::ssize(content)) {
      throw std::runtime_error("cannot write a file in memory");
    }
  }

 private:
  const int descriptor_ = memfd_create("scratch", MFD_CLOEXEC);
  const std::string path_ = "/proc/self/fd/" + std::to_string(descriptor_);
};

}  // namespace lineup::test
