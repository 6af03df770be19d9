// What a file holds.

#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace lineup::test {

/// The whole content of the file, empty if it cannot be read.
inline std::string contentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace lineup::test
