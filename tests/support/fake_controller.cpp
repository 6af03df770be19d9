#include "tests/support/fake_controller.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thrift/TApplicationException.h>
#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "WebSrv.h"

namespace lineup::test {

namespace {

using apache::thrift::TApplicationException;
using apache::thrift::protocol::T_EXCEPTION;
using apache::thrift::protocol::T_REPLY;
using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::transport::TMemoryBuffer;
using namespace korvel::thrift::hub_module;
namespace general = korvel::thrift::general;

constexpr int kPollMilliseconds = 10;

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

/// Reads the message in `frame` with stock library code alone.
ReceivedCall decode(const std::string& frame) {
  ReceivedCall call;
  call.frame = frame;
  const auto buffer = std::make_shared<TMemoryBuffer>();
  buffer->write(reinterpret_cast<const uint8_t*>(frame.data()),
                static_cast<uint32_t>(frame.size()));
  TBinaryProtocol protocol(buffer);
  protocol.readMessageBegin(call.method, call.type, call.sequence);
  if (call.method == "setHeadendConfig") {
    WebSrv_setHeadendConfig_args arguments;
    arguments.read(&protocol);
    call.config = arguments.config;
  } else if (call.method == "setTDTRFInputConfig") {
    WebSrv_setTDTRFInputConfig_args arguments;
    arguments.read(&protocol);
    call.tdt1 = arguments.tdt1;
    call.tdt2 = arguments.tdt2;
  } else if (call.method == "setSATRFInputConfig") {
    WebSrv_setSATRFInputConfig_args arguments;
    arguments.read(&protocol);
    call.satId = arguments.id;
    call.satConfig = arguments.config;
  }
  return call;
}

std::string notReady() {
  WebSrv_getHeadendConfig_result result;  // the exception has the same place in every call's result
  result.notReady.reason = "starting";
  result.__isset.notReady = true;
  return toBinary(result);
}

/// Sends `bytes`, as far as there is someone to read them.
void sendAll(int socket, std::string_view bytes, const Answer& answer) {
  while (!bytes.empty()) {
    const ssize_t sent =
        send(socket, bytes.data(), answer.byteByByte ? 1 : bytes.size(), MSG_NOSIGNAL);
    if (sent < 0) {
      return;
    }
    bytes.remove_prefix(static_cast<std::size_t>(sent));
    std::this_thread::sleep_for(answer.pause);
  }
}

}  // namespace

std::string recordReply(const std::string& method, const std::string& record) {
  return framed(binaryMessage(method, T_REPLY, 0, recordResult(record)));
}

FakeController::FakeController(uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  listenOn(AF_INET, &address, sizeof(address));
  socklen_t length = sizeof(address);
  getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length);
  port_ = ntohs(address.sin_port);
}

FakeController::FakeController(const std::string& path) : path_(path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof(address.sun_path)) {
    throw std::invalid_argument("path too long: " + path);
  }
  std::copy(path.begin(), path.end(), address.sun_path);
  listenOn(AF_UNIX, &address, sizeof(address));
}

FakeController::~FakeController() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
    changed_.notify_all();
  }
  thread_.join();
  close(listener_);
  if (!path_.empty()) {
    unlink(path_.c_str());
  }
}

void FakeController::listenOn(int family, const void* address, uint32_t length) {
  listener_ = socket(family, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (listener_ < 0) {
    fail("socket");
  }
  const int yes = 1;
  setsockopt(listener_, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
  if (bind(listener_, static_cast<const sockaddr*>(address), length) != 0 ||
      listen(listener_, SOMAXCONN) != 0) {
    const int reason = errno;
    close(listener_);
    errno = reason;
    fail("fake controller: cannot listen");
  }
  thread_ = std::thread([this] { serve(); });
}

void FakeController::answerNext(const Answer& answer) {
  const std::lock_guard lock(mutex_);
  next_.push_back(answer);
}

void FakeController::answerRightly(std::size_t count) {
  for (std::size_t call = 0; call < count; ++call) {
    answerNext({});
  }
}

void FakeController::release() {
  const std::lock_guard lock(mutex_);
  ++releases_;
  changed_.notify_all();
}

std::vector<std::string> FakeController::methods() const {
  std::vector<std::string> methods;
  for (const ReceivedCall& call : calls()) {
    methods.push_back(call.method);
  }
  return methods;
}

/// Waits for something to read, the peer's end included. False when this controller ends.
bool FakeController::waitUntilReadable(int socket) const {
  pollfd watched{socket, POLLIN, 0};
  while (poll(&watched, 1, kPollMilliseconds) <= 0) {
    if (held(ending_)) {
      return false;
    }
  }
  return true;
}

bool FakeController::readWhole(int socket, char* bytes, std::size_t size,
                               std::size_t bytesASecond) {
  constexpr std::size_t kStepsASecond = 20;
  while (size > 0) {
    if (!waitUntilReadable(socket)) {
      return false;
    }
    std::size_t most = size;
    if (bytesASecond > 0) {
      most = std::min(size, bytesASecond / kStepsASecond);
      std::this_thread::sleep_for(std::chrono::milliseconds(1000 / kStepsASecond));
    }
    const ssize_t got = recv(socket, bytes, most, 0);
    if (got <= 0) {
      return false;
    }
    bytes += got;
    size -= static_cast<std::size_t>(got);
  }
  return true;
}

void FakeController::serve() {
  while (waitUntilReadable(listener_)) {
    const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) {
      continue;
    }
    {
      const std::lock_guard lock(mutex_);
      ++connections_;
      const int least = 1;
      if (bytesASecond_ > 0) {
        setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &least, sizeof(least));
      }
    }
    const int yes = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof(yes));
    serveConnection(socket);
    close(socket);
  }
}

