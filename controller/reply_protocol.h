// The binary protocol of a client that makes one call at a time.

#pragma once

#include <thrift/TApplicationException.h>
#include <thrift/protocol/TBinaryProtocol.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "controller/bounded_protocol.h"
#include "controller/reply_transport.h"

namespace lineup {

/// A binary protocol that overrides the reading of field and container headers. The library casts
/// any byte to TType and multiplies a count unchecked, both undefined behaviour. Throws
/// TProtocolException for an unknown type and for a negative count.
/// The transport's class is a template argument, so that values are read without a virtual call.
class CheckedBinaryProtocol : public apache::thrift::protocol::TBinaryProtocolT<ReplyTransport> {
 public:
  using TBinaryProtocolT::TBinaryProtocolT;
  using TType = apache::thrift::protocol::TType;

  uint32_t readFieldBegin_virt(std::string& /*name*/, TType& type, int16_t& id) override {
    id = 0;
    const uint32_t read = readType(type);
    return type == apache::thrift::protocol::T_STOP ? read : read + readI16(id);
  }

  // The headers of containers; BoundedProtocol calls these.

  uint32_t readListBegin(TType& type, uint32_t& size) {
    const uint32_t read = readType(type);
    return read + readCount(size);
  }

  uint32_t readSetBegin(TType& type, uint32_t& size) { return readListBegin(type, size); }

  uint32_t readMapBegin(TType& keyType, TType& valueType, uint32_t& size) {
    const uint32_t read = readType(keyType);
    return read + readListBegin(valueType, size);
  }

 private:
  using Exception = apache::thrift::protocol::TProtocolException;

  uint32_t readType(TType& type) {
    int8_t byte = 0;
    const uint32_t read = readByte(byte);
    if (byte < apache::thrift::protocol::T_STOP || byte > apache::thrift::protocol::T_LIST) {
      throw Exception(Exception::INVALID_DATA, "unknown type");
    }
    type = static_cast<TType>(byte);
    return read;
  }

  uint32_t readCount(uint32_t& count) {
    int32_t number = 0;
    const uint32_t read = readI32(number);
    if (number < 0) {
      throw Exception(Exception::NEGATIVE_SIZE);
    }
    count = static_cast<uint32_t>(number);
    return read;
  }
};

/// A binary protocol that throws TApplicationException at once for any message that does not answer
/// the call last written: one that is neither reply nor exception, or has another method name. A
/// generated client skips such a message and waits for another.
class ReplyProtocol : public BoundedProtocol<CheckedBinaryProtocol> {
 public:
  using BoundedProtocol::BoundedProtocol;

  uint32_t writeMessageBegin_virt(const std::string& name,
                                  const apache::thrift::protocol::TMessageType type,
                                  const int32_t sequence) override {
    method_ = name;
    return BoundedProtocol::writeMessageBegin(name, type, sequence);
  }

  uint32_t readMessageBegin_virt(std::string& name, apache::thrift::protocol::TMessageType& type,
                                 int32_t& sequence) override {
    using apache::thrift::TApplicationException;
    const uint32_t read = BoundedProtocol::readMessageBegin(name, type, sequence);
    if (!answersACall(type)) {
      throw TApplicationException(TApplicationException::INVALID_MESSAGE_TYPE, "not a reply");
    }
    if (name != method_) {
      throw TApplicationException(TApplicationException::WRONG_METHOD_NAME, "another call's reply");
    }
    return read;
  }

 private:
  /// Whether `type`, which the library casts from any byte, is that of a reply or an
  /// exception.
  static bool answersACall(const apache::thrift::protocol::TMessageType& type) {
    static_assert(sizeof(type) == sizeof(uint32_t));
    uint32_t number = 0;
    std::memcpy(&number, &type, sizeof(number));
    return number == apache::thrift::protocol::T_REPLY ||
           number == apache::thrift::protocol::T_EXCEPTION;
  }

  std::string method_;
};

}  // namespace lineup
