#include "ctl/backups.h"

#include <fnmatch.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>
#include <vector>

#include "ctl/failure.h"
#include "ctl/sources.h"

namespace lineup::ctl {

namespace {

namespace fs = std::filesystem;

/// Whether `name` is one that nameFor() makes.
bool isCopy(const std::string& name) {
  std::string pattern;
  for (const char character : std::string("lineup-00000000T000000.000Z.json")) {
    pattern += character == '0' ? "[0-9]" : std::string(1, character);
  }
  return fnmatch(pattern.c_str(), name.c_str(), 0) == 0;
}

/// The names of the copies in `folder`, oldest first: they sort by their time.
std::vector<std::string> copiesIn(const std::string& folder) {
  std::vector<std::string> names;
  try {
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
      const std::string name = entry.path().filename();
      if (isCopy(name)) {
        names.push_back(name);
      }
    }
  } catch (const fs::filesystem_error& error) {
    throw Failure(kFile, folder + ": " + error.code().message());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string nameFor(std::chrono::system_clock::time_point time) {
  using std::chrono::milliseconds;
  const auto sinceEpoch = std::chrono::duration_cast<milliseconds>(time.time_since_epoch());
  const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  char text[32];
  const std::size_t length = std::strftime(text, sizeof(text), "lineup-%Y%m%dT%H%M%S", &parts);
  const std::string fraction = std::to_string(1000 + sinceEpoch.count() % 1000);
  return std::string(text, length) + "." + fraction.substr(1) + "Z.json";
}

/// A name that no copy has yet.
std::string freeName(const std::vector<std::string>& taken) {
  auto time = std::chrono::system_clock::now();
  while (std::binary_search(taken.begin(), taken.end(), nameFor(time))) {
    time += std::chrono::milliseconds(1);
  }
  return nameFor(time);
}

bool holds(const fs::path& path, const std::string& content) {
  std::ostringstream held;
  held << std::ifstream(path, std::ios::binary).rdbuf();
  return held.str() == content;
}

}  // namespace

std::string keepCopy(const std::string& folder, const std::string& content, std::size_t keep) {
  std::vector<std::string> names = copiesIn(folder);
  std::string added;
  if (names.empty() || !holds(fs::path(folder) / names.back(), content)) {
    const std::string name = freeName(names);
    added = fs::path(folder) / name;
    writeFile(added, content);
    // The new copy is the last to go, also where the clock has been set back.
    names.push_back(name);
  }
  for (std::size_t index = 0; keep > 0 && index + keep < names.size(); ++index) {
    std::error_code failed;
    fs::remove(fs::path(folder) / names[index], failed);
    if (failed) {
      throw Failure(kFile, (fs::path(folder) / names[index]).string() + ": " + failed.message());
    }
  }
  return added;
}

}  // namespace lineup::ctl
