// Takes the place of line_editing.cpp in a build without libedit.

#include <string>

#include "terminal/line_editing.h"

namespace lineup {

bool canEditLines() {
  return false;
}

// COVERAGE_EXCL_START: never called then
Edited editLine(const std::string& /*prompt*/, const LineAids& /*aids*/, std::string& line) {
  line.clear();
  return Edited::End;
}

void rememberLine(const std::string& /*line*/) {}
// COVERAGE_EXCL_STOP

}  // namespace lineup
