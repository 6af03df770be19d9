// Records and messages as bytes, and records back, by the library's own protocols alone.

#pragma once

#include <arpa/inet.h>
#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "model/no_size_limits.h"

namespace lineup::test {

template <class Protocol, class Record>
std::string encode(const Record& record) {
  const auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>(noSizeLimits());
  Protocol protocol(buffer);
  record.write(&protocol);
  return buffer->getBufferAsString();
}

/// Reads `bytes` over `record`. Throws what the library throws.
template <class Protocol, class Record>
void decode(const std::string& bytes, Record& record) {
  const auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>(noSizeLimits());
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

/// Ends the fields of a record in the binary protocol.
inline constexpr char kFieldStop = apache::thrift::protocol::T_STOP;

/// The bytes of a call's result that is a record, `record`, which may be broken.
inline std::string recordResult(const std::string& record) {
  return std::string{apache::thrift::protocol::T_STRUCT, '\0', '\0'} + record + kFieldStop;
}

/// The bytes of a message of the binary protocol: its header, then `body`.
inline std::string binaryMessage(const std::string& name,
                                 apache::thrift::protocol::TMessageType type, int32_t sequence,
                                 const std::string& body) {
  const auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>(noSizeLimits());
  apache::thrift::protocol::TBinaryProtocol(buffer).writeMessageBegin(name, type, sequence);
  return buffer->getBufferAsString() + body;
}

/// `message` after the four bytes that give its length.
inline std::string framed(const std::string& message) {
  const uint32_t size = htonl(static_cast<uint32_t>(message.size()));
  std::string frame(sizeof(size), '\0');
  std::memcpy(frame.data(), &size, sizeof(size));
  return frame + message;
}

}  // namespace lineup::test
