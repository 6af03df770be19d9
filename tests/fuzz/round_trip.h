// A record that was read is one that can be written: nothing of it is lost on the way.

#pragma once

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include <cstdint>
#include <memory>
#include <string>

#include "controller/config_file.h"
#include "hub_module_types.h"
#include "model/no_size_limits.h"
#include "tests/fuzz/require.h"
#include "tests/fuzz/scratch_file.h"

namespace lineup::fuzz {

template <class Protocol, class Record>
std::string encode(const Record& record) {
  const auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>(noSizeLimits());
  Protocol protocol(buffer);
  record.write(&protocol);
  return buffer->getBufferAsString();
}

template <class Protocol, class Record>
Record decode(const std::string& bytes) {
  const auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>(noSizeLimits());
  buffer->write(reinterpret_cast<const uint8_t*>(bytes.data()),
                static_cast<uint32_t>(bytes.size()));
  Protocol protocol(buffer);
  Record record;
  record.read(&protocol);
  return record;
}

/// Requires that `record`, encoded as a message is, reads back as one that encodes to the same
/// bytes.
template <class Record>
void requireRoundTrip(const Record& record) {
  using apache::thrift::protocol::TBinaryProtocol;
  const std::string bytes = encode<TBinaryProtocol>(record);
  require(encode<TBinaryProtocol>(decode<TBinaryProtocol, Record>(bytes)) == bytes,
          "a record survives being sent");
}

/// The like of requireRoundTrip() for `config` in a configuration file.
inline void requireFileRoundTrip(const korvel::thrift::hub_module::HeadendConfig& config) {
  using apache::thrift::protocol::TJSONProtocol;
  static const ScratchFile file;
  const std::string bytes = encode<TJSONProtocol>(config);
  file.fill(bytes);
  korvel::thrift::hub_module::HeadendConfig read;
  require(
      readConfigFile(file.path(), read) == CONFIG_FILE_OK && encode<TJSONProtocol>(read) == bytes,
      "a configuration survives being saved");
}

}  // namespace lineup::fuzz
