#include "compare/text_table.h"

#include <algorithm>
#include <cstddef>

#include "compare/printed_text.h"

namespace lineup {

namespace {

using Row = std::vector<std::string>;

Row printableRow(const Row& row) {
  Row result;
  result.reserve(row.size());
  for (const std::string& cell : row) {
    result.push_back(printable(cell));
  }
  return result;
}

std::string headingOf(std::string name) {
  for (char& letter : name) {
    if (letter >= 'a' && letter <= 'z') {
      letter = static_cast<char>(letter - 'a' + 'A');
    }
  }
  return name;
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

std::string tableText(const TextTable& table) {
  std::vector<Row> rows{{}};
  for (const std::string& name : table.columns) {
    rows[0].push_back(headingOf(name));
  }
  for (const Row& row : table.rows) {
    rows.push_back(printableRow(row));
  }
  std::vector<std::size_t> widths(table.columns.size());
  for (const Row& row : rows) {
    for (std::size_t column = 0; column < widths.size(); ++column) {
      widths[column] = std::max(widths[column], charactersOf(row[column]));
    }
  }
  std::string text;
  for (const Row& row : rows) {
    std::size_t missing = 0;  // blanks up to the next column; none behind the last cell
    for (std::size_t column = 0; column < widths.size(); ++column) {
      if (!row[column].empty()) {
        text.append(missing, ' ');
        text += row[column];
        missing = 0;
      }
      missing += widths[column] + 2 - charactersOf(row[column]);
    }
    text += '\n';
  }
  return text;
}

std::string titledText(const std::string& title, const TextTable& table) {
  return table.rows.empty() ? title + ": none\n" : title + "\n" + tableText(table);
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
