#include "app/rescue.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "controller/config_file.h"

namespace lineup {

namespace {

constexpr char kNameTemplate[] = "/lineup-console-rescue-XXXXXX.json";
constexpr int kSuffixLength = 5;  // ".json"

/// Writes the configuration to a new file in the folder; returns its path, empty on failure.
std::string writeRescueFile(const std::string& folder, const hub_module::HeadendConfig& config) {
  std::string path = folder + kNameTemplate;
  const int descriptor = mkstemps(path.data(), kSuffixLength);  // creates it with mode 0600
  if (descriptor < 0) {
    return "";
  }
  close(descriptor);
  if (writeConfigFile(path, config) != 0) {
    unlink(path.c_str());
    return "";
  }
  return path;
}

std::string writeRescueFile(const hub_module::HeadendConfig& config) {
  const char* const folder = std::getenv("TMPDIR");
  std::string path;
  if (folder != nullptr && *folder != '\0') {
    path = writeRescueFile(folder, config);
  }
  return path.empty() ? writeRescueFile("/tmp", config) : path;
}

}  // namespace

void rescuePendingChanges(const LineupEditor& editor) noexcept {
  if (!editor.pendingChanges) {
    return;
  }
  try {
    const std::string path = writeRescueFile(editor.config);
    if (path.empty()) {
      std::cerr << "The uncommitted changes could not be written to a file" << std::endl;
    } else {
      std::cerr << "The uncommitted changes are in " << path << ": \"restore " << path
                << "\" brings them back and commits them" << std::endl;
    }
  } catch (...) {
    // Out of memory: there is nothing left to say it with.
  }
}

}  // namespace lineup
