// The client on a real socket, against a controller that answers rightly: connecting, time-outs,
// calls of any size, disconnecting.

#include "controller/simple_client.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "WebSrv.h"
#include "tests/support/fake_controller.h"
#include "tests/support/file_content.h"
#include "tests/support/random_records.h"

namespace lineup::test {
namespace {

using apache::thrift::transport::TTransportException;
using namespace korvel::thrift::hub_module;
using Client = korvel::thrift::utils::SimpleClient<WebSrvClient>;

constexpr int32_t kLongMs = 60000;  // never passes in a test

/// What the library says on standard error, kept from there and remembered.
std::vector<std::string> libraryOutput;

class SimpleClientTest : public testing::Test {
 protected:
  SimpleClientTest() {
    apache::thrift::GlobalOutput.setOutputFunction(
        [](const char* message) { libraryOutput.emplace_back(message); });
  }

  static Client connectTo(const FakeController& controller) {
    return Client("127.0.0.1", controller.port(), false, kLongMs, kLongMs, kLongMs);
  }
};

/// A socket that listens but never accepts, so that nobody reads what is sent to it.
class DeafListener {
 public:
  explicit DeafListener(int backlog) : socket_(socket(AF_INET, SOCK_STREAM, 0)) {
    address_.sin_family = AF_INET;
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address_);
    EXPECT_EQ(bind(socket_, generic(), length), 0);
    getsockname(socket_, generic(), &length);
    listen(socket_, backlog);
  }
  DeafListener(const DeafListener&) = delete;
  DeafListener& operator=(const DeafListener&) = delete;
  ~DeafListener() {
    close(socket_);
    for (const int filler : fillers_) {
      close(filler);
    }
  }

  uint16_t port() const { return ntohs(address_.sin_port); }

  /// Takes every place in its queue, so that nobody can connect any more.
  void fillQueue() {
    for (int& filler : fillers_) {
      filler = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
      static_cast<void>(connect(filler, generic(), sizeof(address_)));  // in progress, or in vain
    }
  }

 private:
  sockaddr* generic() { return reinterpret_cast<sockaddr*>(&address_); }

