#include "terminal/line_places.h"

#include <cwchar>
#include <cwctype>
#include <string_view>

namespace lineup {

namespace {

bool hasNoColumn(wchar_t character) {
  return wcwidth(character) == 0;
}

bool isOfWord(wchar_t character) {
  constexpr std::wstring_view kInWords = L"*?_-.[]~=";
  return std::iswalnum(static_cast<wint_t>(character)) != 0 ||
         kInWords.find(character) != std::wstring_view::npos;
}

bool isBlank(wchar_t character) {
  return character == L' ';
}

using Kind = bool (*)(wchar_t character);

/// The place before the letters that are, or are not, of this kind and end at `place`.
std::size_t before(const std::wstring& line, std::size_t place, Kind kind, bool are) {
  while (place > 0 && kind(line[letterBefore(line, place)]) == are) {
    place = letterBefore(line, place);
  }
  return place;
}

std::size_t after(const std::wstring& line, std::size_t place, Kind kind, bool are) {
  while (place < line.size() && kind(line[place]) == are) {
    place = letterAfter(line, place);
  }
  return place;
}

}  // namespace

std::size_t letterBefore(const std::wstring& line, std::size_t place) {
  place -= place > 0 ? 1 : 0;
  while (place > 0 && hasNoColumn(line[place])) {
    --place;
  }
  return place;
}

std::size_t letterAfter(const std::wstring& line, std::size_t place) {
  place += place < line.size() ? 1 : 0;
  while (place < line.size() && hasNoColumn(line[place])) {
    ++place;
  }
  return place;
}

std::size_t wordBefore(const std::wstring& line, std::size_t place) {
  return before(line, before(line, place, isOfWord, false), isOfWord, true);
}

std::size_t wordAfter(const std::wstring& line, std::size_t place) {
  return after(line, after(line, place, isOfWord, false), isOfWord, true);
}

std::size_t blankDelimitedBefore(const std::wstring& line, std::size_t place) {
  return before(line, before(line, place, isBlank, true), isBlank, false);
}

}  // namespace lineup
