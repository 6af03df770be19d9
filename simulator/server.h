// The network side: framed binary Thrift on the loopback interface.

#pragma once

#include <memory>

#include "WebSrv.h"

namespace apache::thrift::transport {
class TServerSocket;
}

namespace lineup::simulator {

/// A TCP port of 127.0.0.1, taken when it is made, and served by one thread a connection, so that
/// nobody waits for a client that has connected and sends nothing.
class Server {
 public:
  /// Takes `port`, or a free one for 0. Raises std::runtime_error naming the port if it cannot be
  /// had.
  explicit Server(int port);

  int port() const;

  /// Answers calls until SIGTERM or SIGINT, which every thread must have blocked; calls that have
  /// begun are finished. Returns false if the port broke before.
  bool serveUntilSignal(const std::shared_ptr<korvel::thrift::hub_module::WebSrvIf>& service);

 private:
  std::shared_ptr<apache::thrift::transport::TServerSocket> socket_;
};

}  // namespace lineup::simulator
