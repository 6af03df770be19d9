// lineupctl: what scripts do with a headend, with the truth in the exit status.

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "controller/thrift_log.h"
#include "ctl/commands.h"
#include "ctl/failure.h"
#include "support/log.h"
#include "support/memory_limit.h"

namespace {

constexpr int kLogLevel = 5;
constexpr int kLogToSyslog = 1;

/// Puts /dev/null in the place of the standard streams that are closed, or the next connection or
/// file would take that place. To one that was closed nothing can be written.
void openClosedStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) < 0) {
      // Takes the lowest number that is free, and stays open.
      open("/dev/null", O_RDONLY);  // cppcheck-suppress leakReturnValNotUsed
    }
  }
}

/// Has memory that is freed used again, where the allocator would return large blocks to the system
/// and take new pages for the next: lists that grow and a large reply cost a tenth less so.
void keepFreedMemory() {
  constexpr int kMost = 32 << 20;  // what mallopt() takes at most
  mallopt(M_MMAP_THRESHOLD, kMost);
  mallopt(M_TRIM_THRESHOLD, kMost);
  mallopt(M_TOP_PAD, 1 << 20);
}

}  // namespace

int main(int argc, char* argv[]) {
  openClosedStreams();
  std::signal(SIGXFSZ, SIG_IGN);  // a write beyond the limit fails, as on a full disk
  lineup::limitMemory();
  keepFreedMemory();
  log_setup(kLogLevel, kLogToSyslog);
  lineup::routeThriftOutputToLog();
  try {
    return lineup::ctl::runCommand(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const lineup::ctl::Failure& failure) {
    lineup::ctl::complain(failure.what());
    return failure.status();
  } catch (const std::bad_alloc&) {
    lineup::ctl::complain("out of memory");
    return lineup::ctl::kFile;
  } catch (const std::exception& error) {
    lineup::ctl::complain(error.what());
    return lineup::ctl::kFile;
  }
}
