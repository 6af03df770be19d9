#include "terminal/line_motions.h"

#include <algorithm>
#include <iterator>

#include "terminal/terminal_keys.h"

namespace lineup {

namespace {

std::size_t lineBegin(const std::wstring& /*line*/, std::size_t /*place*/) {
  return 0;
}

std::size_t lineEnd(const std::wstring& line, std::size_t /*place*/) {
  return line.size();
}

using Does = LineMotion::Does;
constexpr LineMotion kMotions[] = {
    {key::kLeft, Does::Move, letterBefore},
    {key::kRight, Does::Move, letterAfter},
    {key::kWordLeft, Does::Move, wordBefore},
    {key::kWordRight, Does::Move, wordAfter},
    {key::kBeginning, Does::Move, lineBegin},
    {key::kEnd, Does::Move, lineEnd},
    {key::kBackspace, Does::Erase, letterBefore},
    {key::kRubout, Does::Erase, letterBefore},
    {key::kDelete, Does::Erase, letterAfter},
    {key::kEndOfInput, Does::Erase, letterAfter},
    {key::kEraseWord, Does::EraseAndKeep, wordAfter},
    {key::kEraseWordBefore, Does::EraseAndKeep, wordBefore},
    {key::kEraseToBlank, Does::EraseAndKeep, blankDelimitedBefore},
    {key::kEraseToBeginning, Does::EraseAndKeep, lineBegin},
    {key::kEraseToEnd, Does::EraseAndKeep, lineEnd},
};

}  // namespace

const LineMotion* motionOf(wchar_t key) {
  const auto* const motion =
      std::find_if(std::begin(kMotions), std::end(kMotions),
                   [key](const LineMotion& candidate) { return candidate.key == key; });
  return motion == std::end(kMotions) ? nullptr : motion;
}

std::optional<EditedLine> transpose(const EditedLine& line) {
  const std::wstring& text = line.text;
  const std::size_t end = letterAfter(text, line.cursor);
  const std::size_t middle = letterBefore(text, end);
  const std::size_t begin = letterBefore(text, middle);
  if (begin == middle) {
    return {};
  }
  const std::wstring first = text.substr(begin, middle - begin);
  const std::wstring second = text.substr(middle, end - middle);
  return EditedLine{text.substr(0, begin) + second + first + text.substr(end), end};
}

}  // namespace lineup
