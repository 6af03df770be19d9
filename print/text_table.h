// Tables of text.

#pragma once

#include <string>
#include <utility>
#include <vector>

namespace lineup {

/// Rows of as many cells as there are columns.
struct TextTable {
  using Row = std::vector<std::string>;

  Row columns;  ///< their names
  std::vector<Row> rows{};
};

/// A row of these cells, which are moved into it.
template <class... Cells>
TextTable::Row rowOf(Cells... cells) {
  TextTable::Row row;
  row.reserve(sizeof...(cells));
  (row.emplace_back(std::move(cells)), ...);
  return row;
}

/// The table for the eye: the names of its columns in upper case, then a line for each row, in
/// columns two blanks apart as a terminal shows them, in any locale. Control characters and bytes
/// that are not UTF-8 are escaped. A column is at most 256 wide: a wider cell hangs over, uncut.
std::string tableText(TextTable table);

/// The table under its title, which says "none" where there are no rows.
std::string titledText(const std::string& title, TextTable table);

/// The table as comma-separated values (RFC 4180, lines end with a line feed), its first line the
/// names of the columns.
std::string tableCsv(const TextTable& table);

}  // namespace lineup
