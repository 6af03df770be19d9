// Consoles in which one call fails, blocks or is the last.

#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/program_process.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {

/// A console with the folder to work in, and for its copies.
Start startIn(const TemporaryFolder& folder, bool terminal);

/// The copies in the folder and in those below it.
std::vector<std::filesystem::path> copiesIn(const TemporaryFolder& folder);

/// The headend's id in a copy.
int32_t idIn(const std::filesystem::path& copy);

/// Which call, and what happens at it: see fault_injection.cpp.
struct Fault {
  std::string kind{};
  long at = 0;
  std::string on = "once";
  int error = 0;
  int haste = 1;
};

/// Has `start` meet the fault; the file `counts` receives what FaultCounts reads.
void injectFault(Start& start, const Fault& fault, const std::string& counts);

/// What came of a fault so far.
struct FaultCounts {
  explicit FaultCounts(const std::string& path);
  long calls = 0;   ///< how many calls of the kind were made
  long faults = 0;  ///< how many of them failed, blocked or were the last
};

/// The numbers from 1 to `count`: about `sample` of them, spread over it, or all if TORTURE_WHOLE
/// is set in the environment, as scripts/torture does.
std::vector<long> placesAmong(long count, long sample);

}  // namespace lineup::test
