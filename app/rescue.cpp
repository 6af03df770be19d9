#include "app/rescue.h"

#include <poll.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>

#include "controller/config_file.h"
#include "support/ending_signals.h"
#include "support/words.h"

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
  if (writeConfigFile(path, config) != CONFIG_FILE_OK) {
    unlink(path.c_str());
    return "";
  }
  return path;
}

/// $TMPDIR from the root, so that its name can be used elsewhere; empty if there is none.
std::string temporaryFolder() {
  const char* const folder = std::getenv("TMPDIR");
  if (folder == nullptr || *folder == '\0') {
    return "";
  }
  std::error_code none;
  return std::filesystem::absolute(folder, none).string();
}

std::string writeRescueFile(const hub_module::HeadendConfig& config) {
  const EndingSignalsHeld uninterrupted;
  const std::string folder = temporaryFolder();
  const bool usable = !folder.empty() && isOneWord(folder);
  const std::string path = usable ? writeRescueFile(folder, config) : "";
  return path.empty() ? writeRescueFile("/tmp", config) : path;
}

/// Says `line` on standard error, unless nobody reads that and its buffer is full.
void say(const std::string& line) {
  constexpr int kPatience = 1000;  // ms
  pollfd errors{STDERR_FILENO, POLLOUT, 0};
  bool taken = false;
  {
    const EndingSignalsHeld uninterrupted;
    taken = poll(&errors, 1, kPatience) != 0;
  }
  if (taken) {
    std::cerr << line + '\n';
  }
}

}  // namespace

void rescuePendingChanges(const LineupEditor& editor) noexcept {
  if (!editor.pendingChanges) {
    return;
  }
  try {
    const std::string path = writeRescueFile(editor.config);
    if (path.empty()) {
      say("The uncommitted changes could not be written to a file");
    } else {
      say("The uncommitted changes are in " + path + ": \"restore " + path +
          "\" brings them back and commits them");
    }
  } catch (...) {
    // Out of memory: there is nothing left to say it with.
  }
}

}  // namespace lineup
