// lineupctl: shows, compares, saves and applies configurations for scripts; the exit status tells
// the outcome.

#include <fcntl.h>
#include <malloc.h>

#include <csignal>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "controller/thrift_log.h"
#include "ctl/commands.h"
#include "ctl/failure.h"
#include "support/closed_streams.h"
#include "support/log.h"
#include "support/memory_limit.h"

namespace {

/// Keeps freed memory for the next allocations. By default the allocator returns large blocks to
/// the system, so that lists that grow and large replies cost a tenth more.
void keepFreedMemory() {
  constexpr int kMost = 32 << 20;  // what mallopt() takes at most
  mallopt(M_MMAP_THRESHOLD, kMost);
  mallopt(M_TRIM_THRESHOLD, kMost);
  mallopt(M_TOP_PAD, 1 << 20);
}

}  // namespace

int main(int argc, char* argv[]) {
  lineup::openClosedStreams(O_RDONLY);  // so that printing to a closed one is an error
  std::signal(SIGXFSZ, SIG_IGN);        // a write beyond the limit fails, as on a full disk
  lineup::limitMemory();
  keepFreedMemory();
  log_setup(LOG_LEVEL_NOTICE, LOG_TO_SYSLOG, "lineupctl");
  lineup::routeThriftOutputToLog();
  try {
    return lineup::ctl::runCommand(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const lineup::ctl::Failure& failure) {
    lineup::ctl::complain(failure.what());
    return failure.status();
  } catch (const std::bad_alloc&) {
    lineup::ctl::complain(lineup::ctl::kOutOfMemory);
    return lineup::ctl::kFile;
  } catch (const std::exception& error) {
    lineup::ctl::complain(error.what());
    return lineup::ctl::kFile;
  }
}
