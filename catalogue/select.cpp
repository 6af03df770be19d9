#include "catalogue/select.h"

#include <chrono>
#include <cstdio>
#include <iostream>
#include <new>
#include <string>

#include "catalogue/connection.h"
#include "support/ending_signals.h"

namespace korveldb {

namespace {

struct SqliteFree {
  void operator()(char* text) const { sqlite3_free(text); }
};
using SqliteText = std::unique_ptr<char, SqliteFree>;

constexpr const char* kErrorPrefix = "[ERROR_DB]doSelect: ";

void reportFailure(const char* table, int attempt, const char* error) {
  std::cerr << kErrorPrefix << "Error leyendo datos tabla " << table << " . intento: " << attempt
            << std::endl;
  if (error != nullptr) {
    std::cerr << kErrorPrefix << error << std::endl;
    std::perror(error);
  }
}

/// sqlite3_get_table, but of selects alone.
int getTable(sqlite3* handle, const char* statement, char*** cells, int* rows, int* columns,
             char** error) {
  const tReadingOnly reading(handle);
  return sqlite3_get_table(handle, statement, cells, rows, columns, error);
}

}  // namespace

tResultTable::tResultTable(char** cells_, int rows_, int columns_)
    : cells(cells_),
      rows(static_cast<std::size_t>(rows_)),
      columns(static_cast<std::size_t>(columns_)) {}

tResultTable selectFrom(const char* table, sqlite3* handle, const char* filter, va_list arguments) {
  const std::string format =
      std::string("SELECT * FROM ") + table + " " + (filter != nullptr ? filter : "");
  const SqliteText statement(sqlite3_vmprintf(format.c_str(), arguments));
  if (!statement) {
    throw std::bad_alloc();
  }

  constexpr int kAttempts = 3;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    char** cells = nullptr;
    int rows = 0;
    int columns = 0;
    char* errorText = nullptr;
    const int result = getTable(handle, statement.get(), &cells, &rows, &columns, &errorText);
    const SqliteText error(errorText);
    tResultTable selected(cells, rows, columns);
    if (result == SQLITE_OK) {
      return selected;
    }
    endIfSignalled();  // which has interrupted the select
    reportFailure(table, attempt, error.get());
    waitFor(std::chrono::seconds(attempt + 1));
  }
  return {nullptr, 0, 0};
}

}  // namespace korveldb
