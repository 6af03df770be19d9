// The console's socket to the controller.

#pragma once

#include <thrift/transport/TSocket.h>

#include <chrono>
#include <cstdint>
#include <optional>

namespace lineup {

/// A TSocket whose transfers are restarted after a signal: each waits for bytes, or for room in the
/// send buffer, up to the time-out. Once a signal that ends the program has been caught, or has
/// arrived while HeldSignals hold it back, the rest of the call has 20 seconds in total.
class PatientSocket : public apache::thrift::transport::TSocket {
 public:
  using TSocket::TSocket;

  /// Reads what there is, up to `size` bytes. Throws TTransportException.
  uint32_t read(uint8_t* bytes, uint32_t size) override;

  /// Sends what there is room for. Throws TTransportException.
  uint32_t write_partial(const uint8_t* bytes, uint32_t size) override;

 private:
  void waitUntilReady(short events, int timeout);
  int patience(int timeout);

  std::optional<std::chrono::steady_clock::time_point> due_;  // set when a signal is seen
};

}  // namespace lineup
