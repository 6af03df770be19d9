// Places in a line that is edited: before which of its characters the cursor may stand.

#pragma once

#include <cstddef>
#include <string>

namespace lineup {

// A letter is a character and those after it that have no column of their own, such as combining
// marks. A word is made of letters, digits and what is usual in names and URLs. A place is the
// number of characters before it; each function returns one between letters.

/// A line that is edited, and the place of its cursor.
struct EditedLine {
  std::wstring text;
  std::size_t cursor;
};

/// Where the letter before `place` begins.
std::size_t letterBefore(const std::wstring& line, std::size_t place);

/// Where the letter at `place` ends.
std::size_t letterAfter(const std::wstring& line, std::size_t place);

/// Where the word before `place` begins.
std::size_t wordBefore(const std::wstring& line, std::size_t place);

/// Where the word at or after `place` ends.
std::size_t wordAfter(const std::wstring& line, std::size_t place);

/// Where the text between blanks before `place` begins.
std::size_t blankDelimitedBefore(const std::wstring& line, std::size_t place);

}  // namespace lineup
