// A compiled statement of SQLite.

#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <memory>
#include <string>

namespace korveldb {

struct tFinalize {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

/// Owns a statement: the destructor finalizes it.
using tStatement = std::unique_ptr<sqlite3_stmt, tFinalize>;

/// The compiled select of `columns` of all rows of `table`; null, with the reason in the
/// connection, if it cannot be compiled.
inline tStatement prepareSelect(sqlite3* handle, const std::string& columns, const char* table) {
  const std::string select = "SELECT " + columns + " FROM " + table;
  sqlite3_stmt* compiled = nullptr;
  sqlite3_prepare_v2(handle, select.c_str(), -1, &compiled, nullptr);
  return tStatement(compiled);
}

/// The text in `column` of the row that `statement` has come to; empty for an SQL NULL.
inline std::string textOf(const tStatement& statement, std::size_t column) {
  const auto* const text =
      reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), static_cast<int>(column)));
  return text == nullptr ? std::string() : text;
}

}  // namespace korveldb
