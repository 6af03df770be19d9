#include "controller/config_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <iostream>
#include <memory>
#include <utility>

#include "controller/file_protocol.h"
#include "controller/file_transport.h"
#include "model/lineup_editor.h"
#include "support/ending_signals.h"

namespace lineup {

namespace {

/// Opens `path` and lets `work` use the stack of transports and protocol over it, which is released
/// in any case. Returns the file operations' result.
template <class Work>
int withConfigFile(const std::string& path, int flags, Work work) {
  Descriptor descriptor(open(path.c_str(), flags, S_IRUSR | S_IWUSR));
  if (!descriptor.isOpen()) {
    return CONFIG_FILE_NOT_OPENED;
  }
  try {
    const auto file = std::make_shared<FileTransport>(descriptor);
    FileProtocol protocol(file);
    file->open();
    return work(*file, protocol);
  } catch (...) {
    return CONFIG_FILE_FAILED;
  }
}

}  // namespace

int writeConfigFile(const std::string& path, const hub_module::HeadendConfig& config) {
  return withConfigFile(path, O_WRONLY | O_CREAT | O_TRUNC, [&](auto& file, auto& protocol) {
    config.write(&protocol);
    const bool synced = syncfs(file.descriptor()) == 0;
    file.close();  // writes out the rest of the buffer, which the last sync covers
    sync();
    return synced ? CONFIG_FILE_OK : CONFIG_FILE_FAILED;
  });
}

int readConfigFile(const std::string& path, hub_module::HeadendConfig& config) {
  return withConfigFile(path, O_RDONLY, [&](auto& file, auto& protocol) {
    config.read(&protocol);
    file.close();
    return CONFIG_FILE_OK;
  });
}

void LineupEditor::saveConfig(const std::string& path) {
  if (!pendingChanges) {
    fetchHeadendConfig();
  }
  if (writeConfigFile(path, config) != CONFIG_FILE_OK) {
    endIfSignalled();
  }
  std::cout << "Saved config to: " << path << std::endl;
}

void LineupEditor::restoreConfig(const std::string& path) {
  // Pending edits stay as they are, without a part of the file in them, if a signal cuts it short.
  hub_module::HeadendConfig copy;
  hub_module::HeadendConfig& restored = pendingChanges ? copy = config : config;
  if (readConfigFile(path, restored) != CONFIG_FILE_OK) {
    endIfSignalled();
  }
  if (pendingChanges) {
    config = std::move(copy);
  }
  commitHeadendConfig();
  std::cout << "Restored config from: " << path << std::endl;
}

}  // namespace lineup
