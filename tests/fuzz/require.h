// What holds for every input.

#pragma once

#include <cstdio>
#include <cstdlib>

namespace lineup::fuzz {

/// Ends the process, which counts as a finding, if `holds` is false.
inline void require(bool holds, const char* what) {
  if (!holds) {
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
  }
}

}  // namespace lineup::fuzz
