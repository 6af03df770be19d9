// Records for the system's log, at whose socket each test listens itself.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string>

#include "support/descriptor.h"
#include "support/log.h"
#include "tests/support/matches.h"
#include "tests/support/temporary_folder.h"

namespace {

std::string socketPath;

sockaddr_un socketAddress() {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::copy(socketPath.begin(), socketPath.end(), std::begin(address.sun_path));
  return address;
}

}  // namespace

/// Takes the place of the C library's: /dev/log is where the test has it.
extern "C" int connect(int descriptor, const sockaddr* address, socklen_t size) {
  const sockaddr_un ours = socketAddress();
  const bool isLog =
      address->sa_family == AF_UNIX &&
      std::string("/dev/log") == reinterpret_cast<const sockaddr_un*>(address)->sun_path;
  return static_cast<int>(isLog ? syscall(SYS_connect, descriptor, &ours, sizeof ours)
                                : syscall(SYS_connect, descriptor, address, size));
}

namespace lineup::test {
namespace {

class SystemLog : public testing::Test {
 protected:
  SystemLog() {
    // The name of a socket is short, that of the folder perhaps not.
    socketPath = "/proc/self/fd/" + std::to_string(place_.number()) + "/log";
    log_setup(LOG_LEVEL_DEBUG, LOG_TO_SYSLOG);
  }

  /// A socket of the type (SOCK_DGRAM or SOCK_STREAM) in the log's place, in that of one before.
  Descriptor listenAs(int type) const {
    Descriptor listener(socket(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const sockaddr_un address = socketAddress();
    unlink(socketPath.c_str());
    EXPECT_EQ(bind(listener.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
              0);
    if (type == SOCK_STREAM) {
      EXPECT_EQ(listen(listener.number(), 1), 0);
    }
    return listener;
  }

  /// What has arrived; empty if there is nothing.
  static std::string received(const Descriptor& socket) {
    std::string text(10'000, '\0');
    const ssize_t count = recv(socket.number(), text.data(), text.size(), 0);
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return text;
  }

  const TemporaryFolder folder_;
  const Descriptor place_{open(folder_.path().c_str(), O_PATH | O_CLOEXEC)};
};

TEST_F(SystemLog, GetsTheLevelTheTimeTheProgramAndTheText) {
  const Descriptor log = listenAs(SOCK_DGRAM);
  log_function(LOG_LEVEL_WARNING, "db", "code %d", 5);
  const std::string record = received(log);  // facility 1, "user", and level 4
  EXPECT_TRUE(matches(record,
                      "<12>[A-Z][a-z]{2} [ 1-3][0-9] [0-9]{2}:[0-9]{2}:[0-9]{2} "
                      "lineup-console\\[[0-9]+\\]: \\[db\\] code 5"))
      << record;
  EXPECT_NE(record.find("[" + std::to_string(getpid()) + "]"), std::string::npos);
}

TEST_F(SystemLog, ThatNobodyReadsIsNotWaitedForAndGetsLaterRecordsOnceItIsRead) {
  const Descriptor log = listenAs(SOCK_DGRAM);
  for (int count = 0; count < 10'000; ++count) {
    log_function(LOG_LEVEL_DEBUG, nullptr, "number %d", count);
  }
  EXPECT_TRUE(received(log).ends_with("number 0"));
  std::string last;
  for (std::string next = received(log); !next.empty(); next = received(log)) {
    last = next;
  }
  EXPECT_FALSE(last.ends_with("number 9999"));
  log_function(LOG_LEVEL_DEBUG, nullptr, "late");
  EXPECT_TRUE(received(log).ends_with(": late"));
}

TEST_F(SystemLog, ThatIsStartedAgainGetsTheNextRecord) {
  Descriptor log = listenAs(SOCK_DGRAM);
  log_function(LOG_LEVEL_DEBUG, nullptr, "before");
  EXPECT_NE(received(log), "");
  log = Descriptor();
  log_function(LOG_LEVEL_DEBUG, nullptr, "meanwhile");
  log = listenAs(SOCK_DGRAM);
  log_function(LOG_LEVEL_DEBUG, nullptr, "after");
  EXPECT_TRUE(received(log).ends_with(": after"));
}

TEST_F(SystemLog, ThatIsAStreamGetsRecordsThatEndWithNul) {
  const Descriptor log = listenAs(SOCK_STREAM);
  log_function(LOG_LEVEL_DEBUG, nullptr, "one");
  log_function(LOG_LEVEL_DEBUG, nullptr, "two");
  const Descriptor connection(accept(log.number(), nullptr, nullptr));
  const std::string records = received(connection);
  EXPECT_NE(records.find(": one" + std::string(1, '\0') + "<15>"), std::string::npos) << records;
  EXPECT_TRUE(records.ends_with(": two" + std::string(1, '\0'))) << records;
}

}  // namespace
}  // namespace lineup::test
