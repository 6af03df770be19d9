#include "controller/config_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/transport/TBufferTransports.h>
#include <unistd.h>

#include <memory>

#include "controller/config_file_protocol.h"
#include "controller/config_file_transport.h"
#include "model/no_size_limits.h"
#include "support/descriptor.h"

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
ConfigFileResult withConfigFile(const std::string& path, int flags, Work work) {
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

}  // namespace

ConfigFileResult writeConfigFile(const std::string& path, const hub_module::HeadendConfig& config) {
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

ConfigFileResult readConfigFile(const std::string& path, hub_module::HeadendConfig& config) {
  return withConfigFile(path, O_RDONLY, [&](auto& file, auto& protocol) {
    config.read(&protocol);
    file.close();
    return CONFIG_FILE_OK;
  });
}

std::string configFileContent(const hub_module::HeadendConfig& config) {
  const auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>(noSizeLimits());
  apache::thrift::protocol::TJSONProtocol protocol(buffer);
  config.write(&protocol);
  return buffer->getBufferAsString();
}

}  // namespace lineup
