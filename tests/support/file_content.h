// What files and folders hold.

#pragma once

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <system_error>
#include <vector>

namespace lineup::test {

/// The whole content of the file, empty if it cannot be read.
inline std::string contentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// Makes `content` the whole content of the file.
inline void writeFile(const std::filesystem::path& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

/// The paths of what is in the folder; none if there is no such folder.
inline std::vector<std::filesystem::path> pathsIn(const std::filesystem::path& folder) {
  std::error_code none;
  const std::filesystem::directory_iterator entries(folder, none);
  return {begin(entries), end(entries)};
}

/// The names of what is in the folder, sorted.
inline std::vector<std::string> namesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename());
  }
  std::sort(names.begin(), names.end());
  return names;
}

/// The contents of the files in the folder by their names.
inline std::map<std::string, std::string> filesIn(const std::filesystem::path& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    files[entry.path().filename()] = contentOf(entry.path());
  }
  return files;
}

/// How many file descriptors the process has open.
inline std::size_t openDescriptors() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

}  // namespace lineup::test
