#include "controller/frame_transport.h"

#include <arpa/inet.h>

#include <algorithm>
#include <limits>

#include "controller/unlimited.h"
#include "support/ending_signals.h"

namespace lineup {

using apache::thrift::transport::TSocket;
using apache::thrift::transport::TTransportException;

namespace {

constexpr uint32_t kFirstBufferSize = 64 * 1024;

}  // namespace

FrameTransport::FrameTransport(const std::shared_ptr<TSocket>& socket)
    : TFramedTransport(socket, unlimited()), socket_(socket) {}

void FrameTransport::flush() {
  TFramedTransport::flush();
  replyExpected_ = true;
}

bool FrameTransport::readFrame() {
  if (!replyExpected_) {
    throw TTransportException(TTransportException::END_OF_FILE,
                              "the reply is longer than its frame");
  }
  replyExpected_ = false;
  uint32_t header = 0;
  readAllFromSocket(reinterpret_cast<uint8_t*>(&header), sizeof(header));
  const uint32_t size = ntohl(header);
  if (size > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) {
    throw TTransportException(TTransportException::CORRUPTED_DATA, "negative frame size");
  }
  for (uint32_t have = 0; have < size;) {
    if (have == rBufSize_) {
      const uint32_t larger = std::min(size, std::max(kFirstBufferSize, 2 * have));
      decltype(rBuf_) buffer(new uint8_t[larger]);  // its type differs between Thrift's releases
      std::copy_n(rBuf_.get(), have, buffer.get());
      rBuf_.swap(buffer);
      rBufSize_ = larger;
    }
    const uint32_t part = std::min(size, rBufSize_) - have;
    readAllFromSocket(rBuf_.get() + have, part);
    have += part;
  }
  frameSize_ = size;
  setReadBuffer(rBuf_.get(), size);
  return true;
}

void FrameTransport::readAllFromSocket(uint8_t* bytes, uint32_t size) {
  for (uint32_t have = 0; have < size;) {
    const uint32_t part = socket_->read(bytes + have, size - have);
    if (part == 0) {
      throw TTransportException(TTransportException::END_OF_FILE, "No more data to read.");
    }
    have += part;
    giveUpIfOverdue();
  }
}

void FrameTransport::giveUpIfOverdue() {
  constexpr std::chrono::seconds kPatience(20);  // as for each single wait
  if (!isEndingSignalHeld()) {
    return;
  }
  const auto now = std::chrono::steady_clock::now();
  due_ = due_.value_or(now + kPatience);
  if (now > *due_) {
    throw TTransportException(TTransportException::TIMED_OUT, "the reply only trickles in");
  }
}

uint32_t FrameTransport::readEnd() {
  if (bytesLeft() != 0 || socket_->hasPendingDataToRead()) {
    throw TTransportException(TTransportException::CORRUPTED_DATA, "more bytes follow the reply");
  }
  return frameSize_ + static_cast<uint32_t>(sizeof(frameSize_));
}

// Called for more bytes than the frame has left. The caller would allocate them and then wait.
const uint8_t* FrameTransport::borrowSlow(uint8_t* /*buffer*/, uint32_t* /*length*/) {
  throw TTransportException(TTransportException::END_OF_FILE, "a value is longer than its frame");
}

}  // namespace lineup
