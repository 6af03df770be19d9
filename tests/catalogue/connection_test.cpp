#include "catalogue/connection.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "catalogue/select.h"
#include "tests/support/catalogue_file.h"
#include "tests/support/file_content.h"
#include "tests/support/logged.h"
#include "tests/support/temporary_folder.h"

namespace korveldb {
namespace {

using namespace lineup::test;

class Connection : public testing::Test {
 protected:
  template <class Action>
  static std::vector<std::string> logOf(Action action) {
    return logged(LOG_LEVEL_DEBUG, action);
  }

  TemporaryFolder folder;
  const std::string path = folder.file("catalogue.sqlite");
  CatalogueFile file{path};
};

using Records = std::vector<std::string>;

/// SQLite without memory to take.
class NoMemory {
 public:
  NoMemory() {
    sqlite3_shutdown();
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 1);  // which the limit needs
    sqlite3_initialize();
    sqlite3_hard_heap_limit64(1);
  }
  ~NoMemory() { sqlite3_hard_heap_limit64(0); }
  NoMemory(const NoMemory&) = delete;
  NoMemory& operator=(const NoMemory&) = delete;
};

TEST_F(Connection, WithoutMemoryEveryStatementFails) {
  const NoMemory nothing;
  tSqlite3db db(path);
  EXPECT_EQ(db.getHandle(), nullptr);
  EXPECT_EQ(logOf([&] { EXPECT_FALSE(db.beginTransaction()); }),
            (Records{"[db] DB: Begin transaction",
                     "[db] Query could not be executed (21): BEGIN TRANSACTION"}));
}

TEST_F(Connection, WithoutMemoryASelectRaises) {
  const tSqlite3db db(path);
  const NoMemory nothing;
  const std::string filter(1000, ' ');
  EXPECT_THROW(tAvailableSatService::doSelect(db.getHandle(), filter.c_str()), std::bad_alloc);
}

/// An operation on transactions, its result and what it logs after its own name.
struct Step {
  bool (tSqlite3db::*run)();
  bool result;
  const char* record = "";
};

constexpr auto kBegin = &tSqlite3db::beginTransaction;
constexpr auto kCommit = &tSqlite3db::commitTransaction;
constexpr auto kRollback = &tSqlite3db::rollbackTransaction;
constexpr char kNotBegun[] = "[db] DB: Not in transaction";
constexpr char kBegunAlready[] = "[db] DB: Already in transaction";

class Transactions : public Connection {
 protected:
  static void expectSteps(tSqlite3db& db, const std::vector<Step>& steps) {
    for (const Step& step : steps) {
      Records expected = {step.run == kBegin    ? "[db] DB: Begin transaction"
                          : step.run == kCommit ? "[db] DB: Commit transaction"
                                                : "[db] DB: Rollback transaction"};
      if (*step.record != '\0') {
        expected.emplace_back(step.record);
      }
      EXPECT_EQ(logOf([&] { EXPECT_EQ((db.*step.run)(), step.result); }), expected);
    }
  }
};

TEST_F(Transactions, BeginAndEndOnceEach) {
  tSqlite3db db(path);
  expectSteps(db, {{kCommit, false, kNotBegun}, {kRollback, false, kNotBegun}, {kBegin, true}});
  EXPECT_EQ(sqlite3_get_autocommit(db.getHandle()), 0);
  expectSteps(db, {{kBegin, false, kBegunAlready}, {kCommit, true}});
  EXPECT_NE(sqlite3_get_autocommit(db.getHandle()), 0);
  expectSteps(db, {{kCommit, false, kNotBegun}, {kBegin, true}, {kRollback, true}});
  EXPECT_NE(sqlite3_get_autocommit(db.getHandle()), 0);
  expectSteps(db, {{kRollback, false, kNotBegun}});
}

TEST_F(Transactions, ThatFailCountAsBegunOrEnded) {
  tSqlite3db db(folder.file("nowhere/missing.sqlite"));
  const Step begin{kBegin, false, "[db] Query could not be executed (21): BEGIN TRANSACTION"};
  const Step commit{kCommit, false, "[db] Query could not be executed (21): COMMIT"};
  const Step rollback{kRollback, false, "[db] Query could not be executed (21): ROLLBACK"};
  expectSteps(db, {begin, {kBegin, false, kBegunAlready}, commit, {kRollback, false, kNotBegun}});
  expectSteps(db, {begin, rollback, {kCommit, false, kNotBegun}});
}

TEST_F(Connection, ClosedInATransactionItRollsBack) {
  EXPECT_EQ(logOf([&] {
              tSqlite3db db(path);
              db.beginTransaction();
            }),
            (Records{"[db] DB: Begin transaction",
                     "[db] Closing DB connection while still in a transaction: executing rollback",
                     "[db] DB: Rollback transaction"}));
}

TEST_F(Connection, ClosedWithoutATransactionItIsSilent) {
  EXPECT_EQ(logOf([&] { const tSqlite3db db(path); }), Records{});
}

TEST_F(Connection, RunsAStatement) {
  tSqlite3db db(path);
  EXPECT_EQ(logOf([&] { EXPECT_TRUE(db.exec("SELECT * FROM availableSatService")); }), Records{});
}

TEST_F(Connection, AFailedStatementIsLoggedOnceWithItsCode) {
  tSqlite3db db(path);
  EXPECT_EQ(logOf([&] { EXPECT_FALSE(db.exec("no such statement")); }),
            (Records{"[db] Query could not be executed (1): no such statement"}));
}

TEST_F(Connection, AStatementIsTriedThreeTimes) {
  tSqlite3db db(path);
  ASSERT_TRUE(db.exec("SELECT * FROM availableSatService"));
  const CatalogueLock lock(path);
  int tries = 0;
  sqlite3_trace_v2(
      db.getHandle(), SQLITE_TRACE_STMT,
      [](unsigned, void* counter, void*, void*) { return ++*static_cast<int*>(counter), 0; },
      &tries);
  EXPECT_EQ(logOf([&] { EXPECT_FALSE(db.exec("SELECT * FROM availableSatService")); }),
            (Records{"[db] Query could not be executed (5): SELECT * FROM availableSatService"}));
  EXPECT_EQ(tries, 3);
}

TEST_F(Connection, AMissingFileIsCreatedEmpty) {
  const tSqlite3db db(folder.file("missing.sqlite"));
  EXPECT_EQ(filesIn(folder.path()).at("missing.sqlite"), "");
}

TEST_F(Connection, StatementsAndTransactionsWorkOnADatabaseOfItsOwn) {
  const std::string own = folder.file("own.sqlite");
  tSqlite3db db(own);
  EXPECT_EQ(logOf([&] {
              EXPECT_TRUE(db.exec("PRAGMA journal_mode=WAL"));
              EXPECT_TRUE(db.exec("CREATE TABLE numbers(x)"));
              EXPECT_TRUE(db.exec("INSERT INTO numbers VALUES(1)"));
              EXPECT_TRUE(db.exec("ATTACH '" + path + "' AS other"));
              EXPECT_TRUE(db.exec("DETACH other"));
            }),
            Records{});
  db.beginTransaction();
  EXPECT_TRUE(db.exec("INSERT INTO numbers VALUES(2)"));
  EXPECT_TRUE(db.commitTransaction());
  db.beginTransaction();
  EXPECT_TRUE(db.exec("DELETE FROM numbers"));
  EXPECT_TRUE(db.rollbackTransaction());
  // Fails unless the rows 1 and 2 are there, and no others.
  CatalogueWriter(own).execute(
      "CREATE TABLE expected(x CHECK(x = 3)); INSERT INTO expected SELECT sum(x) FROM numbers");
}

TEST_F(Connection, IsQueryOnlyWhileAReadingOnlyLives) {
  tSqlite3db db(path);
  {
    const tReadingOnly reading(db.getHandle());
    EXPECT_TRUE(db.exec("SELECT upper(service_name) FROM availableSatService"));
    EXPECT_EQ(logOf([&] {
                EXPECT_FALSE(db.exec("INSERT INTO availableSatService(service_id) VALUES(1)"));
              }),
              (Records{"[db] Query could not be executed (8): INSERT INTO "
                       "availableSatService(service_id) VALUES(1)"}));
  }
  EXPECT_TRUE(db.exec("INSERT INTO availableSatService(service_id) VALUES(1)"));
}

TEST_F(Connection, ASelectAfterTheDeadlineIsInterrupted) {
  tSqlite3db db(path);
  const std::string endless =
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) SELECT max(i) FROM n";
  const tReadingOnly reading(db.getHandle(), tReadingOnly::Clock::now());
  EXPECT_EQ(logOf([&] { EXPECT_FALSE(db.exec(endless)); }),
            (Records{"[db] Query could not be executed (9): " + endless}));
}

