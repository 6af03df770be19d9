// The rows of the catalogue's four tables of services that the headend's inputs can receive.

#pragma once

#include <array>
#include <cassert>
#include <cstdarg>
#include <memory>
#include <memory_resource>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue/cells.h"
#include "catalogue/select.h"

namespace korveldb {

/// A table's name and, by position, the types of the columns that are read: I integer, S text. The
/// names of the columns are the controller's.
struct tTableLayout {
  const char* name;
  std::string_view columnTypes;
};

/// One row of the table that `kLayout` describes.
template <const tTableLayout& kLayout>
class tAvailableService {
 public:
  /// Rows in the order in which SQLite returned them. Freeing the list frees everything of it.
  struct List {
    /// Holds the cells. A row has up to 25 of them, a catalogue easily a hundred thousand rows: one
    /// by one on the heap they would take longer to make and free than SQLite takes to find them.
    std::pmr::monotonic_buffer_resource memory;
    std::vector<tAvailableService> rows;
  };

  /// The rows that `filter` and its arguments (see selectFrom()) select, never null. Without a
  /// match, and when the table cannot be read, there are no rows.
  static std::unique_ptr<List> doSelect(sqlite3* handle, const char* filter, ...);

  /// Copies the cells of the row `row` of `table` into `memory`, which has to outlive this row.
  tAvailableService(const tResultTable& table, std::size_t row, std::pmr::memory_resource* memory);

  /// The number in the integer column `column`.
  int32_t asInt(std::size_t column) const {
    assert(kLayout.columnTypes[column] == 'I');
    return static_cast<const tSqlite3int&>(*columns[column]).asInt();
  }

  /// The text in the column `column`; the number, in decimal, in an integer column.
  std::string asText(std::size_t column) const {
    return kLayout.columnTypes[column] == 'I' ? std::to_string(asInt(column))
                                              : columns[column]->asString();
  }

  std::array<tCell, kLayout.columnTypes.size()> columns;
  /// One flag a column; the console has no use for them.
  std::array<bool, kLayout.columnTypes.size()> flags{};
};

inline constexpr tTableLayout kSatLayout{"availableSatService", "IIISISIIIIIIIISISIIISIISS"};
inline constexpr tTableLayout kTdtLayout{"availableTdtService", "IIIIIIIIISISIIISS"};
inline constexpr tTableLayout kCableLayout{"availableCableService", "IIIIIIIIIIISIIISS"};
inline constexpr tTableLayout kIPLayout{"availableIPService", "ISSIISISIIISS"};

using tAvailableSatService = tAvailableService<kSatLayout>;
using tAvailableTdtService = tAvailableService<kTdtLayout>;
using tAvailableCableService = tAvailableService<kCableLayout>;
using tAvailableIPService = tAvailableService<kIPLayout>;

template <const tTableLayout& kLayout>
tAvailableService<kLayout>::tAvailableService(const tResultTable& table, std::size_t row,
                                              std::pmr::memory_resource* memory) {
  std::pmr::polymorphic_allocator<> allocator(memory);
  for (std::size_t column = 0; column < columns.size(); ++column) {
    const char* text = table.cell(row, column);
    if (kLayout.columnTypes[column] == 'I') {
      columns[column].reset(allocator.new_object<tSqlite3int>(text, memory));
    } else {
      columns[column].reset(allocator.new_object<tSqlite3parent>(text, memory));
    }
  }
}

template <const tTableLayout& kLayout>
std::unique_ptr<typename tAvailableService<kLayout>::List> tAvailableService<kLayout>::doSelect(
    sqlite3* handle, const char* filter, ...) {
  auto list = std::make_unique<List>();
  va_list arguments;
  va_start(arguments, filter);
  const tResultTable table = selectFrom(kLayout.name, handle, filter, arguments);
  va_end(arguments);
  list->rows.reserve(table.size());
  for (std::size_t row = 0; row < table.size(); ++row) {
    list->rows.emplace_back(table, row, &list->memory);
  }
  return list;
}

}  // namespace korveldb