/// Answers calls until one side hangs up.
void FakeController::serveConnection(int socket) {
  for (;;) {
    uint32_t header = 0;
    if (!readWhole(socket, reinterpret_cast<char*>(&header), sizeof(header))) {
      const std::lock_guard lock(mutex_);
      closedByPeer_ += ending_ ? 0 : 1;
      changed_.notify_all();
      return;
    }
    std::string request(ntohl(header), '\0');
    std::size_t pace = 0;
    {
      const std::lock_guard lock(mutex_);
      ++begun_;
      pace = bytesASecond_;
      changed_.notify_all();
    }
    if (!readWhole(socket, request.data(), request.size(), pace)) {
      const std::lock_guard lock(mutex_);
      cutShort_ += ending_ ? 0 : 1;
      return;
    }
    if (!answerCall(socket, request)) {
      return;
    }
  }
}

/// Answers one call. False when the connection is to be closed.
bool FakeController::answerCall(int socket, const std::string& request) {
  const ReceivedCall call = decode(request);
  Answer answer;
  uint64_t untilRelease = 0;
  std::string bytes;
  {
    const std::lock_guard lock(mutex_);
    answer = next_.empty() ? all_ : next_.front();
    if (!next_.empty()) {
      next_.pop_front();
    }
    untilRelease = releases_ + 1;
    bytes = answerBytes(call, answer) + answer.after;
    calls_.push_back(call);
    calls_.back().connection = connections_;
    changed_.notify_all();
  }
  sendAll(socket, std::string_view(bytes).substr(0, answer.sentBytes), answer);
  if (answer.stalls) {
    waitUntil([&] { return ending_ || releases_ >= untilRelease; });
    if (!answer.goesOn || held(ending_)) {
      return false;
    }
    sendAll(socket, std::string_view(bytes).substr(answer.sentBytes), answer);
    return !answer.hangsUp;
  }
  return !answer.hangsUp && answer.sentBytes >= bytes.size();
}

std::string FakeController::answerBytes(const ReceivedCall& call, const Answer& answer) {
  const std::string& name = answer.name.empty() ? call.method : answer.name;
  const int32_t sequence = call.sequence + answer.sequenceOffset;
  const auto message = [&](const std::string& body) {
    return framed(binaryMessage(name, answer.type, sequence, body));
  };
  switch (answer.kind) {
    case Answer::kResult:
      return message(result(call));
    case Answer::kNotReady:
      return message(notReady());
    case Answer::kApplicationException:
      return framed(binaryMessage(
          name, T_EXCEPTION, sequence,
          toBinary(TApplicationException(TApplicationException::INTERNAL_ERROR, "broken"))));
    case Answer::kBytes:
      return answer.bytes;
  }
  throw std::logic_error("an unknown kind of answer");
}

/// Does what `call` asks and returns the encoded result.
std::string FakeController::result(const ReceivedCall& call) {
  if (call.method == "getHeadendConfig") {
    WebSrv_getHeadendConfig_result result;
    result.success = config_;
    result.__isset.success = true;
    return toBinary(result);
  }
  if (call.method == "getHeadendStatus" || call.method == "setHeadendConfig") {
    if (call.method == "setHeadendConfig") {
      config_ = call.config;
    }
    WebSrv_getHeadendStatus_result result;
    result.success = status_;
    result.__isset.success = true;
    return toBinary(result);
  }
  if (call.method == "setTDTRFInputConfig") {
    status_.tdtRFInputs[general::RFInputId::TDT1].config = call.tdt1;
    status_.tdtRFInputs[general::RFInputId::TDT2].config = call.tdt2;
  } else if (call.method == "setSATRFInputConfig") {
    status_.satRFInputs[call.satId].config = call.satConfig;
  }
  return toBinary(WebSrv_setSATRFInputConfig_result());
}

}  // namespace lineup::test
