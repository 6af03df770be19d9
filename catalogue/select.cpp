#include "catalogue/select.h"

#include <cassert>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <new>

#include "catalogue/connection.h"
#include "support/ending_signals.h"

namespace korveldb {

namespace {

struct SqliteFree {
  void operator()(char* text) const { sqlite3_free(text); }
};
using SqliteText = std::unique_ptr<char, SqliteFree>;

struct SqliteFreeTable {
  void operator()(char** cells) const { sqlite3_free_table(cells); }
};

/// What sqlite3_get_table returns.
struct Result {
  int code = SQLITE_OK;
  std::unique_ptr<char*, SqliteFreeTable> cells;  // the names of the columns, then the rows
  std::size_t rows = 0;
  std::size_t columns = 0;
  SqliteText error;
};

/// Runs all statements in `statement`, as long as they only read.
Result getTable(sqlite3* handle, const char* statement) {
  char** cells = nullptr;
  int rows = 0;
  int columns = 0;
  char* error = nullptr;
  const tReadingOnly reading(handle);
  const int code = sqlite3_get_table(handle, statement, &cells, &rows, &columns, &error);
  return {code, decltype(Result::cells)(cells), static_cast<std::size_t>(rows),
          static_cast<std::size_t>(columns), SqliteText(error)};
}

void reportFailure(const tTable& table, int attempt, const char* error) {
  constexpr const char* kPrefix = "[ERROR_DB]doSelect: ";
  std::cerr << kPrefix << "Error leyendo datos tabla " << table.name << " . intento: " << attempt
            << std::endl;
  if (error != nullptr) {
    std::cerr << kPrefix << error << std::endl;
    std::perror(error);
  }
}

SqliteText formatSelect(const tTable& table, const char* filter, va_list arguments) {
  const std::string format =
      std::string("SELECT * FROM ") + table.name + " " + (filter != nullptr ? filter : "");
  SqliteText statement(sqlite3_vmprintf(format.c_str(), arguments));
  if (!statement) {
    throw std::bad_alloc();
  }
  return statement;
}

/// The result of the first of three attempts that succeeds; one without rows if none does.
Result select(const tTable& table, sqlite3* handle, const char* statement) {
  constexpr int kAttempts = 3;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    Result result = getTable(handle, statement);
    if (result.code == SQLITE_OK) {
      return result;
    }
    lineup::throwIfSignalled();  // the signal interrupted the select
    reportFailure(table, attempt, result.error.get());
    result = {};  // may hold a lot
    lineup::waitFor(std::chrono::seconds(attempt + 1));
  }
  return {};
}

}  // namespace

tRow::tRow(const tTable& rowTable, std::span<const char* const> cells,
           std::pmr::memory_resource* memory)
    : table(&rowTable), columns(memory), flags(rowTable.columnTypes.size(), false, memory) {
  std::pmr::polymorphic_allocator<> allocator(memory);
  columns.reserve(table->columnTypes.size());
  for (const char type : table->columnTypes) {
    const std::size_t column = columns.size();
    const char* const text = column < cells.size() ? cells[column] : nullptr;
    columns.emplace_back(type == 'I' ? allocator.new_object<tSqlite3int>(text, memory)
                                     : allocator.new_object<tSqlite3parent>(text, memory));
  }
}

int32_t tRow::asInt(std::size_t column) const {
  assert(table->columnTypes[column] == 'I');
  return static_cast<const tSqlite3int&>(*columns[column]).asInt();
}

std::string tRow::asText(std::size_t column) const {
  return table->columnTypes[column] == 'I' ? std::to_string(asInt(column))
                                           : columns[column]->asString();
}

std::unique_ptr<tRowList> selectRows(const tTable& table, sqlite3* handle, const char* filter,
                                     va_list arguments) {
  const SqliteText statement = formatSelect(table, filter, arguments);
  const Result result = select(table, handle, statement.get());
  auto list = std::make_unique<tRowList>();
  list->rows.reserve(result.rows);
  for (std::size_t row = 1; row <= result.rows; ++row) {
    list->rows.emplace_back(
        table, std::span(result.cells.get() + row * result.columns, result.columns), &list->memory);
  }
  return list;
}

}  // namespace korveldb
