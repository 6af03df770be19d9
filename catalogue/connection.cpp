#include "catalogue/connection.h"

#include <memory>
#include <string_view>

#include "support/ending_signals.h"
#include "support/log.h"

namespace korveldb {

namespace {

constexpr const char* kModule = "db";

/// There is one thread, and nobody asks for memory statistics: without SQLite's mutexes and these a
/// long listing takes a fifth less time. Has no effect in a process that opened a connection
/// before.
void configureForOneThread() {
  [[maybe_unused]] static const int result =
      sqlite3_config(SQLITE_CONFIG_SINGLETHREAD) | sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
}

/// Whether a PRAGMA is one of those with which the virtual tables for text search read.
bool isOfTextSearch(std::string_view pragma, const char* argument) {
  return argument == nullptr && (pragma == "data_version" || pragma == "page_size");
}

/// An authorizer that allows reading. Virtual tables compile the statements they may write with as
/// soon as they are read, so these are allowed on a connection on which they fail; `queryOnly` is
/// null on any other. All else is denied, above all other PRAGMAs, and ATTACH and VACUUM INTO,
/// which create files.
int allowReading(void* queryOnly, int action, const char* name, const char* argument,
                 const char* /*unused*/, const char* /*unused*/) {
  switch (action) {
    case SQLITE_SELECT:
    case SQLITE_READ:
    case SQLITE_FUNCTION:
    case SQLITE_RECURSIVE:
      return SQLITE_OK;
    case SQLITE_INSERT:
    case SQLITE_UPDATE:
    case SQLITE_DELETE:
      return queryOnly != nullptr ? SQLITE_OK : SQLITE_DENY;
    case SQLITE_PRAGMA:
      return isOfTextSearch(name, argument) ? SQLITE_OK : SQLITE_DENY;
    default:
      return SQLITE_DENY;
  }
}

bool execute(sqlite3* handle, const char* sql) {
  return sqlite3_exec(handle, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

struct Finalize {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

}  // namespace

tSqlite3db::tSqlite3db(const std::string& fileName, int flags) {
  configureForOneThread();
  sqlite3_open_v2(fileName.c_str(), &handle_, flags, nullptr);
  // A connection reads each table at most once: a small page cache costs less than SQLite's default
  // of two megabytes.
  execute(handle_, "PRAGMA cache_size = 64");
}

tSqlite3db::~tSqlite3db() {
  if (inTransaction_) {
    log_function(LOG_LEVEL_ERROR, kModule,
                 "Closing DB connection while still in a transaction: executing rollback");
    rollbackTransaction();
  }
  sqlite3_close(handle_);
}

bool tSqlite3db::exec(const std::string& sql) {
  constexpr int kTries = 3;
  int result = SQLITE_OK;
  for (int n = 0; n < kTries; ++n) {
    result = sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr);
    if (result == SQLITE_OK) {
      return true;
    }
  }
  log_function(LOG_LEVEL_ERROR, kModule, "Query could not be executed (%d): %s", result,
               sql.c_str());
  return false;
}

bool tSqlite3db::beginTransaction() {
  log_function(LOG_LEVEL_DEBUG, kModule, "DB: Begin transaction");
  if (inTransaction_) {
    log_function(LOG_LEVEL_ERROR, kModule, "DB: Already in transaction");
    return false;
  }
  const bool begun = exec("BEGIN TRANSACTION");
  inTransaction_ = true;
  return begun;
}

bool tSqlite3db::commitTransaction() {
  log_function(LOG_LEVEL_DEBUG, kModule, "DB: Commit transaction");
  return endTransaction("COMMIT");
}

bool tSqlite3db::rollbackTransaction() {
  log_function(LOG_LEVEL_DEBUG, kModule, "DB: Rollback transaction");
  return endTransaction("ROLLBACK");
}

bool tSqlite3db::endTransaction(const char* sql) {
  if (!inTransaction_) {
    log_function(LOG_LEVEL_ERROR, kModule, "DB: Not in transaction");
    return false;
  }
  const bool ended = exec(sql);
  inTransaction_ = false;
  return ended;
}

tReadingOnly::tReadingOnly(sqlite3* handle, Clock::time_point deadline)
    : handle_(handle), deadline_(deadline) {
  constexpr int kInstructionsBetweenCalls = 1000;  // of SQLite's virtual machine
  if (handle != nullptr) {
    const bool queryOnly = execute(handle, "PRAGMA query_only = 1");  // or it is out of memory
    sqlite3_set_authorizer(handle, allowReading, queryOnly ? handle : nullptr);
    sqlite3_progress_handler(handle, kInstructionsBetweenCalls, isOver, this);
  }
}

tReadingOnly::~tReadingOnly() {
  if (handle_ != nullptr) {
    sqlite3_set_authorizer(handle_, nullptr, nullptr);
    sqlite3_progress_handler(handle_, 0, nullptr, nullptr);
    execute(handle_, "PRAGMA query_only = 0");
  }
}

int tReadingOnly::isOver(void* reading) {
  const Clock::time_point end = static_cast<const tReadingOnly*>(reading)->deadline_;
  return static_cast<int>(lineup::isSignalled() ||
                          (end != Clock::time_point::max() && Clock::now() > end));
}

int visitRows(sqlite3* handle, const char* table, const std::function<void(sqlite3_stmt*)>& visit) {
  const std::string select = std::string("SELECT * FROM ") + table;
  sqlite3_stmt* compiled = nullptr;
  sqlite3_prepare_v2(handle, select.c_str(), -1, &compiled, nullptr);
  const std::unique_ptr<sqlite3_stmt, Finalize> statement(compiled);
  int result = SQLITE_OK;
  while ((result = sqlite3_step(compiled)) == SQLITE_ROW) {  // SQLITE_MISUSE without a statement
    visit(compiled);
  }
  return result;
}

std::string textOf(sqlite3_stmt* statement, std::size_t column) {
  const auto* const text =
      reinterpret_cast<const char*>(sqlite3_column_text(statement, static_cast<int>(column)));
  return text == nullptr ? std::string() : text;
}

}  // namespace korveldb
