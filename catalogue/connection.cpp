#include "catalogue/connection.h"

#include <sys/stat.h>

#include <algorithm>
#include <ctime>
#include <limits>

#include "catalogue/sqlite_memory.h"
#include "support/ending_signals.h"
#include "support/log.h"

namespace korveldb {

namespace {

constexpr const char* kModule = "db";

/// Lets SQLite compile what only reads, and the transactions of the class. Everything else, above
/// all ATTACH and VACUUM INTO, which make files, and PRAGMA, is refused.
int allowReading(void* /*unused*/, int action, const char* /*unused*/, const char* /*unused*/,
                 const char* /*unused*/, const char* /*unused*/) {
  switch (action) {
    case SQLITE_SELECT:
    case SQLITE_READ:
    case SQLITE_FUNCTION:
    case SQLITE_RECURSIVE:
    case SQLITE_TRANSACTION:
      return SQLITE_OK;
    default:
      return SQLITE_DENY;
  }
}

// What a select may take is in proportion to the file, which can hold views and defaults that make
// any number of rows, and bytes in them, from none.

int64_t sizeOf(const std::string& fileName) {
  struct stat file {};
  return stat(fileName.c_str(), &file) == 0 ? file.st_size : 0;
}

/// How much memory SQLite may take. A result takes some ten times the bytes of the rows that are
/// stored.
int64_t memoryFor(int64_t fileSize) {
  constexpr int64_t kTimesTheFile = 20;
  constexpr int64_t kSmallFile = int64_t{1024} * 1024;
  return kTimesTheFile * std::max(fileSize, kSmallFile);
}

/// How long a cell may be: as long as the file, or a write-ahead log beside a small one.
int longestCellFor(int64_t fileSize) {
  return static_cast<int>(
      std::clamp<int64_t>(fileSize, 1'000'000, std::numeric_limits<int>::max()));
}

/// How many steps of SQLite's virtual machine a statement may take. A find takes less than one for
/// each byte of the file; a view can take any number.
int64_t stepsFor(int64_t fileSize) {
  constexpr int64_t kStepsOfAByte = 100;
  return kStepsOfAByte * std::max<int64_t>(fileSize, 1'000'000);
}

/// How long these steps may take: one that calls a function can be as costly as thousands.
std::chrono::seconds timeFor(int64_t fileSize) {
  constexpr int64_t kBytesOfASecond = 1'000'000;
  return std::chrono::seconds(std::max<int64_t>(fileSize / kBytesOfASecond, 10));
}

std::chrono::nanoseconds processorTime() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

constexpr int kStepsBetweenLooks = 10'000;  // less than a millisecond

/// Whether a signal has been caught; whoever runs the statement ends the program.
bool isSignalled() {
  try {
    endIfSignalled();
    return false;
  } catch (const EndedBySignal&) {
    return true;
  }
}

}  // namespace

tSqlite3db::tSqlite3db(const std::string& fileName) {
  const int64_t fileSize = sizeOf(fileName);
  allowedSteps = stepsFor(fileSize);
  allowedTime = timeFor(fileSize);
  limitSqliteMemory(memoryFor(fileSize));
  // For writing, because only so SQLite can take back what a dead writer left half done; what
  // follows keeps everything else out. A missing file is not created.
  sqlite3_open_v2(fileName.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  if (handle == nullptr) {
    return;  // out of memory: every statement fails
  }
  sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, longestCellFor(fileSize));
  // A connection selects once, so a page is read once: a few of them, used again and again, cost
  // less than SQLite's usual two megabytes.
  sqlite3_exec(handle, "PRAGMA query_only = 1; PRAGMA cache_size = 64", nullptr, nullptr, nullptr);
  sqlite3_set_authorizer(handle, allowReading, nullptr);
  sqlite3_trace_v2(handle, SQLITE_TRACE_STMT, beginStatement, this);
  sqlite3_progress_handler(handle, kStepsBetweenLooks, breakOff, this);
}

tSqlite3db::~tSqlite3db() {
  if (inTransaction) {
    log_function(LOG_LEVEL_ERROR, kModule,
                 "Closing DB connection while still in a transaction: executing rollback");
    rollbackTransaction();
  }
  sqlite3_close(handle);
}

int tSqlite3db::beginStatement(unsigned /*unused*/, void* connection, void* /*unused*/,
                               void* /*unused*/) {
  auto& db = *static_cast<tSqlite3db*>(connection);
  db.takenSteps = 0;
  db.timeAtBegin = processorTime();
  return 0;
}

int tSqlite3db::breakOff(void* connection) {
  auto& db = *static_cast<tSqlite3db*>(connection);
  db.takenSteps += kStepsBetweenLooks;
  const bool tooMuch =
      db.takenSteps > db.allowedSteps || processorTime() - db.timeAtBegin > db.allowedTime;
  return static_cast<int>(tooMuch || isSignalled());
}

bool tSqlite3db::exec(const std::string& sql) {
  constexpr int kTries = 3;
  int result = SQLITE_OK;
  for (int n = 0; n < kTries; ++n) {
    result = sqlite3_exec(handle, sql.c_str(), nullptr, nullptr, nullptr);
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
  if (inTransaction) {
    log_function(LOG_LEVEL_ERROR, kModule, "DB: Already in transaction");
    return false;
  }
  const bool begun = exec("BEGIN TRANSACTION");
  inTransaction = true;
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
  if (!inTransaction) {
    log_function(LOG_LEVEL_ERROR, kModule, "DB: Not in transaction");
    return false;
  }
  const bool ended = exec(sql);
  inTransaction = false;
  return ended;
}

}  // namespace korveldb
