// Lists of words for a terminal.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace lineup {

/// `items` set in columns, to be read downwards, for a terminal of `width` columns: at most
/// `height` lines (1 or more), each ending with a line feed. Items for which there is no room are
/// counted in the last line, "(N more)". An item too wide is cut, and what cannot be printed is
/// shown as '?', so that nothing in them reaches the terminal but letters.
std::string listInColumns(const std::vector<std::string>& items, std::size_t width,
                          std::size_t height);

}  // namespace lineup
