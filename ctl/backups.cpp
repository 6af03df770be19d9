#include "ctl/backups.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

#include "controller/config_file.h"
#include "ctl/commands.h"
#include "ctl/controller.h"
#include "ctl/files.h"
#include "support/descriptor.h"

namespace lineup::ctl {

namespace {

namespace fs = std::filesystem;

/// What a name says, which is as exact as the time of a copy.
using Time = std::chrono::sys_time<std::chrono::milliseconds>;

std::string nameFor(Time time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
  const std::time_t count = seconds.time_since_epoch().count();
  std::tm parts{};
  gmtime_r(&count, &parts);
  char text[32];
  const std::size_t length = std::strftime(text, sizeof(text), "lineup-%Y%m%dT%H%M%S", &parts);
  const std::string fraction = std::to_string(1000 + (time - seconds).count());
  return std::string(text, length) + "." + fraction.substr(1) + "Z.json";
}

/// The time that `name` says; none if it is no name that nameFor() makes.
std::optional<Time> timeOf(const std::string& name) {
  std::tm parts{};
  const char* const fraction = strptime(name.c_str(), "lineup-%Y%m%dT%H%M%S.", &parts);
  if (fraction == nullptr) {
    return std::nullopt;
  }
  int milliseconds = 0;
  std::from_chars(fraction, fraction + std::strlen(fraction), milliseconds);
  const Time time =
      Time(std::chrono::seconds(timegm(&parts))) + std::chrono::milliseconds(milliseconds);
  return nameFor(time) == name ? std::optional(time) : std::nullopt;
}

/// The names of the copies in `folder`, oldest first: they sort by their time.
std::vector<std::string> copiesIn(const std::string& folder) {
  std::vector<std::string> names;
  try {
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
      const std::string name = entry.path().filename();
      if (timeOf(name) && entry.symlink_status().type() == fs::file_type::regular) {
        names.push_back(name);
      }
    }
  } catch (const fs::filesystem_error& error) {
    throw Failure(kFile, folder + ": " + error.code().message());
  }
  std::sort(names.begin(), names.end());
  return names;
}

/// A name after those of the copies, also where the clock has been set back: what is newest, and
/// what --keep removes first, goes by the names.
std::string nextName(const std::vector<std::string>& copies) {
  using std::chrono::milliseconds;
  Time time = std::chrono::floor<milliseconds>(std::chrono::system_clock::now());
  if (!copies.empty()) {
    time = std::max(time, *timeOf(copies.back()) + milliseconds(1));
  }
  return nameFor(time);
}

}  // namespace

KeptCopy keepCopy(const std::string& folder, const std::string& content, std::size_t keep) {
  std::vector<std::string> names = copiesIn(folder);
  const bool isNew = names.empty() || !fileHolds(fs::path(folder) / names.back(), content);
  if (isNew) {
    names.push_back(nextName(names));
    writeFile(fs::path(folder) / names.back(), content);
  }
  for (std::size_t index = 0; keep > 0 && index + keep < names.size(); ++index) {
    std::error_code failed;
    fs::remove(fs::path(folder) / names[index], failed);
    if (failed) {
      throw Failure(kFile, (fs::path(folder) / names[index]).string() + ": " + failed.message());
    }
  }
  return {fs::path(folder) / names.back(), isNew};
}

Status backup(const Arguments& arguments) {
  const std::size_t keep = arguments.wholeNumber("keep");
  const KeptCopy kept = keepCopy(arguments.operands()[0], configFileContent(runningConfig()), keep);
  print(kept.isNew ? kept.path + "\n" : "");
  return kDone;
}

}  // namespace lineup::ctl
