#include "terminal/line_screen.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cwchar>

namespace lineup {

namespace {

struct Shown {
  std::string bytes;
  std::size_t columns;
};

/// How `letter` is shown on a screen of `columns`.
Shown shown(wchar_t letter, std::size_t columns) {
  std::array<char, MB_LEN_MAX> bytes{};
  std::mbstate_t state{};
  const int width = wcwidth(letter);
  const std::size_t size = std::wcrtomb(bytes.data(), letter, &state);
  if (width < 0 || size == static_cast<std::size_t>(-1) ||
      static_cast<std::size_t>(width) > columns) {
    return {"?", 1};
  }
  return {std::string(bytes.data(), size), static_cast<std::size_t>(width)};
}

}  // namespace

std::size_t rowsOf(const std::wstring& text, std::size_t columns) {
  std::size_t rows = 1;
  std::size_t used = 0;
  for (const wchar_t letter : text) {
    const std::size_t width = shown(letter, columns).columns;
    if (used + width > columns) {
      ++rows;
      used = 0;
    }
    used += width;
  }
  return rows;
}

void LineScreen::begin(std::size_t rows, std::size_t columns) {
  rows_ = rows;
  columns_ = columns;
  shown_.clear();
  text_.clear();
  top_ = row_ = column_ = cursor_ = 0;
}

// ---- what is to be seen

void LineScreen::append(Picture& picture, wchar_t letter, std::size_t columns) {
  const auto [bytes, width] = shown(letter, columns);
  Row* row = &picture.rows.back();
  if (width == 0) {
    if (row->empty()) {
      return;  // it has no letter to stand with
    }
    const auto last = std::find_if(row->rbegin(), row->rend(),
                                   [](const std::string& cell) { return !cell.empty(); });
    *last += bytes;
    return;
  }
  if (row->size() + width > columns) {
    row->resize(columns, " ");
    row = &picture.rows.emplace_back();
  }
  row->push_back(bytes);
  row->resize(row->size() + width - 1);
}

LineScreen::Picture LineScreen::layOut(const std::wstring& text, std::size_t cursor,
                                       std::size_t columns) {
  Picture picture;
  for (std::size_t i = 0; i < text.size(); ++i) {
    append(picture, text[i], columns);
    if (i == cursor) {
      const std::size_t width = std::max<std::size_t>(shown(text[i], columns).columns, 1);
      picture.cursorRow = picture.rows.size() - 1;
      const std::size_t end = picture.rows.back().size();
      picture.cursorColumn = end - std::min(width, end);
    }
  }
  if (cursor >= text.size()) {
    const bool isFull = picture.rows.back().size() == columns;
    if (isFull) {
      // Written, so that the terminal keeps the two rows as one line.
      picture.rows.push_back({" "});
    }
    picture.cursorRow = picture.rows.size() - 1;
    picture.cursorColumn = isFull ? 0 : picture.rows.back().size();
  }
  return picture;
}

void LineScreen::appendBelow(Picture& picture, const std::wstring& note, std::size_t columns) {
  picture.rows.emplace_back();
  for (const wchar_t letter : note) {
    append(picture, letter, columns);
  }
}

// ---- showing it

std::string LineScreen::show(const std::wstring& text, std::size_t cursor,
                             const std::wstring& note) {
  Picture picture = layOut(text, cursor, columns_);
  if (!note.empty()) {
    appendBelow(picture, note, columns_);
  }
  text_ = text;
  cursor_ = cursor;
  scrollTo(picture);
  const std::size_t count = std::min(rows_, picture.rows.size() - top_);
  for (std::size_t row = 0; row < count; ++row) {
    showRow(row, picture.rows[top_ + row]);
  }
  for (std::size_t row = shown_.size(); row > count; --row) {
    showRow(row - 1, Row());
  }
  shown_.resize(count);
  moveTo(picture.cursorRow - top_, picture.cursorColumn);
  return taken();
}

/// Decides which rows are on the screen. Where all of it shows the line, rows that stay move up.
void LineScreen::scrollTo(const Picture& picture) {
  const std::size_t before = top_;
  const std::size_t last = picture.rows.size() - std::min(rows_, picture.rows.size());
  const std::size_t least = picture.cursorRow - std::min(rows_ - 1, picture.cursorRow);
  top_ = std::min(std::clamp(top_, least, picture.cursorRow), last);
  const std::size_t gone = top_ - std::min(before, top_);
  if (gone == 0 || gone >= rows_ || shown_.size() < rows_) {
    return;
  }
  moveToRow(rows_ - 1);
  output_ += '\r' + std::string(gone, '\n');
  column_ = 0;
  shown_.erase(shown_.begin(), shown_.begin() + static_cast<std::ptrdiff_t>(gone));
  shown_.resize(rows_);
}

void LineScreen::showRow(std::size_t row, const Row& wanted) {
  const bool isNew = row >= shown_.size();
  if (isNew) {
    moveToRow(row);
    shown_.resize(row + 1);
  }
  Row& there = shown_[row];
  const auto [differing, old] =
      std::mismatch(wanted.begin(), wanted.end(), there.begin(), there.end());
  auto begin = static_cast<std::size_t>(differing - wanted.begin());
  if (begin == wanted.size() && begin == there.size()) {
    return;
  }
  while (begin > 0 && begin < wanted.size() && wanted[begin].empty()) {
    --begin;
  }
  moveTo(row, begin);
  const std::size_t longer = there.size() - std::min(wanted.size(), there.size());
  there = wanted;
  write(wanted, begin, wanted.size());
  if (longer > 0) {
    output_ += abilities_.eraseToEndOfLine;
  }
}

/// Moves the terminal's cursor to a row that is shown, or to the one below.
void LineScreen::moveToRow(std::size_t row) {
  if (row_ == row) {
    return;
  }
  const bool isBlank = row >= shown_.size() || shown_[row].empty();
  if (abilities_.wraps && column_ == columns_ && row == row_ + 1 && isBlank) {
    output_ += " \r";  // so the terminal knows that the two rows are one line
    row_ = row;
    column_ = 0;
    return;
  }
  output_ += '\r';
  column_ = 0;
  for (; row_ > row; --row_) {
    output_ += abilities_.up;
  }
  for (; row_ < row; ++row_) {
    output_ += '\n';
  }
}

void LineScreen::moveTo(std::size_t row, std::size_t column) {
  moveToRow(row);
  if (column < column_) {
    if (column_ == columns_ || column < column_ - column) {
      output_ += '\r';
      column_ = 0;
    } else {
      output_.append(column_ - column, '\b');
      column_ = column;
    }
  }
  write(shown_[row], column_, column);
}

void LineScreen::write(const Row& row, std::size_t begin, std::size_t end) {
  for (std::size_t column = begin; column < end; ++column) {
    output_ += row[column];
  }
  column_ = std::max(end, column_);
}

std::string LineScreen::taken() {
  std::string output;
  output.swap(output_);
  return output;
}

// ---- leaving it

std::string LineScreen::leave() {
  if (!shown_.empty()) {
    moveToRow(shown_.size() - 1);
  }
  output_ += "\r\n";
  begin(rows_, columns_);
  return taken();
}

std::string LineScreen::clear() {
  begin(rows_, columns_);
  return abilities_.clear.empty() ? "\r\n" : abilities_.clear;
}

std::string LineScreen::resize(std::size_t rows, std::size_t columns) {
  const Picture picture = layOut(text_, cursor_, columns);
  const std::size_t cursorRow = picture.cursorRow;
  const std::size_t hidden = std::min(top_, cursorRow);
  const std::size_t up = std::min(cursorRow - hidden, rows - 1);
  // After a row that is full, the cursor may still wait in its last column: a blank moves it.
  const bool isBehindFullRow =
      cursor_ >= text_.size() && cursorRow > 0 && picture.cursorColumn == 0;
  begin(rows, columns);
  output_ = isBehindFullRow ? " \r" : "\r";
  for (std::size_t row = 0; row < up; ++row) {
    output_ += abilities_.up;
  }
  output_ += abilities_.eraseToEndOfDisplay.empty() ? abilities_.eraseToEndOfLine
                                                    : abilities_.eraseToEndOfDisplay;
  return taken();
}

}  // namespace lineup
