// Reading records from a peer or a file that may be broken or hostile: claimed sizes are checked
// against the bytes that there are.

#pragma once

#include <thrift/protocol/TProtocol.h>

#include <cstdint>
#include <memory>

namespace lineup {

/// A transport that knows how much there is to read: one reply frame, or one file.
class BoundedSource {
 public:
  virtual ~BoundedSource() = default;
  /// Whether there are at least `count` more bytes. Waits for the bytes of a pipe.
  virtual bool waitForBytes(uint64_t count) = 0;
};

/// `Base` (TBinaryProtocol or TJSONProtocol) over a BoundedSource. It reads and writes what `Base`
/// does, but throws TProtocolException(SIZE_LIMIT) for a container that claims more elements than
/// there are bytes left, before memory is allocated for them.
template <class Base>
class BoundedProtocol : public Base {
 public:
  /// `transport` is a TTransport and a BoundedSource in one; the protocol shares it.
  template <class Transport>
  explicit BoundedProtocol(const std::shared_ptr<Transport>& transport)
      : Base(transport), source_(*transport) {}

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

 private:
  using Exception = apache::thrift::protocol::TProtocolException;

  void checkClaim(uint32_t elements) {
    if (!source_.waitForBytes(elements)) {
      throw Exception(Exception::SIZE_LIMIT,
                      "a container claims more elements than there are bytes");
    }
  }

  BoundedSource& source_;
};

}  // namespace lineup
