#include "print/text_table.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

#include "print/printed_text.h"
#include "support/words.h"

namespace lineup {

namespace {

using Row = TextTable::Row;

/// The widest that a column gets. A longer cell moves those after it in its own line, instead of
/// filling all other lines with as many blanks.
constexpr std::size_t kWidestColumn = 256;

std::string headingOf(std::string name) {
  upperCase(name);
  return name;
}

/// Adds the row as a line of columns two blanks apart. The cells take `shown` columns of a terminal
/// each.
void addLine(std::string& text, const Row& row, const std::size_t* shown,
             const std::vector<std::size_t>& widths) {
  std::size_t missing = 0;  // blanks up to the next column; none after the last cell
  for (std::size_t column = 0; column < widths.size(); ++column) {
    if (!row[column].empty()) {
      text.append(missing, ' ');
      text += row[column];
      missing = 0;
    }
    missing += std::max(widths[column], shown[column]) + 2 - shown[column];
  }
  text += '\n';
}

void addCsvCell(std::string& text, const std::string& cell) {
  if (cell.find_first_of(",\"\r\n") == std::string::npos) {
    text += cell;
    return;
  }
  text += '"';
  for (const char character : cell) {
    text.append(character == '"' ? 2 : 1, character);
  }
  text += '"';
}

void addCsvRow(std::string& text, const Row& row) {
  const char* separator = "";
  for (const std::string& cell : row) {
    text += separator;
    addCsvCell(text, cell);
    separator = ",";
  }
  text += '\n';
}

}  // namespace

std::string tableText(TextTable table) {
  const std::size_t columns = table.columns.size();
  std::vector<std::size_t> shown;  // columns of a terminal for each cell, row after row
  shown.reserve((table.rows.size() + 1) * columns);
  std::vector<std::size_t> widths(columns, 0);
  const auto measure = [&](Row& row) {
    for (std::size_t column = 0; column < columns; ++column) {
      shown.push_back(makePrintable(row[column]));
      widths[column] = std::max(widths[column], std::min(shown.back(), kWidestColumn));
    }
  };
  std::transform(table.columns.begin(), table.columns.end(), table.columns.begin(), headingOf);
  measure(table.columns);
  std::for_each(table.rows.begin(), table.rows.end(), measure);
  std::string text;
  const std::size_t width = std::accumulate(widths.begin(), widths.end(), 2 * columns);
  text.reserve((table.rows.size() + 1) * width);
  const std::size_t* shownInRow = shown.data();
  addLine(text, table.columns, shownInRow, widths);
  for (const Row& row : table.rows) {
    addLine(text, row, shownInRow += columns, widths);
  }
  return text;
}

std::string titledText(const std::string& title, TextTable table) {
  return table.rows.empty() ? title + ": none\n" : title + "\n" + tableText(std::move(table));
}

std::string tableCsv(const TextTable& table) {
  std::string text;
  addCsvRow(text, table.columns);
  for (const Row& row : table.rows) {
    addCsvRow(text, row);
  }
  return text;
}

}  // namespace lineup
