#include "controller/config_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <iostream>
#include <memory>
#include <utility>

#include "controller/config_file_protocol.h"
#include "controller/config_file_transport.h"
#include "model/lineup_editor.h"
#include "support/ending_signals.h"

namespace lineup {

namespace {

/// Lets `work` use the stack of transports and protocol over `descriptor`, which it then owns.
template <class Work>
auto withTransports(Descriptor& descriptor, Work work) {
  const auto file = std::make_shared<ConfigFileTransport>(descriptor);
  ConfigFileProtocol protocol(file);
  file->open();
  return work(*file, protocol);
}

/// Opens `path` and lets `work` use the stack of transports and protocol over it, which is released
/// in any case. Returns the file operations' result.
template <class Work>
int withConfigFile(const std::string& path, int flags, Work work) {
  Descriptor descriptor(open(path.c_str(), flags, S_IRUSR | S_IWUSR));
  if (!descriptor.isOpen()) {
    return CONFIG_FILE_NOT_OPENED;
  }
  try {
    return withTransports(descriptor, work);
  } catch (...) {
    return CONFIG_FILE_FAILED;
  }
}

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

int writeConfigFile(const std::string& path, const hub_module::HeadendConfig& config) {
  return withConfigFile(path, O_WRONLY | O_CREAT | O_TRUNC, [&](auto& file, auto& protocol) {
    config.write(&protocol);
    const bool synced = syncfs(file.descriptor()) == 0;  // unlike sync(), says whether it failed
    file.close();  // writes out the rest of the buffer, which the last sync covers
    sync();
    return synced ? CONFIG_FILE_OK : CONFIG_FILE_FAILED;
  });
}

void writeConfig(int descriptor, const hub_module::HeadendConfig& config) {
  Descriptor own(fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
  withTransports(own, [&](auto& file, auto& protocol) {
    config.write(&protocol);
    file.close();
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
