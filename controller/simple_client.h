// A Thrift client: the constructor connects it, the destructor disconnects it.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "controller/patient_socket.h"
#include "controller/reply_protocol.h"
#include "controller/reply_transport.h"
#include "model/no_size_limits.h"

namespace korvel::thrift::utils {

/// The generated `Client` over a connection of its own: framed transport, binary protocol. For one
/// thread; calls throw what `Client` throws.
template <class Client>
class SimpleClient : public virtual Client {
 public:
  /// Connects to `address` and `port`, or, with `unixSocket`, to the Unix socket
  /// /tmp/sock-ADDRESS-PORT. The time-outs are in milliseconds and apply when greater than 0: to
  /// connecting, and to each wait for bytes of a reply and each wait for room to send. Throws
  /// TTransportException if there is no connection.
  SimpleClient(const std::string& address, int32_t port, bool unixSocket, int32_t connectTimeout,
               int32_t receiveTimeout, int32_t sendTimeout)
      : SimpleClient(makeSocket(address, port, unixSocket)) {
    if (connectTimeout > 0) {
      socket_->setConnTimeout(connectTimeout);
    }
    if (receiveTimeout > 0) {
      socket_->setRecvTimeout(receiveTimeout);
    }
    if (sendTimeout > 0) {
      socket_->setSendTimeout(sendTimeout);
    }
    transport_->open();
  }

 private:
  using Socket = lineup::PatientSocket;

  explicit SimpleClient(const std::shared_ptr<Socket>& socket)
      : SimpleClient(socket, std::make_shared<lineup::ReplyTransport>(socket)) {}

  SimpleClient(const std::shared_ptr<Socket>& socket,
               const std::shared_ptr<lineup::ReplyTransport>& transport)
      : SimpleClient(socket, transport, std::make_shared<lineup::ReplyProtocol>(transport)) {}

  SimpleClient(std::shared_ptr<Socket> socket, std::shared_ptr<lineup::ReplyTransport> transport,
               std::shared_ptr<lineup::ReplyProtocol> protocol)
      : Client(protocol),
        socket_(std::move(socket)),
        transport_(std::move(transport)),
        protocol_(std::move(protocol)) {}

  static std::shared_ptr<Socket> makeSocket(const std::string& address, int32_t port,
                                            bool unixSocket) {
    if (unixSocket) {
      return std::make_shared<Socket>("/tmp/sock-" + address + "-" + std::to_string(port),
                                      lineup::noSizeLimits());
    }
    return std::make_shared<Socket>(address, port, lineup::noSizeLimits());
  }

  // Released in reverse order; the connection closes with the socket.
  std::shared_ptr<Socket> socket_;
  std::shared_ptr<lineup::ReplyTransport> transport_;
  std::shared_ptr<lineup::ReplyProtocol> protocol_;
};

}  // namespace korvel::thrift::utils
