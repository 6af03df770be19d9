#include "controller/reply_transport.h"

#include "model/no_size_limits.h"

namespace lineup {

using apache::thrift::transport::TSocket;
using apache::thrift::transport::TTransportException;

ReplyTransport::ReplyTransport(const std::shared_ptr<TSocket>& socket)
    : TFramedTransport(socket, noSizeLimits()) {}

void ReplyTransport::flush() {
  TFramedTransport::flush();
  replyExpected_ = true;
}

bool ReplyTransport::waitForBytes(uint64_t count) {
  return count <= static_cast<uint64_t>(rBound_ - rBase_);
}

bool ReplyTransport::readFrame() {
  if (!replyExpected_) {
    throw TTransportException(TTransportException::END_OF_FILE,
                              "the reply is longer than its frame");
  }
  replyExpected_ = false;
  return TFramedTransport::readFrame();
}

// Called for more bytes than the frame has left. The caller would allocate them and then wait.
const uint8_t* ReplyTransport::borrowSlow(uint8_t* /*buffer*/, uint32_t* /*length*/) {
  throw TTransportException(TTransportException::END_OF_FILE, "a value is longer than its frame");
}

}  // namespace lineup
