#include "simulator/server.h"

#include <sys/socket.h>
#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/server/TThreadedServer.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TServerSocket.h>
#include <thrift/transport/TSocket.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "model/headend_places.h"
#include "model/no_size_limits.h"
#include "simulator/headend_service.h"
#include "support/signal_sets.h"

namespace lineup::simulator {

using apache::thrift::protocol::TBinaryProtocolFactory;
using apache::thrift::protocol::TProtocol;
using apache::thrift::server::TThreadedServer;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TServerSocket;
using apache::thrift::transport::TSocket;
using apache::thrift::transport::TTransport;
using apache::thrift::transport::TTransportException;
using apache::thrift::transport::TTransportFactory;

namespace {

// How long a connection may send nothing, and how long its peer may receive nothing.
constexpr int kReceiveTimeoutMs = 10000;
constexpr int kSendTimeoutMs = 5000;
// Well below RLIMIT_NOFILE.
constexpr std::size_t kMostConnections = 200;

class ListeningSocket : public TServerSocket {
 public:
  using TServerSocket::TServerSocket;

  /// Called again when the server starts to serve; the socket listens already then.
  void listen() override {
    if (!isOpen()) {
      TServerSocket::listen();
    }
  }

 protected:
  /// Called for each new connection by the one thread that accepts them.
  std::shared_ptr<TSocket> createSocket(THRIFT_SOCKET client) override {
    makeRoom();
    auto socket = std::make_shared<TSocket>(client, pChildInterruptSockReader_, noSizeLimits());
    connections_.push_back(socket);
    return socket;
  }

 private:
  /// Shuts the oldest connection down when there are too many, so that idle clients keep nobody
  /// out. The descriptor of a connection that was closed meanwhile is not in use again, as only
  /// this thread opens sockets.
  void makeRoom() {
    std::erase_if(connections_, [](const auto& connection) { return connection.expired(); });
    if (connections_.size() < kMostConnections) {
      return;
    }
    if (const auto oldest = connections_.front().lock()) {
      shutdown(oldest->getSocketFD(), SHUT_RDWR);
    }
    connections_.pop_front();
  }

  std::deque<std::weak_ptr<TSocket>> connections_;  // the oldest first
};

class UnlimitedFramedTransportFactory : public TTransportFactory {
 public:
  std::shared_ptr<TTransport> getTransport(std::shared_ptr<TTransport> transport) override {
    return std::make_shared<TFramedTransport>(transport, noSizeLimits());
  }
};

class Processor : public hub_module::WebSrvProcessor {
 public:
  using WebSrvProcessor::WebSrvProcessor;

 protected:
  bool dispatchCall(TProtocol* in, TProtocol* out, const std::string& name, int32_t sequence,
                    void* context) override {
    try {
      return WebSrvProcessor::dispatchCall(in, out, name, sequence, context);
    } catch (const BrokenOff&) {
      return false;  // closes the connection
    }
  }
};

}  // namespace

Server::Server(int port) : socket_(std::make_shared<ListeningSocket>(kControllerAddress, port)) {
  socket_->setRecvTimeout(kReceiveTimeoutMs);
  socket_->setSendTimeout(kSendTimeoutMs);
  try {
    socket_->listen();
  } catch (const TTransportException& error) {
    throw std::runtime_error(std::string("cannot listen on ") + kControllerAddress + " port " +
                             std::to_string(port) + ": " + error.what());
  }
}

sigset_t Server::endingSignals() {
  sigset_t signals = signalSet({});
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT}) {
    if (!isIgnored(signal)) {
      sigaddset(&signals, signal);
    }
  }
  return signals;
}

int Server::port() const {
  return socket_->getPort();
}

bool Server::serveUntilSignal(const std::shared_ptr<hub_module::WebSrvIf>& service,
                              const std::function<void()>& atSignal) {
  TThreadedServer server(std::make_shared<Processor>(service), socket_,
                         std::make_shared<UnlimitedFramedTransportFactory>(),
                         std::make_shared<TBinaryProtocolFactory>());
  std::atomic<bool> told = false;
  const auto stopOnSignal = [&server, &told, &atSignal] {
    const sigset_t signals = endingSignals();
    int signal = 0;
    sigwait(&signals, &signal);
    told = true;
    atSignal();
    server.stop();
  };
  std::thread waiter(stopOnSignal);
  server.serve();
  const bool asked = told;
  if (!asked) {
    kill(getpid(), SIGTERM);
  }
  waiter.join();
  return asked;
}

}  // namespace lineup::simulator
