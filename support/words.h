// Splitting a command line into words, and reading them.

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace lineup {

/// The results of `read`, called with each word of `text` as a std::string. Splits as
/// std::getline() with a delimiter does: two delimiters in a row have an empty word between them, a
/// leading one has an empty word before it, a trailing one adds nothing, and an empty text has no
/// words.
template <class Read>
auto readWords(const std::string& text, char delimiter, Read read) {
  std::vector<std::invoke_result_t<Read, std::string>> items;
  // Reserved, because growing a long list needs memory for two copies of it.
  items.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), delimiter)) + 1);
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find(delimiter, start), text.size());
    items.push_back(read(text.substr(start, end - start)));
    start = end + 1;
  }
  return items;
}

/// The words of `text`.
std::vector<std::string> splitWords(const std::string& text, char delimiter);

/// The number at the start of `word`, converted as strtol() does in base 10 where long has 32 bits:
/// leading white space and a sign are accepted, trailing characters are ignored, no number is 0,
/// and a number out of range is the nearest one in range.
int32_t readNumber(const std::string& word);

/// Whether `text` has neither blanks nor ASCII control characters, so that it can be typed as a
/// word or a part of one.
bool isOneWord(std::string_view text);

/// Turns `text` into upper case in place, byte by byte: bytes beyond ASCII stay as they are.
void upperCase(std::string& text);

}  // namespace lineup
