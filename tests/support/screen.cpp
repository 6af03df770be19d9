#include "tests/support/screen.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <cwchar>
#include <stdexcept>
#include <utility>

namespace lineup::test {

namespace {

constexpr char kEscape = '\x1b';
constexpr std::size_t kUnfinished = 0;

std::size_t letterSize(char first) {
  const auto byte = static_cast<unsigned char>(first);
  if (byte < 0xc0) {
    return 1;
  }
  return byte < 0xe0 ? 2 : byte < 0xf0 ? 3 : 4;
}

std::size_t columnsOf(std::string_view letter) {
  wchar_t character = 0;
  std::mbstate_t state{};
  const std::size_t size = std::mbrtowc(&character, letter.data(), letter.size(), &state);
  return size == letter.size() ? static_cast<std::size_t>(std::max(wcwidth(character), 0)) : 1;
}

[[noreturn]] void failAt(std::string_view output) {
  throw std::runtime_error("unknown on this screen: ESC" + std::string(output.substr(1, 10)));
}

}  // namespace

Screen::Screen(std::size_t rows, std::size_t columns) : columns_(columns), rows_(rows, blankRow()) {
  std::setlocale(LC_CTYPE, "C.UTF-8");
}

Screen::Row Screen::blankRow() const {
  return {Letters(columns_, " ")};
}

void Screen::show(std::string_view output) {
  unfinished_ += output;
  std::string_view left = unfinished_;
  while (!left.empty()) {
    const std::size_t size = showSome(left);
    if (size == kUnfinished) {
      break;
    }
    left.remove_prefix(size);
  }
  unfinished_ = std::string(left);
}

/// Shows the first letter or sequence and returns its size, or kUnfinished.
std::size_t Screen::showSome(std::string_view output) {
  const char first = output.front();
  switch (first) {
    case kEscape:
      return showEscape(output);
    case '\0':
    case '\a':
      return 1;
    case '\b':
      column_ = std::min(column_, columns_ - 1);
      column_ -= column_ > 0 ? 1 : 0;
      return 1;
    case '\r':
      column_ = 0;
      return 1;
    case '\n':
      lineFeed();
      return 1;
    default:
      const std::size_t size = letterSize(first);
      if (size > output.size()) {
        return kUnfinished;
      }
      put(output.substr(0, size));
      return size;
  }
}

std::size_t Screen::showEscape(std::string_view output) {
  if (output.size() < 2) {
    return kUnfinished;
  }
  if (output[1] != '[') {
    failAt(output);
  }
  std::vector<std::size_t> parameters;
  for (std::size_t i = 2; i < output.size(); ++i) {
    if (output[i] >= '@') {
      const std::string numbers(output.substr(2, i - 2));
      parameters.push_back(
          std::strtoul(numbers.c_str() + (numbers[0] == '?' ? 1 : 0), nullptr, 10));
      control(output[i], parameters);
      return i + 1;
    }
  }
  return kUnfinished;
}

void Screen::control(char final, const std::vector<std::size_t>& parameters) {
  const std::size_t what = parameters[0];
  const std::size_t count = std::max<std::size_t>(what, 1);
  if (moveCursor(final, count) || editLine(final, count)) {
    return;
  }
  switch (final) {
    case 'J':
      eraseInDisplay(what);
      break;
    case 'K':
      eraseInLine(what);
      break;
    case 'h':
    case 'l':
      inserting_ = what == 4 && final == 'h';
      break;
    case 'm':
      break;
    default:
      failAt(std::string(2, kEscape) + final);
  }
}

bool Screen::moveCursor(char final, std::size_t count) {
  const std::size_t at = std::min(column_, columns_ - 1);
  switch (final) {
    case 'A':
      row_ -= std::min(count, row_);
      return true;
    case 'B':
      row_ = std::min(row_ + count, rows_.size() - 1);
      return true;
    case 'C':
      column_ = std::min(at + count, columns_ - 1);
      return true;
    case 'D':
      column_ = at - std::min(count, at);
      return true;
    case 'G':
      column_ = std::min(count, columns_) - 1;
      return true;
    case 'H':
      row_ = 0;
      column_ = 0;
      return true;
    default:
      return false;
  }
}

bool Screen::editLine(char final, std::size_t count) {
  if (final != 'P' && final != '@') {
    return false;
  }
  const std::size_t at = std::min(column_, columns_ - 1);
  Letters& letters = rows_[row_].letters;
  const auto here = letters.begin() + static_cast<std::ptrdiff_t>(at);
  if (final == 'P') {
    const std::size_t fitting = std::min(count, columns_ - at);
    letters.erase(here, here + static_cast<std::ptrdiff_t>(fitting));
  } else {
    letters.insert(here, count, " ");
  }
  letters.resize(columns_, " ");
  return true;
}

void Screen::put(std::string_view letter) {
  const std::size_t width = columnsOf(letter);
  if (width == 0) {
    std::size_t last = column_ - 1;
    while (rows_[row_].letters[last].empty()) {
      --last;
    }
    rows_[row_].letters[last] += letter;
    return;
  }
  if (column_ + width > columns_) {
    rows_[row_].continued = true;
    column_ = 0;
    lineFeed();
  }
  Letters& letters = rows_[row_].letters;
  if (inserting_) {
    letters.insert(letters.begin() + static_cast<std::ptrdiff_t>(column_), " ");
    letters.resize(columns_);
  }
  letters[column_] = letter;
  ++column_;
  if (width == 2) {
    letters[column_] = "";
    ++column_;
  }
}

void Screen::lineFeed() {
  if (row_ + 1 < rows_.size()) {
    ++row_;
    return;
  }
  rows_.erase(rows_.begin());
  rows_.push_back(blankRow());
}

void Screen::eraseInDisplay(std::size_t what) {
  if (what == 0) {
    eraseInLine(0);
  }
  for (std::size_t row = what == 0 ? row_ + 1 : 0; row < rows_.size(); ++row) {
    rows_[row] = blankRow();
  }
}

void Screen::eraseInLine(std::size_t what) {
  Row& row = rows_[row_];
  const std::size_t first = what == 0 ? std::min(column_, columns_ - 1) : 0;
  const std::size_t last = what == 1 ? std::min(column_ + 1, columns_) : columns_;
  std::fill(row.letters.begin() + static_cast<std::ptrdiff_t>(first),
            row.letters.begin() + static_cast<std::ptrdiff_t>(last), " ");
  row.continued = row.continued && what == 1;
}

void Screen::resize(std::size_t rows, std::size_t columns, bool cursorWaits) {
  const std::vector<Row> before = std::move(rows_);
  const std::size_t cursorRow = row_;
  const std::size_t cursorColumn = column_;
  columns_ = columns;
  rows_.clear();
  Letters line;
  for (std::size_t i = 0; i <= cursorRow || i < before.size(); ++i) {
    if (i == cursorRow) {
      row_ = rows_.size() + (line.size() + cursorColumn) / columns;
      column_ = (line.size() + cursorColumn) % columns;
    }
    line.insert(line.end(), before[i].letters.begin(), before[i].letters.end());
    if (before[i].continued) {
      continue;
    }
    while (!line.empty() && line.back() == " ") {
      line.pop_back();
    }
    const bool isFull = !line.empty() && line.size() % columns == 0;
    const bool isAfter =
        i >= cursorRow && column_ == 0 && row_ == rows_.size() + line.size() / columns;
    if (cursorWaits && isFull && isAfter) {
      --row_;
      column_ = columns;
    }
    addRows(std::exchange(line, {}));
  }
  keepRows(rows);
}

void Screen::addRows(Letters line) {
  do {
    Row row = blankRow();
    const std::size_t fitting = std::min(columns_, line.size());
    std::copy_n(line.begin(), fitting, row.letters.begin());
    line.erase(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(fitting));
    row.continued = !line.empty();
    rows_.push_back(row);
  } while (!line.empty());
}

void Screen::keepRows(std::size_t rows) {
  while (rows_.size() > rows && row_ + 1 < rows_.size()) {
    rows_.pop_back();
  }
  while (rows_.size() > rows) {
    rows_.erase(rows_.begin());
    --row_;
  }
  rows_.resize(rows, blankRow());
}

std::string Screen::text() const {
  std::string text;
  std::size_t end = 0;
  for (std::size_t row = 0; row < rows_.size(); ++row) {
    std::string line;
    std::size_t lineEnd = 0;
    for (std::size_t column = 0; column <= columns_; ++column) {
      if (row == row_ && column == column_) {
        line += '|';
        lineEnd = line.size();
      }
      if (column < columns_) {
        line += rows_[row].letters[column];
        lineEnd = rows_[row].letters[column] == " " ? lineEnd : line.size();
      }
    }
    text += line.substr(0, lineEnd) + '\n';
    end = lineEnd > 0 ? text.size() - 1 : end;
  }
  return text.substr(0, end);
}

}  // namespace lineup::test
