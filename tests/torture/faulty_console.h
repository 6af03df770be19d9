// Consoles in which one call fails, blocks or is the last.

#pragma once

#include <string>
#include <vector>

#include "tests/support/program_process.h"

namespace lineup::test {

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
