#include "support/log.h"

#include <syslog.h>

#include <cstdarg>
#include <string>

namespace {

constexpr int kConsoleTarget = 2;

}  // namespace

void log_setup(int level, int targets) {
  openlog("lineup-console", LOG_PID | ((targets & kConsoleTarget) != 0 ? LOG_PERROR : 0), LOG_USER);
  setlogmask(LOG_UPTO(level));
}

void log_function(int level, const char* module, const char* format, ...) {
  std::string line;
  if (module != nullptr) {
    line.append("[").append(module).append("] ");
  }
  line += format;
  va_list arguments;
  va_start(arguments, format);
  vsyslog(level, line.c_str(), arguments);
  va_end(arguments);
}
