#include "controller/patient_socket.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <optional>

namespace lineup {

using apache::thrift::transport::TTransportException;

namespace {

/// The bytes that were transferred, or nothing where it is to be tried again.
std::optional<uint32_t> transferred(ssize_t count, const char* what) {
  if (count >= 0) {
    return static_cast<uint32_t>(count);
  }
  if (errno == EAGAIN || errno == EINTR) {
    return std::nullopt;
  }
  throw TTransportException(TTransportException::UNKNOWN, what, errno);
}

}  // namespace

uint32_t PatientSocket::read(uint8_t* bytes, uint32_t size) {
  while (true) {
    waitUntilReady(POLLIN, recvTimeout_);
    if (const auto count = transferred(recv(getSocketFD(), bytes, size, MSG_DONTWAIT), "recv")) {
      return *count;
    }
  }
}

uint32_t PatientSocket::write_partial(const uint8_t* bytes, uint32_t size) {
  while (true) {
    waitUntilReady(POLLOUT, sendTimeout_);
    constexpr int kFlags = MSG_DONTWAIT | MSG_NOSIGNAL;
    if (const auto count = transferred(send(getSocketFD(), bytes, size, kFlags), "send")) {
      return *count;
    }
  }
}

/// `timeout` is in milliseconds; 0 for none. A signal does not begin it anew.
void PatientSocket::waitUntilReady(short events, int timeout) {
  using Clock = std::chrono::steady_clock;
  using std::chrono::milliseconds;
  const Clock::time_point end = Clock::now() + milliseconds(timeout);
  pollfd connection{getSocketFD(), events, 0};
  int ready = -1;
  do {
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::now()).count();
    ready = poll(&connection, 1, timeout > 0 ? static_cast<int>(std::max<int64_t>(left, 0)) : -1);
  } while (ready < 0 && errno == EINTR);
  if (ready < 0) {
    throw TTransportException(TTransportException::UNKNOWN, "poll", errno);
  }
  if (ready == 0) {
    throw TTransportException(TTransportException::TIMED_OUT, "the peer takes too long");
  }
}

}  // namespace lineup
