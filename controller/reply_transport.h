// The console's end of a framed connection: every request is answered by exactly one frame.

#pragma once

#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TSocket.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "controller/bounded_protocol.h"

namespace lineup {

/// A TFramedTransport over a socket that reads one frame for each request sent. A message that does
/// not fit its frame throws TTransportException instead of waiting for another frame.
class ReplyTransport : public apache::thrift::transport::TFramedTransport, public BoundedSource {
 public:
  explicit ReplyTransport(const std::shared_ptr<apache::thrift::transport::TSocket>& socket);

  /// Sends the request; from now on one frame may be read.
  void flush() override;

  bool waitForBytes(uint64_t count) override;

  /// What the base class does, inlined: a number's few bytes are then taken by one move.
  [[gnu::always_inline]] uint32_t readAll(uint8_t* buffer, uint32_t length) {
    if (length > static_cast<std::size_t>(rBound_ - rBase_)) {
      return TFramedTransport::readAll(buffer, length);
    }
    std::memcpy(buffer, rBase_, length);
    rBase_ += length;
    return length;
  }

 protected:
  bool readFrame() override;
  const uint8_t* borrowSlow(uint8_t* buffer, uint32_t* length) override;

 private:
  bool replyExpected_ = false;
};

}  // namespace lineup
