// The program's command line.

#pragma once

#include <cstdint>
#include <string>

#include "support/log.h"

namespace lineup {

struct CommandLineOptions {
  bool console = false;
  int32_t level = LOG_LEVEL_NOTICE;  ///< 3 (error) to 7 (debug)
  bool version = false;
  bool help = false;
  std::string saveFile;
  std::string restoreFile;
  std::string headendType;
  std::string programName;   ///< argv[0]
  int32_t firstOperand = 0;  ///< index in argv of the first operand; operands are ignored
};

/// Parses the options with getopt_long(); the last occurrence of an option counts. Throws a
/// std::string, the message for the user, for a level out of range. For help, an unknown option or
/// a missing argument it does not return: it calls printUsage().
CommandLineOptions parseOptions(int argc, char* argv[]);

/// Prints the usage text on standard output if `status` is 0, else a hint on standard error, and
/// calls exit(status).
[[noreturn]] void printUsage(const std::string& programName, int status);

}  // namespace lineup
