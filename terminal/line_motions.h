// What keys do to a line: moving the cursor, erasing, exchanging letters.

#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "terminal/line_places.h"

namespace lineup {

/// What a key does that moves the cursor to another place, or erases the text between the two. What
/// EraseAndKeep erases, Ctrl-Y inserts again.
struct LineMotion {
  enum class Does { Move, Erase, EraseAndKeep };

  wchar_t key;
  Does does;
  /// Where to, from `place`.
  std::size_t (*to)(const std::wstring& line, std::size_t place);
};

/// The motion of `key`; null if it is not such a key.
const LineMotion* motionOf(wchar_t key);

/// `line` with the letters before and at its cursor exchanged, or the last two, and the cursor
/// after them; none if there are not two.
std::optional<EditedLine> transpose(const EditedLine& line);

}  // namespace lineup
