// Replies of a broken or hostile controller, to every call that the console makes.
//
// The first byte of an input says which call is answered, how much of the reply the input holds and
// in what pieces it arrives; the rest is the reply.

#include <thrift/TApplicationException.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "WebSrv.h"
#include "controller/reply_protocol.h"
#include "controller/reply_transport.h"
#include "model/no_size_limits.h"
#include "print/show_command.h"
#include "tests/fuzz/memory_limit.h"
#include "tests/fuzz/round_trip.h"
#include "tests/support/encoding.h"

namespace {

namespace hub_module = korvel::thrift::hub_module;
namespace general = korvel::thrift::general;
namespace test = lineup::test;
using apache::thrift::transport::TSocket;

/// A connection whose peer has sent `reply` and nothing more.
class ConnectionWithReply : public TSocket {
 public:
  ConnectionWithReply(std::string reply, std::size_t pieceSize)
      : TSocket(lineup::noSizeLimits()), reply_(std::move(reply)), pieceSize_(pieceSize) {}

  bool isOpen() const override { return true; }
  void write(const uint8_t* /*bytes*/, uint32_t /*length*/) override {}

  uint32_t read(uint8_t* buffer, uint32_t length) override {
    const std::size_t count =
        std::min({static_cast<std::size_t>(length), pieceSize_, reply_.size() - taken_});
    std::memcpy(buffer, reply_.data() + taken_, count);
    taken_ += count;
    return static_cast<uint32_t>(count);
  }

 private:
  const std::string reply_;
  const std::size_t pieceSize_;
  std::size_t taken_ = 0;
};

constexpr const char* kCalls[] = {"getHeadendConfig", "getHeadendStatus", "setHeadendConfig",
                                  "setTDTRFInputConfig", "setSATRFInputConfig"};
constexpr std::size_t kGetConfig = 0;
constexpr uint32_t kLongestInput = 100000;
constexpr uint8_t kCallBits = 0x07;
constexpr uint8_t kBareResult = 0x08;   // the input lacks frame and message header
constexpr uint8_t kBareMessage = 0x10;  // the input lacks the frame's header
constexpr uint8_t kSmallPieces = 0x20;

std::string replyFrom(uint8_t control, const std::string& method, std::string bytes) {
  if ((control & kBareResult) != 0) {
    bytes = test::binaryMessage(method, apache::thrift::protocol::T_REPLY, 0, bytes);
  }
  if ((control & (kBareResult | kBareMessage)) != 0) {
    bytes = test::framed(bytes);
  }
  return bytes;
}

struct Received {
  hub_module::HeadendConfig config;
  hub_module::HeadendStatus status;
  bool complete = false;
};

void receive(std::size_t call, const std::shared_ptr<TSocket>& connection, Received& received) {
  const lineup::fuzz::MemoryLimit limit;
  const auto transport = std::make_shared<lineup::ReplyTransport>(connection);
  transport->setMaxFrameSize(kLongestInput);  // what a frame claims is allocated
  hub_module::WebSrvClient client(std::make_shared<lineup::ReplyProtocol>(transport));
  try {
    switch (call) {
      case kGetConfig:
        client.getHeadendConfig(received.config);
        break;
      case 1:
        client.getHeadendStatus(received.status);
        break;
      case 2:
        client.setHeadendConfig(received.status, received.config);
        break;
      case 3:
        client.setTDTRFInputConfig({}, {});
        break;
      default:
        client.setSATRFInputConfig(general::RFInputId::SAT1, {});
    }
    received.complete = true;
  } catch (const apache::thrift::TException&) {
  } catch (const std::bad_alloc&) {
    lineup::fuzz::require(false, "a reply never takes all memory");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  const uint8_t control = data[0];
  const std::size_t call = (control & kCallBits) % std::size(kCalls);
  const std::size_t pieceSize = (control & kSmallPieces) != 0 ? 3 : 65536;
  Received received;
  receive(call,
          std::make_shared<ConnectionWithReply>(
              replyFrom(control, kCalls[call],
                        std::string(reinterpret_cast<const char*>(data) + 1, size - 1)),
              pieceSize),
          received);

  if (received.complete && call == kGetConfig) {
    lineup::configDebugString(received.config);
    lineup::fuzz::requireRoundTrip(received.config);
    lineup::fuzz::requireFileRoundTrip(received.config);
  } else if (received.complete) {
    lineup::fuzz::requireRoundTrip(received.status);
  }
  return 0;
}
