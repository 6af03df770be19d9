// Log records, which go to the system's log as those of syslog(3) do.

#pragma once

/// The levels are syslog's own: 3 error, 4 warning, 5 notice, 6 information, 7 debug.
enum LogLevel {
  LOG_LEVEL_ERROR = 3,
  LOG_LEVEL_WARNING = 4,
  LOG_LEVEL_NOTICE = 5,
  LOG_LEVEL_DEBUG = 7
};

/// Where records go.
enum LogTarget { LOG_TO_SYSLOG = 1, LOG_TO_STDERR = 2, LOG_TO_SYSLOG_AND_STDERR = 3 };

/// Sets up logging; call it once, before the first record. Records above `level` (3 to 7) are
/// dropped. `targets` is a LogTarget. Records begin with `program`, which has to outlive logging.
void log_setup(int level, int targets, const char* program = "lineup-console");

/// Writes one record of `level`, printf-style. `module` names the part of the program that speaks
/// and stands before the message; it may be null and is not a format itself. Never waits:
/// what the log, or standard error, does not take at once is dropped.
void log_function(int level, const char* module, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
