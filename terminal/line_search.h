// Searching the earlier lines for one that has a text in it.

#pragma once

#include <optional>
#include <string>

#include "terminal/line_history.h"

namespace lineup {

/// A search by the keys that are typed: letters, those that erase the last one, and the one that
/// goes on to the next line before.
class LineSearch {
 public:
  /// `history` has to outlive it, and to stay as it is.
  explicit LineSearch(const LineHistory& history) : history_(history) {}

  /// Searches on with `key`; returns false, and does nothing, if it is none of those.
  bool take(wchar_t key);

  /// What is shown below the line: what is searched for, and whether it was found.
  std::wstring note() const;

  /// The line that was found last, and where in it.
  const std::optional<LineHistory::Place>& place() const { return place_; }

 private:
  const LineHistory& history_;
  std::wstring part_{};
  std::optional<LineHistory::Place> place_{};
  bool found_ = false;  ///< whether `part_` is in the history
};

}  // namespace lineup
