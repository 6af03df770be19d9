#include "tests/fuzz/surroundings.h"

#include <fcntl.h>
#include <netdb.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <thrift/Thrift.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <map>
#include <streambuf>
#include <string_view>
#include <utility>

#include "model/headend_places.h"
#include "support/ending_signals.h"
#include "terminal/line_input.h"
#include "tests/fuzz/require.h"

namespace lineup::fuzz {

namespace {

class Nowhere : public std::streambuf {
 protected:
  int overflow(int character) override { return traits_type::not_eof(character); }
  std::streamsize xsputn(const char* /*text*/, std::streamsize count) override { return count; }
};

struct Input {
  std::string text;
  std::size_t position = 0;
};

Input input;

// Descriptors of files without a name, by the path that the console knows.
std::map<std::string, int> files;

constexpr std::size_t kMostFiles = 16;

/// A new file's descriptor.
int newFile() {
  const int descriptor = memfd_create("file", MFD_CLOEXEC);
  require(descriptor >= 0, "a file can be made");
  return descriptor;
}

constexpr int kMemory = 32 << 20;
constexpr int kStepsBetweenLooks = 1000;
constexpr int kMostLooks = 20;

int looksLeft = 0;

int stopEndlessSelect(void* /*unused*/) {
  return --looksLeft < 0 ? 1 : 0;
}

}  // namespace

void beQuiet() {
  static Nowhere& nowhere = *new Nowhere;  // the streams are flushed at the end
  std::cout.rdbuf(&nowhere);
  std::cerr.rdbuf(&nowhere);
  apache::thrift::GlobalOutput.setOutputFunction([](const char* /*message*/) {});
}

void setInput(std::string text) {
  input = {std::move(text), 0};
}

void removeFiles() {
  for (const auto& [path, descriptor] : files) {
    close(descriptor);
  }
  files.clear();
}

}  // namespace lineup::fuzz

// ---- in place of terminal/line_input.cpp and support/ending_signals.cpp

namespace lineup {

bool readAnswer(std::string& line) {
  auto& [text, position] = fuzz::input;
  if (position >= text.size()) {
    return false;
  }
  const std::size_t end = text.find('\n', position);
  line = text.substr(position, end - position);
  position = end == std::string::npos ? text.size() : end + 1;
  return true;
}

bool readCommandLine(const std::string& /*prompt*/, const LineAids& /*aids*/, std::string& line) {
  return readAnswer(line);
}

void throwIfSignalled() {}
void waitFor(std::chrono::microseconds /*duration*/) {}
void throwIfInterrupted() {}
bool isSignalled() {
  return false;
}
bool isInterrupted() {
  return false;
}

RemoteCallUnderWay::RemoteCallUnderWay(std::chrono::seconds /*longest*/) {}
RemoteCallUnderWay::~RemoteCallUnderWay() {}

}  // namespace lineup

// ---- in place of the system's and SQLite's; the linker prescribes these names
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)

extern "C" {

void __real_sqlite3_progress_handler(sqlite3* handle, int steps, int (*look)(void*),
                                     void* argument);

int __wrap_connect(int /*socket*/, const sockaddr* /*address*/, socklen_t /*length*/) {
  errno = ECONNREFUSED;
  return -1;
}

int __wrap_getaddrinfo(const char* /*name*/, const char* /*service*/, const addrinfo* /*hints*/,
                       addrinfo** /*found*/) {
  return EAI_FAIL;
}

int __wrap_open(const char* path, int flags, ...) {
  using lineup::fuzz::files;
  if (!files.contains(path)) {
    if ((flags & O_CREAT) == 0 || files.size() >= lineup::fuzz::kMostFiles) {
      errno = ENOENT;
      return -1;
    }
    files.emplace(path, lineup::fuzz::newFile());
  }
  const std::string name = "/proc/self/fd/" + std::to_string(files.at(path));
  return openat(AT_FDCWD, name.c_str(), flags & ~O_CREAT);
}

void __wrap_sync() {}
int __wrap_syncfs(int /*descriptor*/) {
  return 0;
}

int __wrap_sqlite3_open_v2(const char* name, sqlite3** handle, int /*flags*/, const char* /*vfs*/) {
  using namespace lineup::fuzz;
  require(std::string_view(name) == lineup::kCataloguePath, "no database but the catalogue");
  *handle = catalogue();
  return SQLITE_OK;
}

int __wrap_sqlite3_close(sqlite3* handle) {
  lineup::fuzz::require(sqlite3_next_stmt(handle, nullptr) == nullptr,
                        "every statement is finalized");
  return SQLITE_OK;
}

void __wrap_sqlite3_progress_handler(sqlite3* handle, int steps, int (*look)(void*),
                                     void* argument) {
  using namespace lineup::fuzz;
  if (look == nullptr) {
    __real_sqlite3_progress_handler(handle, steps, look, argument);
    return;
  }
  looksLeft = kMostLooks;
  __real_sqlite3_progress_handler(handle, kStepsBetweenLooks, stopEndlessSelect, nullptr);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

sqlite3* lineup::fuzz::catalogue() {
  static sqlite3* const connection = [] {
    sqlite3* opened = nullptr;
    sqlite3_config(SQLITE_CONFIG_SINGLETHREAD);
    const int result = sqlite3_open(":memory:", &opened);
    sqlite3_hard_heap_limit64(kMemory);
    require(result == SQLITE_OK, "the catalogue can be made");
    return opened;
  }();
  return connection;
}
