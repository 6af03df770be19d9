// Reading records from a peer or a file that may be broken or hostile: what it claims is believed
// only as far as it can be true.

#pragma once

#include <thrift/protocol/TProtocol.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

namespace lineup {

/// A transport that knows how much there is to read: one reply frame, or one file.
class BoundedSource {
 public:
  virtual ~BoundedSource() = default;
  /// Whether there are at least `count` more bytes. May wait for them, where they come from a pipe.
  virtual bool hasBytes(uint64_t count) = 0;
};

/// `Base` (TBinaryProtocol or TJSONProtocol) over a BoundedSource. It reads and writes what `Base`
/// does, but raises TProtocolException(SIZE_LIMIT) for
///  - a container that claims more elements than there are bytes left, and
///  - more records in containers than half the fields read, or 65,536 if that is more: an absent
///    field takes its place in memory but not a byte of the message, so that a megabyte of empty
///    records would take several hundred. Those of the interface's records that stand in containers
///    have at least two fields, which every writer writes.
template <class Base>
class BoundedProtocol : public Base {
 public:
  /// `transport` is a TTransport and a BoundedSource in one; the protocol shares it.
  template <class Transport>
  explicit BoundedProtocol(const std::shared_ptr<Transport>& transport)
      : Base(transport), source_(*transport) {}

  uint32_t readFieldBegin_virt(std::string& name, apache::thrift::protocol::TType& type,
                               int16_t& id) override {
    const uint32_t read = Base::readFieldBegin(name, type, id);
    fields_ += type != apache::thrift::protocol::T_STOP ? 1U : 0U;
    recordIsField_ = type == apache::thrift::protocol::T_STRUCT;
    return read;
  }

  uint32_t readStructBegin_virt(std::string& name) override {
    if (!recordIsField_) {
      countRecord();
    }
    recordIsField_ = false;
    return Base::readStructBegin(name);
  }

  uint32_t readListBegin_virt(apache::thrift::protocol::TType& type, uint32_t& size) override {
    const uint32_t read = Base::readListBegin(type, size);
    checkClaim(size);
    return read;
  }

  uint32_t readSetBegin_virt(apache::thrift::protocol::TType& type, uint32_t& size) override {
    const uint32_t read = Base::readSetBegin(type, size);
    checkClaim(size);
    return read;
  }

  uint32_t readMapBegin_virt(apache::thrift::protocol::TType& keyType,
                             apache::thrift::protocol::TType& valueType, uint32_t& size) override {
    const uint32_t read = Base::readMapBegin(keyType, valueType, size);
    checkClaim(size);
    return read;
  }

  /// Skips through the functions above; `Base` would skip through its own.
  uint32_t skip_virt(apache::thrift::protocol::TType type) override {
    return apache::thrift::protocol::skip(static_cast<apache::thrift::protocol::TProtocol&>(*this),
                                          type);
  }

 protected:
  /// Begins the count of records anew, for the next frame of the source.
  void restartCount() {
    records_ = 0;
    fields_ = 0;
    recordIsField_ = false;
  }

 private:
  using Exception = apache::thrift::protocol::TProtocolException;

  static constexpr uint64_t kFieldsPerRecord = 2;
  static constexpr uint64_t kRecordsAlwaysAllowed = 65536;

  void countRecord() {
    if (++records_ > std::max(kRecordsAlwaysAllowed, fields_ / kFieldsPerRecord)) {
      throw Exception(Exception::SIZE_LIMIT, "more records than the fields can fill");
    }
  }

  void checkClaim(uint32_t elements) {
    if (!source_.hasBytes(elements)) {
      throw Exception(Exception::SIZE_LIMIT,
                      "a container claims more elements than there are bytes");
    }
  }

  BoundedSource& source_;
  uint64_t records_ = 0;
  uint64_t fields_ = 0;
  bool recordIsField_ = false;  // the next record is a field's value, no element of a container
};

}  // namespace lineup
