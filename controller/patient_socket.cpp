#include "controller/patient_socket.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

#include "support/ending_signals.h"
#include "support/held_signals.h"

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
    ready = poll(&connection, 1, patience(timeout));
  } while (ready < 0 && errno == EINTR);
  if (ready < 0) {
    throw TTransportException(TTransportException::UNKNOWN, "poll", errno);
  }
  if (ready == 0) {
    throw TTransportException(TTransportException::TIMED_OUT, "the peer takes too long");
  }
}

/// How many milliseconds a wait may take, -1 for any number: up to `timeout`, and once a signal has
/// been seen, what is left to the call. Throws TTransportException if nothing is.
int PatientSocket::patience(int timeout) {
  constexpr std::chrono::milliseconds kAfterASignal(20'000);  // as for each single wait
  if (!isSignalled() && !HeldSignals::hasArrived()) {
    return timeout > 0 ? timeout : -1;
  }
  const auto now = std::chrono::steady_clock::now();
  due_ = due_.value_or(now + kAfterASignal);
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(*due_ - now);
  if (left.count() <= 0) {
    throw TTransportException(TTransportException::TIMED_OUT, "the peer only trickles");
  }
  return static_cast<int>(timeout > 0 ? std::min<int64_t>(timeout, left.count()) : left.count());
}

}  // namespace lineup
