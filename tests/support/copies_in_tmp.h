// Copies of edits in /tmp, which is everybody's.

#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace lineup::test {

/// The copies there of the console that `process` is or was.
inline std::vector<std::filesystem::path> copiesInTmp(pid_t process) {
  std::vector<std::filesystem::path> copies;
  const std::string end = "-" + std::to_string(process) + ".json";
  for (const std::filesystem::path& file : std::filesystem::directory_iterator("/tmp")) {
    const std::string name = file.filename();
    if (name.starts_with("lineup-console-") && name.ends_with(end)) {
      copies.push_back(file);
    }
  }
  return copies;
}

}  // namespace lineup::test
