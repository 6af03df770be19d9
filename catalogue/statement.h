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

/// The text in `column` of the row that `statement` has come to; empty for an SQL NULL.
inline std::string textOf(const tStatement& statement, std::size_t column) {
  const auto* const text =
      reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), static_cast<int>(column)));
  return text == nullptr ? std::string() : text;
}

}  // namespace korveldb
