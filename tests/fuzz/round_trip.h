// A record that was read is one that can be written: nothing of it is lost on the way.

#pragma once

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include <memory>
#include <string>

#include "controller/unlimited.h"
#include "tests/fuzz/require.h"

namespace lineup::fuzz {

template <class Protocol, class Record>
std::string encode(const Record& record) {
  const auto buffer =
      std::make_shared<apache::thrift::transport::TMemoryBuffer>(lineup::unlimited());
  Protocol protocol(buffer);
  record.write(&protocol);
  return buffer->getBufferAsString();
}

template <class Protocol, class Record>
Record decode(const std::string& bytes) {
  const auto buffer =
      std::make_shared<apache::thrift::transport::TMemoryBuffer>(lineup::unlimited());
  buffer->write(reinterpret_cast<const uint8_t*>(bytes.data()),
                static_cast<uint32_t>(bytes.size()));
  Protocol protocol(buffer);
  Record record;
  record.read(&protocol);
  return record;
}

/// Writes `record` in `Protocol`, reads it back and requires that writing it again makes the same
/// bytes. Without effect if there is a NUL in a JSON text, which the library's protocol writes but
/// does not read.
template <class Protocol, class Record>
void requireRoundTrip(const Record& record) {
  const std::string bytes = encode<Protocol>(record);
  if (bytes.find("\\u0000") == std::string::npos) {
    require(encode<Protocol>(decode<Protocol, Record>(bytes)) == bytes,
            "a record survives being written");
  }
}

}  // namespace lineup::fuzz
