// The console's socket to the controller.

#pragma once

#include <thrift/transport/TSocket.h>

#include <cstdint>

namespace lineup {

/// A TSocket whose transfers are restarted after a signal: each waits for bytes, or for room in the
/// send buffer, up to the time-out.
class PatientSocket : public apache::thrift::transport::TSocket {
 public:
  using TSocket::TSocket;

  /// Reads what there is, up to `size` bytes. Throws TTransportException.
  uint32_t read(uint8_t* bytes, uint32_t size) override;

  /// Sends what there is room for. Throws TTransportException.
  uint32_t write_partial(const uint8_t* bytes, uint32_t size) override;

 private:
  void waitUntilReady(short events, int timeout);
};

}  // namespace lineup
