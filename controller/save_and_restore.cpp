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
  const bool whole = readConfigFile(path, config) == CONFIG_FILE_OK;
  if (!whole) {
    throwIfSignalled();
  }
  return whole;
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
  hub_module::HeadendConfig other = config;  // kept if a signal cuts the reading short
  const bool whole = readUnlessSignalled(path, other);
  std::swap(config, other);
  try {
    commitHeadendConfig();
  } catch (const EndedBySignal&) {
    if (isInterrupted() && commits == commitsBefore) {
      std::swap(config, other);  // nothing is restored
    }
    throw;
  }
  restoredFile = whole ? path : "";
  std::cout << "Restored config from: " << path << std::endl;
}

}  // namespace lineup
