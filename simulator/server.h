// The network side: framed binary Thrift on the loopback interface.

#pragma once

#include <csignal>
#include <functional>
#include <memory>

#include "WebSrv.h"
#include "model/namespaces.h"

namespace apache::thrift::transport {
class TServerSocket;
}

namespace lineup::simulator {

/// A TCP port of 127.0.0.1, bound by the constructor and served by one thread per connection, so
/// that an idle client delays nobody. An idle connection is closed after ten seconds, or when there
/// are too many.
class Server {
 public:
  /// Takes `port`, or a free one for 0. Throws std::runtime_error naming the port if it cannot be
  /// bound.
  explicit Server(int port);

  int port() const;

  /// SIGTERM, SIGINT, SIGHUP and SIGQUIT, but for those that are ignored, as in the background of a
  /// script or below nohup: sigwait() would accept a blocked signal even if its action is to be
  /// ignored.
  static sigset_t endingSignals();

  /// Answers calls until one of these signals, which every thread must have blocked; calls that
  /// have begun are finished, `atSignal` may hurry them. Returns false if serving failed before.
  bool serveUntilSignal(const std::shared_ptr<hub_module::WebSrvIf>& service,
                        const std::function<void()>& atSignal);

 private:
  std::shared_ptr<apache::thrift::transport::TServerSocket> socket_;
};

}  // namespace lineup::simulator
