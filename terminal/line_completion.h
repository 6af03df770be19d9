// Completing the word that is typed.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "terminal/line_input.h"

namespace lineup {

/// What completing does.
struct Completion {
  std::vector<std::string> listed{};  ///< to be shown, before the line changes
  std::size_t erased = 0;             ///< how many letters before the cursor are erased
  std::wstring inserted{};            ///< in their place
};

/// Completes the last word of `begun`, a line up to its cursor, after which a blank may follow, to
/// what `candidates`, one or more, have in common. Several are listed where that is no more than
/// what was typed; a single one is listed if it has a note. A single one gets a blank after it,
/// unless a blank follows already or it ends with '/'.
Completion completeWord(const std::string& begun, bool blankFollows,
                        const std::vector<Candidate>& candidates);

}  // namespace lineup
