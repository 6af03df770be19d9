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

/// What `read` makes of each word of `text`, a std::string. Words are the pieces between
/// delimiters: two delimiters in a row have an empty word between them and a leading one has an
/// empty word before it; a trailing one adds nothing, and an empty text has no words.
template <class Read>
auto readWords(const std::string& text, char delimiter, Read read) {
  std::vector<std::invoke_result_t<Read, std::string>> items;
  // A text of nothing but delimiters makes a long list, which would take twice as much if it grew.
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

/// The number that `word` begins with, as strtol reads it in base 10: leading white space and a
/// sign are accepted, trailing junk is ignored, no number is 0. A number beyond 32 bits is the
/// nearest one within them, as on a 32-bit board.
int32_t readNumber(const std::string& word);

/// Whether `text` can be a word or a part of one: it has neither blanks nor control characters.
bool isOneWord(std::string_view text);

/// Turns `text` into upper case in place, byte by byte: bytes beyond ASCII stay as they are.
void upperCase(std::string& text);

}  // namespace lineup
