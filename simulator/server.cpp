#include "simulator/server.h"

#include <signal.h>
#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/server/TThreadedServer.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TServerSocket.h>
#include <thrift/transport/TSocket.h>
#include <unistd.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>

#include "model/no_size_limits.h"

namespace lineup::simulator {

using apache::thrift::protocol::TBinaryProtocolFactory;
using apache::thrift::server::TThreadedServer;
using apache::thrift::transport::TFramedTransport;
using apache::thrift::transport::TServerSocket;
using apache::thrift::transport::TSocket;
using apache::thrift::transport::TTransport;
using apache::thrift::transport::TTransportException;
using apache::thrift::transport::TTransportFactory;

namespace {

// How long a connection may say nothing, and how long its peer may take nothing.
constexpr int kReceiveTimeoutMs = 60000;
constexpr int kSendTimeoutMs = 5000;
// Well below the descriptors that a process may open.
constexpr int64_t kMostConnections = 500;

class UnlimitedServerSocket : public TServerSocket {
 public:
  using TServerSocket::TServerSocket;

  /// The server listens when it starts to serve; this port is taken long before.
  void listen() override {
    if (!isOpen()) TServerSocket::listen();
  }

 protected:
  std::shared_ptr<TSocket> createSocket(THRIFT_SOCKET client) override {
    return std::make_shared<TSocket>(client, pChildInterruptSockReader_, noSizeLimits());
  }
};

class UnlimitedFramedTransportFactory : public TTransportFactory {
 public:
  std::shared_ptr<TTransport> getTransport(std::shared_ptr<TTransport> transport) override {
    return std::make_shared<TFramedTransport>(transport, noSizeLimits());
  }
};

}  // namespace

Server::Server(int port) : socket_(std::make_shared<UnlimitedServerSocket>("127.0.0.1", port)) {
  socket_->setRecvTimeout(kReceiveTimeoutMs);
  socket_->setSendTimeout(kSendTimeoutMs);
  try {
    socket_->listen();
  } catch (const TTransportException& error) {
    throw std::runtime_error("cannot listen on 127.0.0.1 port " + std::to_string(port) + ": " +
                             error.what());
  }
}

int Server::port() const {
  return socket_->getPort();
}

bool Server::serveUntilSignal(
    const std::shared_ptr<korvel::thrift::hub_module::WebSrvIf>& service) {
  TThreadedServer server(std::make_shared<korvel::thrift::hub_module::WebSrvProcessor>(service),
                         socket_, std::make_shared<UnlimitedFramedTransportFactory>(),
                         std::make_shared<TBinaryProtocolFactory>());
  server.setConcurrentClientLimit(kMostConnections);
  std::atomic<bool> told = false;
  const auto stopOnSignal = [&server, &told] {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    int signal = 0;
    sigwait(&signals, &signal);
    told = true;
    server.stop();
  };
  std::thread waiter(stopOnSignal);
  server.serve();
  const bool asked = told;
  if (!asked) kill(getpid(), SIGTERM);
  waiter.join();
  return asked;
}

}  // namespace lineup::simulator
