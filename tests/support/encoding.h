// Records as bytes and back, by the library's own protocols alone.

#pragma once

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include <cstdint>
#include <memory>
#include <string>

namespace lineup::test {

template <class Protocol, class Record>
std::string encode(const Record& record) {
  const auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>();
  Protocol protocol(buffer);
  record.write(&protocol);
  return buffer->getBufferAsString();
}

/// Reads `bytes` over `record`. Throws what the library throws.
template <class Protocol, class Record>
void decode(const std::string& bytes, Record& record) {
  const auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>();
  buffer->write(reinterpret_cast<const uint8_t*>(bytes.data()),
                static_cast<uint32_t>(bytes.size()));
  Protocol protocol(buffer);
  record.read(&protocol);
}

template <class Record>
std::string toBinary(const Record& record) {
  return encode<apache::thrift::protocol::TBinaryProtocol>(record);
}

template <class Record>
std::string toJson(const Record& record) {
  return encode<apache::thrift::protocol::TJSONProtocol>(record);
}

}  // namespace lineup::test
