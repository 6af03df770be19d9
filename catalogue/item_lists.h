// The catalogue's columns that hold a list: items with commas between them.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace lineup {

/// The items as they stand, blanks and empty items included. A trailing comma adds nothing, and an
/// empty text has no items.
std::vector<std::string> parseTextList(const std::string& text);

/// The number that each item begins with. Raises std::invalid_argument for an item without one and
/// std::out_of_range for one beyond 32 bits, both with the text "stoi".
std::vector<int32_t> parseIntegerList(const std::string& text);

}  // namespace lineup
