#include "controller/patient_socket.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>

#include "support/ending_signals.h"

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

/// `timeout` is in milliseconds; 0 for none.
void PatientSocket::waitUntilReady(short events, int timeout) {
  pollfd connection{getSocketFD(), events, 0};
  int ready = -1;
  do {
    giveUpIfOverdue();
    ready = poll(&connection, 1, timeout > 0 ? timeout : -1);
  } while (ready < 0 && errno == EINTR);
  if (ready < 0) {
    throw TTransportException(TTransportException::UNKNOWN, "poll", errno);
  }
  if (ready == 0) {
    throw TTransportException(TTransportException::TIMED_OUT, "the peer takes too long");
  }
}

void PatientSocket::giveUpIfOverdue() {
  constexpr std::chrono::seconds kPatience(20);  // as for each single wait
  if (!isSignalled()) {
    return;
  }
  const auto now = std::chrono::steady_clock::now();
  due_ = due_.value_or(now + kPatience);
  if (now > *due_) {
    throw TTransportException(TTransportException::TIMED_OUT, "the peer only trickles");
  }
}

}  // namespace lineup
