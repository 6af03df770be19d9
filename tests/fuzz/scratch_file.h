// A file for what a fuzz target makes up.

#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "tests/fuzz/require.h"

namespace lineup::fuzz {

/// A file in memory, for the length of the process.
class ScratchFile {
 public:
  const std::string& path() const { return path_; }

  void fill(std::string_view content) const {
    require(ftruncate(descriptor_, 0) == 0 && pwrite(descriptor_, content.data(), content.size(),
                                                     0) == static_cast<ssize_t>(content.size()),
            "the scratch file can be written");
  }

 private:
  const int descriptor_ = memfd_create("scratch", 0);
  const std::string path_ = "/proc/self/fd/" + std::to_string(descriptor_);
};

}  // namespace lineup::fuzz