  int socket_;
  sockaddr_in address_{};
  std::array<int, 8> fillers_{-1, -1, -1, -1, -1, -1, -1, -1};
};

/// The kind of TTransportException that `work` throws.
template <class Work>
TTransportException::TTransportExceptionType transportError(Work work) {
  try {
    work();
  } catch (const TTransportException& error) {
    return error.getType();
  }
  ADD_FAILURE() << "nothing was thrown";
  return TTransportException::UNKNOWN;
}

TEST_F(SimpleClientTest, WritesTheVersionWordOfTheBinaryProtocol) {
  FakeController controller(0);
  Client client = connectTo(controller);
  HeadendConfig config;
  client.getHeadendConfig(config);
  const std::string expected = std::string("\x80\x01\0\x01\0\0\0\x10", 8) + "getHeadendConfig" +
                               std::string("\0\0\0\0\0", 5);
  EXPECT_EQ(controller.calls().at(0).frame, expected);
}

TEST_F(SimpleClientTest, ReadsAReplyWithoutTheVersionWord) {
  FakeController controller(0);
  const std::string name = "setSATRFInputConfig";
  Answer old{.kind = Answer::kBytes};
  old.bytes = framed(std::string("\0\0\0\x13", 4) + name + std::string("\x02\0\0\0\0\0", 6));
  controller.answerNext(old);
  Client client = connectTo(controller);
  EXPECT_NO_THROW(
      client.setSATRFInputConfig(korvel::thrift::general::RFInputId::SAT1, SATRFInputConfig()));
}

TEST_F(SimpleClientTest, UnixSocketHasTheAddressAndThePortInItsPath) {
  const std::string name = "lineup-test-" + std::to_string(getpid());
  FakeController controller("/tmp/sock-" + name + "-9190");
  controller.setConfig(randomHeadendConfig(1));
  Client client(name, 9190, true, kLongMs, kLongMs, kLongMs);
  HeadendConfig config;
  client.getHeadendConfig(config);
  EXPECT_EQ(config, randomHeadendConfig(1));
}

TEST_F(SimpleClientTest, RefusedConnectionIsRaisedAndLeavesNothingBehind) {
  uint16_t port = 0;
  {
    const FakeController gone(0);
    port = gone.port();
  }
  const std::size_t before = openDescriptors();
  EXPECT_EQ(transportError([&] { Client("127.0.0.1", port, false, kLongMs, kLongMs, kLongMs); }),
            TTransportException::NOT_OPEN);
  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(SimpleClientTest, MissingUnixSocketIsRaised) {
  EXPECT_EQ(transportError([] { Client("no-such-controller", 1, true, kLongMs, 0, 0); }),
            TTransportException::NOT_OPEN);
}

TEST_F(SimpleClientTest, DestructionClosesTheConnection) {
  FakeController controller(0);
  {
    Client client = connectTo(controller);
    HeadendConfig config;
    client.getHeadendConfig(config);
    EXPECT_EQ(controller.closedByPeer(), 0U);
  }
  controller.waitForClosed(1);
}

TEST_F(SimpleClientTest, ConnectTimeoutEndsTheWaitForAConnection) {
  DeafListener listener(0);
  listener.fillQueue();
  EXPECT_EQ(transportError([&] { Client("127.0.0.1", listener.port(), false, 100, 0, 0); }),
            TTransportException::NOT_OPEN);
}

TEST_F(SimpleClientTest, ReceiveTimeoutEndsTheWaitForAReplyAndForTheRestOfOne) {
  for (const std::size_t sent : {0U, 30U}) {
    FakeController controller(0);
    controller.answerNext(stalled(false, sent));
    Client client("127.0.0.1", controller.port(), false, 0, 100, 0);
    HeadendConfig config;
    EXPECT_EQ(transportError([&] { client.getHeadendConfig(config); }),
              TTransportException::TIMED_OUT);
  }
}

TEST_F(SimpleClientTest, SendTimeoutEndsTheWaitForRoomToSend) {
  const DeafListener listener(8);
  Client client("127.0.0.1", listener.port(), false, 0, 0, 100);
  HeadendConfig config;
  config.headendGlobalConfig.headendName.resize(64'000'000, 'x');
  HeadendStatus status;
  EXPECT_EQ(transportError([&] { client.setHeadendConfig(status, config); }),
            TTransportException::TIMED_OUT);
}

TEST_F(SimpleClientTest, TimeoutsOfZeroAndLessAreNotApplied) {
  libraryOutput.clear();
  for (const int32_t none : {0, -1}) {
    FakeController controller(0);
    Client client("127.0.0.1", controller.port(), false, none, none, none);
    HeadendConfig config;
    EXPECT_NO_THROW(client.getHeadendConfig(config));
  }
  EXPECT_EQ(libraryOutput, std::vector<std::string>());  // the library complains of a negative one
}

TEST_F(SimpleClientTest, FortyMegabytesAreCommittedAndFetched) {
  HeadendConfig config = randomHeadendConfig(1);
  for (int32_t key = 1; key <= 10000; ++key) {
    config.lineupConfig.dvbInputServices[key].service.name = std::string(4096, 'n');
    config.lineupConfig.rfEntries.emplace_back().serviceKey = key;
  }
  FakeController controller(0);
  Client client = connectTo(controller);
  HeadendStatus status;
  client.setHeadendConfig(status, config);
  EXPECT_GT(controller.calls().at(0).frame.size(), 40'000'000U);
  EXPECT_TRUE(controller.config() == config);
  HeadendConfig fetched;
  client.getHeadendConfig(fetched);
  EXPECT_TRUE(fetched == config);
}

TEST_F(SimpleClientTest, ReplyThatArrivesByteByByteIsRead) {
  FakeController controller(0);
  controller.setConfig(randomHeadendConfig(1));
  controller.answerNext({.byteByByte = true});
  Client client = connectTo(controller);
  HeadendConfig config;
  client.getHeadendConfig(config);
  EXPECT_EQ(config, randomHeadendConfig(1));
}

TEST_F(SimpleClientTest, ReplyBeforeAHangUpIsRead) {
  FakeController controller(0);
  controller.setStatus(randomHeadendStatus(1));
  controller.answerNext({.stalls = true});
  Client client = connectTo(controller);
  HeadendStatus status;
  client.getHeadendStatus(status);
  EXPECT_EQ(status, randomHeadendStatus(1));
  controller.release();
}

}  // namespace
}  // namespace lineup::test
