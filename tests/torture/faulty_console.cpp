#include "tests/torture/faulty_console.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <system_error>

#include "controller/complete_config_file.h"
#include "support/descriptor.h"
#include "tests/support/matches.h"

namespace lineup::test {

namespace fs = std::filesystem;

Start startIn(const TemporaryFolder& folder, bool terminal) {
  Start start;
  start.terminal = terminal;
  start.folder = folder.path();
  start.environment = {
      {"TERM", "dumb"}, {"XDG_STATE_HOME", folder.path()}, {"TMPDIR", folder.path()}};
  return start;
}

std::vector<fs::path> copiesIn(const TemporaryFolder& folder) {
  std::error_code none;
  std::vector<fs::path> copies;
  for (const auto& entry : fs::recursive_directory_iterator(folder.path(), none)) {
    if (matches(entry.path().filename().string(), "lineup-console-[-0-9]+[.]json")) {
      copies.push_back(entry.path());
    }
  }
  return copies;
}

int32_t idIn(const fs::path& copy) {
  return readCompleteConfigFile(copy).headendGlobalConfig.headendId;
}

namespace {

/// Takes the place of the system's log, and reads nothing. Returns its name.
const std::string& unreadLog() {
  static const std::string name = "log of " + std::to_string(getpid());
  static const Descriptor log(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  static const bool bound = [] {
    sockaddr_un address{AF_UNIX, {}};
    std::copy(name.begin(), name.end(), address.sun_path + 1);  // an abstract name
    return bind(log.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }();
  EXPECT_TRUE(bound);
  return name;
}

}  // namespace

void injectFault(Start& start, const Fault& fault, const std::string& counts) {
  start.environment["LD_PRELOAD"] = FAULT_INJECTION;
  start.environment["ASAN_OPTIONS"] = "verify_asan_link_order=0:allocator_may_return_null=1";
  start.environment["FAULT_KIND"] = fault.kind;
  start.environment["FAULT_AT"] = std::to_string(fault.at);
  start.environment["FAULT_ON"] = fault.on;
  start.environment["FAULT_ERROR"] = std::to_string(fault.error);
  start.environment["FAULT_HASTE"] = std::to_string(fault.haste);
  start.environment["FAULT_LOG"] = unreadLog();
  start.environment["FAULT_COUNT"] = counts;
}

FaultCounts::FaultCounts(const std::string& path) {
  long both[2] = {0, 0};
  std::ifstream(path).read(reinterpret_cast<char*>(both), sizeof both);
  calls = both[0];
  faults = both[1];
}

std::vector<long> placesAmong(long count, long sample) {
  const bool whole = std::getenv("TORTURE_WHOLE") != nullptr;
  const long step = whole ? 1 : std::max(1L, count / sample);
  std::vector<long> places;
  for (long place = whole ? 1 : 1 + step / 2; place <= count; place += step) {
    places.push_back(place);
  }
  return places;
}

}  // namespace lineup::test
