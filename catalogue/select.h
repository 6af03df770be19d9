// Selecting rows of the catalogue's tables, with retries for a busy database.

#pragma once

#include <sqlite3.h>

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <span>
#include <string>
#include <vector>

#include "catalogue/cells.h"
#include "catalogue/tables.h"

namespace korveldb {

/// One row of a table.
class tRow {
 public:
  /// Copies a row of a result into `memory`, which has to outlive this row. Null is an SQL NULL;
  /// columns that the result lacks are NULL, and those that the table lacks are ignored.
  tRow(const tTable& table, std::span<const char* const> cells, std::pmr::memory_resource* memory);

  /// The number in the integer column `column`.
  int32_t asInt(std::size_t column) const;

  /// The text in the column `column`; the number, in decimal, in an integer column.
  std::string asText(std::size_t column) const;

  const tTable* table;
  std::pmr::vector<tCell> columns;
  /// One flag per column; the console has no use for them.
  std::pmr::vector<bool> flags;
};

/// Rows in the order in which SQLite returned them. The destructor frees all that they hold.
struct tRowList {
  /// Holds the cells. A row has up to 25 of them, a catalogue easily a hundred thousand rows: one
  /// by one on the heap they would take longer to make and free than SQLite takes to find them.
  std::pmr::monotonic_buffer_resource memory;
  std::vector<tRow> rows;
};

/// The rows of `table` that the printf-like `filter` ("WHERE ...", or null for all rows) selects,
/// never null. Its arguments are inserted as they are: whatever statement they make can only read.
///
/// Tries up to three times. After the n-th failure it says so on standard error and sleeps n
/// seconds, after the last failure too; then there are no rows. Throws std::bad_alloc, and
/// EndedBySignal as soon as a signal is caught, which interrupts the select as well as the sleep.
std::unique_ptr<tRowList> selectRows(const tTable& table, sqlite3* handle, const char* filter,
                                     va_list arguments);

/// The row class of one table, which is a template argument because doSelect() is static.
template <const tTable& kTable>
class tAvailableService : public tRow {
 public:
  /// selectRows() of the table.
  static std::unique_ptr<tRowList> doSelect(sqlite3* handle, const char* filter, ...);

  /// Frees a list; null is accepted.
  static void freeList(std::unique_ptr<tRowList> list) { list.reset(); }
};

using tAvailableSatService = tAvailableService<kSatTable>;
using tAvailableTdtService = tAvailableService<kTdtTable>;
using tAvailableCableService = tAvailableService<kCableTable>;
using tAvailableIPService = tAvailableService<kIPTable>;

template <const tTable& kTable>
std::unique_ptr<tRowList> tAvailableService<kTable>::doSelect(sqlite3* handle, const char* filter,
                                                              ...) {
  va_list arguments;
  va_start(arguments, filter);
  auto list = selectRows(kTable, handle, filter, arguments);
  va_end(arguments);
  return list;
}

}  // namespace korveldb
