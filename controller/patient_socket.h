// The console's end of a connection to the controller.

#pragma once

#include <thrift/transport/TSocket.h>

#include <chrono>
#include <cstdint>
#include <optional>

namespace lineup {

/// A TSocket whose transfers are not cut short by signals: they wait for bytes, or for room, up to
/// the time-out, again and again. Once a signal has been caught that ends the program, they have 20
/// seconds for all that is left, however steadily it trickles.
class PatientSocket : public apache::thrift::transport::TSocket {
 public:
  using TSocket::TSocket;

  /// Reads what there is, up to `size` bytes. Raises TTransportException.
  uint32_t read(uint8_t* bytes, uint32_t size) override;

  /// Sends what there is room for. Raises TTransportException.
  uint32_t write_partial(const uint8_t* bytes, uint32_t size) override;

 private:
  void waitUntilReady(short events, int timeout);
  void giveUpIfOverdue();

  std::optional<std::chrono::steady_clock::time_point> due_;  // set when a signal is seen
};

}  // namespace lineup