/// Statements that do more than read; FOLDER is that of the catalogue.
constexpr const char* kStatementsToRefuse[] = {
    "INSERT INTO availableSatService(service_id) VALUES(18)",
    "REPLACE INTO availableSatService(service_id) VALUES(18)",
    "UPDATE availableSatService SET service_id=18",
    "DELETE FROM availableSatService",
    "DELETE FROM availableSatService RETURNING *",
    "INSERT INTO words VALUES('text')",
    "INSERT INTO words(words) VALUES('optimize')",
    "INSERT INTO boxes VALUES(1, 2, 3)",
    "DELETE FROM words_data",
    "DROP TABLE words",
    "UPDATE sqlite_master SET name='extra'",
    "DROP TABLE availableSatService",
    "CREATE TABLE extra(x)",
    "CREATE TEMP TABLE extra(x)",
    "CREATE TABLE extra AS SELECT * FROM availableSatService",
    "CREATE VIEW extra AS SELECT 1",
    "CREATE TEMP VIEW extra AS SELECT 1",
    "CREATE INDEX extra ON availableSatService(service_id)",
    "CREATE TRIGGER extra AFTER DELETE ON availableSatService BEGIN SELECT 1; END",
    "CREATE VIRTUAL TABLE extra USING fts5(x)",
    "ALTER TABLE availableSatService RENAME TO extra",
    "ALTER TABLE availableSatService ADD COLUMN extra",
    "REINDEX",
    "ANALYZE",
    "VACUUM",
    "VACUUM INTO 'FOLDER/copy.sqlite'",
    "ATTACH 'FOLDER/new.sqlite' AS extra",
    "ATTACH 'FOLDER/other.sqlite' AS extra",
    "ATTACH '' AS extra",
    "DETACH main",
    "PRAGMA query_only=0",
    "SELECT * FROM pragma_query_only",
    "SELECT * FROM pragma_query_only('0')",
    "PRAGMA journal_mode=WAL",
    "PRAGMA journal_mode",
    "PRAGMA user_version=7",
    "PRAGMA page_size=8192",
    "PRAGMA data_version=7",
    "PRAGMA writable_schema=1",
    "PRAGMA wal_checkpoint",
    "PRAGMA temp_store_directory='FOLDER'",
    "SELECT * FROM pragma_optimize",
    "BEGIN",
    "BEGIN IMMEDIATE",
    "BEGIN EXCLUSIVE",
    "SAVEPOINT extra",
    "SELECT load_extension('FOLDER/extra.so')",
    "SELECT writefile('FOLDER/new', 'text')",
};

TEST_F(Connection, ReadingOnlyNoStatementChangesTheFileOrMakesAnother) {
  file.insert(kSat, {{15, "17"}, {16, "Channel One"}});
  file.execute(
      "CREATE INDEX names ON availableSatService(service_name);"
      "CREATE VIRTUAL TABLE words USING fts5(x); CREATE VIRTUAL TABLE boxes USING rtree(i, a, b)");
  const CatalogueFile other(folder.file("other.sqlite"));
  const auto before = filesIn(folder.path());
  for (const std::string sql : kStatementsToRefuse) {
    std::string statement = sql;
    if (const auto position = statement.find("FOLDER"); position != std::string::npos) {
      statement.replace(position, 6, folder.path());
    }
    const tSqlite3db db(path);
    const tReadingOnly reading(db.getHandle());
    EXPECT_NE(sqlite3_exec(db.getHandle(), statement.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << statement;
    EXPECT_EQ(filesIn(folder.path()), before) << statement << ", connection open";
  }
  EXPECT_EQ(filesIn(folder.path()), before);
}

}  // namespace
}  // namespace korveldb
