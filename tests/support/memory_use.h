// How much memory a piece of work takes at its worst.

#pragma once

#include <malloc.h>

#include <cstdint>
#include <fstream>
#include <string>

namespace lineup::test {

/// The memory that one megabyte of input may take.
inline constexpr int64_t kMemoryForAMegabyte = int64_t{64} * 1024 * 1024;

/// The figure after `name` ("VmRSS:", "VmHWM:") in the status of a process, in bytes.
inline int64_t memoryFigure(const std::string& name, const std::string& process = "self") {
  std::ifstream status("/proc/" + process + "/status");
  std::string word;
  int64_t kilobytes = 0;
  while (status >> word) {
    if (word == name) {
      status >> kilobytes;
      break;
    }
  }
  return kilobytes * 1024;
}

/// The most memory in bytes that `work` held at any time beyond what was held before it.
/// AddressSanitizer keeps what was freed and pads what is allocated; under it the result is 0.
template <class Work>
int64_t peakMemory(Work work) {
  malloc_trim(0);                                 // what was freed would be taken again unseen
  std::ofstream("/proc/self/clear_refs") << "5";  // the peak starts over
  const int64_t before = memoryFigure("VmRSS:");
  work();
#ifdef SANITIZED
  return 0 * before;
#else
  return memoryFigure("VmHWM:") - before;
#endif
}

}  // namespace lineup::test
