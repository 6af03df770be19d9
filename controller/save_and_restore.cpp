#include <cstdint>
#include <iostream>
#include <string>
#include <utility>

#include "controller/config_file.h"
#include "model/lineup_editor.h"
#include "support/ending_signals.h"

namespace lineup {

namespace {

/// Reads as much of the file as can be read. Returns whether that is all of it; throws
/// EndedBySignal if a signal is the reason why not.
bool readUnlessSignalled(const std::string& path, hub_module::HeadendConfig& config) {
  const bool complete = readConfigFile(path, config) == CONFIG_FILE_OK;
  if (!complete) {
    throwIfSignalled();
  }
  return complete;
}

}  // namespace

void LineupEditor::saveConfig(const std::string& path) {
  if (!pendingChanges) {
    fetchHeadendConfig();
  }
  if (writeConfigFile(path, config) != CONFIG_FILE_OK) {
    throwIfSignalled();
  }
  std::cout << "Saved config to: " << path << std::endl;
}

void LineupEditor::restoreConfig(const std::string& path) {
  const uint64_t commitsBefore = commits;
  hub_module::HeadendConfig restored = config;  // which is replaced when the reading is over
  const bool complete = readUnlessSignalled(path, restored);
  hub_module::HeadendConfig before = std::exchange(config, std::move(restored));
  try {
    commitHeadendConfig();
  } catch (const EndedBySignal&) {
    if (isInterrupted() && commits == commitsBefore) {
      config = std::move(before);  // nothing is restored
    }
    throw;
  }
  restoredFile = complete ? path : "";
  std::cout << "Restored config from: " << path << std::endl;
}

}  // namespace lineup
