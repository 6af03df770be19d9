// One select on a table of the catalogue, with patience for a busy database.

#pragma once

#include <sqlite3.h>

#include <cstdarg>
#include <cstddef>
#include <memory>

namespace korveldb {

/// The rows of a select as SQLite delivers them. A failed select has none.
class tResultTable {
 public:
  /// Takes `cells` over: (rows + 1) * columns texts of which the first `columns` are the column
  /// names, or null.
  tResultTable(char** cells, int rows, int columns);

  /// The number of rows.
  std::size_t size() const { return rows; }

  /// The text of a cell, `row` and `column` counting from 0. Null for an SQL NULL, and in columns
  /// that the result does not have. Belongs to the table.
  const char* cell(std::size_t row, std::size_t column) const {
    return column < columns ? cells.get()[(row + 1) * columns + column] : nullptr;
  }

 private:
  struct Free {
    void operator()(char** table) const { sqlite3_free_table(table); }
  };

  std::unique_ptr<char*, Free> cells;
  std::size_t rows;
  std::size_t columns;
};

/// Selects every column of `table`, by the printf-like `filter` ("WHERE ...", or null for all rows)
/// and its arguments, which are inserted as they are: whatever statement they make can only read.
///
/// Tries up to three times. After the n-th failure it says so on standard error and sleeps n
/// seconds, after the last failure too. Raises std::bad_alloc, and EndedBySignal as soon as a
/// signal is caught, which interrupts the select as well as the sleep.
tResultTable selectFrom(const char* table, sqlite3* handle, const char* filter, va_list arguments);

}  // namespace korveldb
