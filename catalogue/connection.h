// A connection to the service catalogue, the SQLite database that ControllerTask writes.

#pragma once

#include <sqlite3.h>

#include <chrono>
#include <cstdint>
#include <string>

namespace korveldb {

/// Opens a database file for reading and closes it when it goes. Statements that would change
/// anything, the file or another, are refused by SQLite, and a missing file is not created. What
/// stays SQLite's own business is to bring a database back to its last commit when its writer died.
///
/// A statement that runs when a signal is to end the program is broken off and fails. So is one for
/// which SQLite would need more than 20 MiB, or 20 times the file if that is more; one with a cell
/// of more than a million bytes that is longer than the file; one that takes more than a hundred
/// million steps of SQLite's virtual machine, or 100 for each byte of the file; and one that takes
/// more than ten seconds of processor time, or one for each megabyte of the file.
///
/// Nothing is reported by the constructor: on a file that could not be opened, every statement
/// fails. Messages go to the log under the module name "db".
class tSqlite3db {
 public:
  explicit tSqlite3db(const std::string& fileName);
  tSqlite3db(const tSqlite3db&) = delete;
  tSqlite3db& operator=(const tSqlite3db&) = delete;
  /// Rolls an open transaction back, then closes the connection.
  ~tSqlite3db();

  /// The connection, for selects; never to be closed by the caller.
  sqlite3* getHandle() const { return handle; }

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

  // What SQLite calls when a statement begins, and again and again while it runs: not 0 ends it.
  static int beginStatement(unsigned event, void* connection, void* statement, void* text);
  static int breakOff(void* connection);

  sqlite3* handle = nullptr;
  int64_t allowedSteps = 0;
  int64_t takenSteps = 0;
  std::chrono::seconds allowedTime{};
  std::chrono::nanoseconds timeAtBegin{};
  bool inTransaction = false;
};

}  // namespace korveldb
