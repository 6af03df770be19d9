// The mark that says whether something is switched on.

#pragma once

namespace lineup {

inline const char* checkMark(bool enabled) {
  return enabled ? "✓" : "✕";
}

}  // namespace lineup
