// The console's end of a framed connection: every request is answered by exactly one frame.

#pragma once

#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TSocket.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include "controller/bounded_protocol.h"

namespace lineup {

/// A TFramedTransport over a socket that reads one frame for each request sent. It raises
/// TTransportException when a message does not fit its frame and when bytes follow the message, in
/// the frame or already behind it, instead of waiting for another frame. Memory for a frame grows
/// as its bytes arrive, whatever length its header claims. Once a signal waits to end the program,
/// the rest of a frame has to arrive within 20 seconds, however steadily it trickles in.
class FrameTransport : public apache::thrift::transport::TFramedTransport, public BoundedSource {
 public:
  explicit FrameTransport(const std::shared_ptr<apache::thrift::transport::TSocket>& socket);

  /// Sends the request; from now on one frame may be read.
  void flush() override;

  /// Ends the reading of a message; returns the bytes of its frame with the header.
  uint32_t readEnd() override;

  bool hasBytes(uint64_t count) override { return count <= bytesLeft(); }

 protected:
  bool readFrame() override;
  const uint8_t* borrowSlow(uint8_t* buffer, uint32_t* length) override;

 private:
  uint64_t bytesLeft() const { return static_cast<uint64_t>(rBound_ - rBase_); }
  void readAllFromSocket(uint8_t* bytes, uint32_t size);
  void giveUpIfOverdue();

  const std::shared_ptr<apache::thrift::transport::TSocket> socket_;
  std::optional<std::chrono::steady_clock::time_point> due_;  // set when a signal arrives
  bool replyExpected_ = false;
  uint32_t frameSize_ = 0;
};

}  // namespace lineup
