#include "support/log.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>

#include "support/time_text.h"

namespace lineup {

namespace {

constexpr char kSocket[] = "/dev/log";

int highestLevel = LOG_DEBUG;
bool onConsole = false;
const char* programName = "lineup-console";

/// The connection to the system's log. syslog(3) itself would wait for a log that nobody reads.
class SystemLog {
 public:
  /// Hands the record over at once or not at all. Tries a new connection if the old one is over.
  void send(const std::string& record) {
    for (int attempt = 0; attempt < 2; ++attempt) {
      if (socket_ < 0 && !connect()) {
        return;
      }
      const std::size_t size = record.size() + (stream_ ? 1 : 0);  // the NUL ends it on a stream
      ssize_t sent = 0;
      do {
        sent = ::send(socket_, record.c_str(), size, MSG_DONTWAIT | MSG_NOSIGNAL);
      } while (sent < 0 && errno == EINTR);
      const bool whole = sent == static_cast<ssize_t>(size);
      if (whole || (sent < 0 && (errno == EAGAIN || errno == ENOBUFS || errno == EMSGSIZE))) {
        return;
      }
      disconnect();
    }
  }

 private:
  bool connect() {
    for (const int type : {SOCK_DGRAM, SOCK_STREAM}) {
      socket_ = socket(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
      sockaddr_un address{};
      address.sun_family = AF_UNIX;
      std::copy(std::begin(kSocket), std::end(kSocket), address.sun_path);
      if (::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
        stream_ = type == SOCK_STREAM;
        return true;
      }
      disconnect();
    }
    return false;
  }

  void disconnect() {
    if (socket_ >= 0) {
      close(socket_);
    }
    socket_ = -1;
  }

  int socket_ = -1;
  bool stream_ = false;
};

SystemLog& systemLog() {
  static SystemLog log;
  return log;
}

/// Writes what standard error takes at once. A pipe or a terminal that is ready for writing takes
/// PIPE_BUF bytes.
void writeToConsole(std::string_view text) {
  while (!text.empty()) {
    pollfd errors{STDERR_FILENO, POLLOUT, 0};
    const int ready = poll(&errors, 1, 0);
    if (ready < 0 && errno == EINTR) {
      continue;
    }
    const std::size_t size = std::min<std::size_t>(text.size(), PIPE_BUF);
    const ssize_t count = ready == 1 ? write(STDERR_FILENO, text.data(), size) : -1;
    if (count < 0 && (ready != 1 || errno != EINTR)) {
      return;
    }
    text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  }
}

std::string formatted(const char* format, va_list arguments) {
  char* text = nullptr;
  const int size = vasprintf(&text, format, arguments);
  const std::unique_ptr<char, decltype(&std::free)> owner(size < 0 ? nullptr : text, std::free);
  return owner == nullptr ? std::string() : std::string(text, static_cast<std::size_t>(size));
}

}  // namespace

}  // namespace lineup

void log_setup(int level, int targets, const char* program) {
  lineup::programName = program;
  lineup::highestLevel = level;
  lineup::onConsole = (targets & LOG_TO_STDERR) != 0;
}

void log_function(int level, const char* module, const char* format, ...) {
  if (level > lineup::highestLevel) {
    return;
  }
  std::string record = std::string(lineup::programName) + "[" + std::to_string(getpid()) + "]: ";
  if (module != nullptr) {
    record.append("[").append(module).append("] ");
  }
  va_list arguments;
  va_start(arguments, format);
  record += lineup::formatted(format, arguments);
  va_end(arguments);
  if (lineup::onConsole) {
    lineup::writeToConsole(record + '\n');
  }
  const std::string time = lineup::timeText("%b %e %T ", std::time(nullptr));
  lineup::systemLog().send('<' + std::to_string(LOG_USER | level) + '>' + time + record);
}
