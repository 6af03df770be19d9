#include "terminal/column_list.h"

#include <algorithm>
#include <cwchar>
#include <cwctype>
#include <iterator>

namespace lineup {

namespace {

constexpr std::size_t kGap = 2;

struct Cell {
  std::string text;
  std::size_t width = 0;
};

/// The beginning of `text` that fits into `width` columns, printable.
Cell makeCell(const std::string& text, std::size_t width) {
  Cell cell;
  std::mbstate_t state{};
  for (std::size_t begin = 0; begin < text.size();) {
    wchar_t letter = 0;
    std::size_t size = std::mbrtowc(&letter, text.data() + begin, text.size() - begin, &state);
    if (size == 0 || size > text.size() - begin) {  // a zero byte, or no letter of this locale
      size = 1;
      letter = 0;
      state = {};
    }
    const bool printable = std::iswprint(static_cast<wint_t>(letter)) != 0;
    const auto columns = static_cast<std::size_t>(printable ? std::max(wcwidth(letter), 0) : 1);
    if (columns > width - cell.width) {
      break;
    }
    cell.text += printable ? text.substr(begin, size) : "?";
    cell.width += columns;
    begin += size;
  }
  return cell;
}

std::vector<Cell> makeCells(const std::vector<std::string>& items, std::size_t count,
                            std::size_t width) {
  std::vector<Cell> cells;
  cells.reserve(count);
  std::transform(items.begin(), items.begin() + static_cast<std::ptrdiff_t>(count),
                 std::back_inserter(cells),
                 [width](const std::string& item) { return makeCell(item, width); });
  return cells;
}

std::size_t widestOf(const std::vector<Cell>& cells) {
  std::size_t widest = 1;
  for (const Cell& cell : cells) {
    widest = std::max(widest, cell.width);
  }
  return widest;
}

}  // namespace

std::string listInColumns(const std::vector<std::string>& items, std::size_t width,
                          std::size_t height) {
  // As many items as there might be room for decide how wide a column is: looking at all of a large
  // catalogue would take a while.
  const std::size_t candidates = std::min(items.size(), height * (width / (kGap + 1) + 1));
  const std::vector<Cell> cells = makeCells(items, candidates, width);
  const std::size_t columnWidth = widestOf(cells) + kGap;
  const std::size_t columns = std::max<std::size_t>(1, (width + kGap) / columnWidth);
  std::size_t lines = (items.size() + columns - 1) / columns;
  std::size_t shown = items.size();
  if (lines > height) {
    lines = height > 1 ? height - 1 : 1;  // and a line for those left out
    shown = lines * columns;
  }

  std::string text;
  for (std::size_t line = 0; line < lines; ++line) {
    std::size_t blanks = 0;
    for (std::size_t item = line; item < shown; item += lines) {
      text.append(blanks, ' ').append(cells[item].text);
      blanks = columnWidth - cells[item].width;
    }
    text += '\n';
  }
  if (shown < items.size()) {
    text += "(" + std::to_string(items.size() - shown) + " more)\n";
  }
  return text;
}

}  // namespace lineup
