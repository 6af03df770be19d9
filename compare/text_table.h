// Tables of text.

#pragma once

#include <string>
#include <vector>

namespace lineup {

/// Rows of as many cells as there are columns.
struct TextTable {
  std::vector<std::string> columns;  ///< their names
  std::vector<std::vector<std::string>> rows{};
};

/// The table for the eye: the names of its columns in upper case, then a line for each row, in
/// columns two blanks apart. Control characters and what is no UTF-8 are escaped.
std::string tableText(const TextTable& table);

/// The table under its title, which says "none" where there are no rows.
std::string titledText(const std::string& title, const TextTable& table);

/// The table as comma-separated values (RFC 4180, lines end with a line feed), its first line the
/// names of the columns.
std::string tableCsv(const TextTable& table);

}  // namespace lineup
