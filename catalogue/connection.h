// A connection to the service catalogue, the SQLite database that ControllerTask writes.

#pragma once

#include <sqlite3.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

namespace korveldb {

/// An SQLite connection: the constructor opens it, the destructor closes it.
///
/// The constructor reports no error: on a file that could not be opened, every statement fails.
/// By default a file that does not exist is created, empty, if its folder does. Messages go to the
/// log under the module name "db".
class tSqlite3db {
 public:
  /// `flags` are those of sqlite3_open_v2().
  explicit tSqlite3db(const std::string& fileName,
                      int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  tSqlite3db(const tSqlite3db&) = delete;
  tSqlite3db& operator=(const tSqlite3db&) = delete;
  /// Rolls an open transaction back, then closes the connection.
  ~tSqlite3db();

  /// The connection, for selects; null if there was no memory for it. Never to be closed by the
  /// caller.
  sqlite3* getHandle() const { return handle_; }

  /// Runs a statement, whose rows are dropped, with up to three tries. False if all three failed.
  bool exec(const std::string& sql);

  /// False if a transaction is open already, or the statement failed: the transaction counts as
  /// begun even then.
  bool beginTransaction();

  /// False if no transaction is open, or the statement failed: the transaction counts as ended even
  /// then.
  bool commitTransaction();
  bool rollbackTransaction();

 private:
  bool endTransaction(const char* sql);

  sqlite3* handle_ = nullptr;
  bool inTransaction_ = false;
};

/// For its lifetime, a connection only reads: SQLite compiles selects, and statements that write
/// rows, which then fail (SQLITE_READONLY); it refuses to compile any other (SQLITE_AUTH). It
/// interrupts a statement (SQLITE_INTERRUPT) when a signal is to end the program, or at the
/// deadline. Sets the connection's authorizer, progress handler and "PRAGMA query_only".
class tReadingOnly {
 public:
  using Clock = std::chrono::steady_clock;

  /// `handle` may be null.
  explicit tReadingOnly(sqlite3* handle, Clock::time_point deadline = Clock::time_point::max());
  ~tReadingOnly();
  tReadingOnly(const tReadingOnly&) = delete;
  tReadingOnly& operator=(const tReadingOnly&) = delete;

 private:
  static int isOver(void* reading);

  sqlite3* handle_;
  Clock::time_point deadline_;
};

/// Calls `visit` for every row of `table`, with the statement of which it is the current row.
/// Returns SQLITE_DONE, or an error code, after which no more rows are read; sqlite3_errmsg() has
/// its text.
int visitRows(sqlite3* handle, const char* table, const std::function<void(sqlite3_stmt*)>& visit);

/// The text in `column` of the current row of `statement`; empty for an SQL NULL and beyond
/// the row's columns.
std::string textOf(sqlite3_stmt* statement, std::size_t column);

}  // namespace korveldb
