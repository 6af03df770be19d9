// The program's command line.

#pragma once

#include <cstdint>
#include <string>

namespace lineup {

struct CommandLineOptions {
  bool console = false;
  int32_t level = 5;  ///< 3 (error) to 7 (debug)
  bool version = false;
  bool help = false;
  std::string saveFile;
  std::string restoreFile;
  std::string headendType;
  std::string programName;  ///< argv[0]
  int32_t firstOperand =
      0;  ///< index of the first argument that is no option; operands are ignored
};

/// Reads the options; the last of a repeated one wins. Throws a std::string, the message for the
/// user, for a level out of range. Help, an unknown option and a missing argument end the process
/// in printUsage().
CommandLineOptions parseOptions(int argc, char* argv[]);

/// Ends the process with `status`, after the usage text on standard output if it is 0, else after a
/// hint on standard error.
[[noreturn]] void printUsage(const std::string& programName, int status);

}  // namespace lineup
