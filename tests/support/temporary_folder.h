// A folder of a test's own.

#pragma once

#include <stdlib.h>  // mkdtemp

#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace lineup::test {

/// An empty folder that is removed with all it holds.
class TemporaryFolder {
 public:
  TemporaryFolder() : path_(std::filesystem::temp_directory_path() / "console-test-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) {
      throw std::runtime_error("cannot make the folder " + path_);
    }
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::string& path() const { return path_; }
  std::string file(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

}  // namespace lineup::test
