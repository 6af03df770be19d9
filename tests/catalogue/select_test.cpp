#include "catalogue/select.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "catalogue/connection.h"
#include "support/words.h"
#include "tests/support/catalogue_file.h"
#include "tests/support/file_content.h"
#include "tests/support/pipe.h"
#include "tests/support/streams.h"
#include "tests/support/temporary_folder.h"

namespace korveldb {
namespace {

using namespace lineup::test;
using std::chrono::seconds;
using std::chrono::steady_clock;
using Lines = std::vector<std::string>;

/// The text "c" and its position in each of `columns` columns.
Cells cellsNamedByPosition(std::size_t columns) {
  Cells cells;
  for (std::size_t column = 0; column < columns; ++column) {
    cells[column] = "c" + std::to_string(column);
  }
  return cells;
}

class Select : public testing::Test {
 protected:
  /// What is written to standard error while `action` runs.
  template <class Action>
  static Lines errorLinesOf(Action action) {
    return lineup::splitWords(errorsOf(action), '\n');
  }

  /// What the table's select with the filter gives, over a connection of its own.
  template <class Table>
  std::unique_ptr<tRowList> selected(const char* filter = nullptr) const {
    const tSqlite3db db(path);
    return Table::doSelect(db.getHandle(), filter);
  }

  TemporaryFolder folder;
  const std::string path = folder.file("catalogue.sqlite");
};

TEST_F(Select, EveryColumnOfEveryTableIsReadAsAnIntegerOrAText) {
  const auto expectNamedByPosition = [](const auto& list, const std::string& types) {
    ASSERT_EQ(list->rows.size(), 1U);
    const auto& row = list->rows[0];
    ASSERT_EQ(row.columns.size(), types.size());
    ASSERT_EQ(row.flags.size(), types.size());
    for (std::size_t column = 0; column < types.size(); ++column) {
      const auto* const cell = row.columns[column].get();
      EXPECT_EQ(cell->asString(), "c" + std::to_string(column));
      EXPECT_EQ(dynamic_cast<const tSqlite3int*>(cell) != nullptr, types[column] == 'I') << column;
      EXPECT_FALSE(row.flags[column]);
    }
  };
  CatalogueFile file(path);
  for (const char* const table : {kSat, kTdt, kCable, kIP}) {
    file.insert(table, cellsNamedByPosition(25));
  }
  expectNamedByPosition(selected<tAvailableSatService>(), "IIISISIIIIIIIISISIIISIISS");
  expectNamedByPosition(selected<tAvailableTdtService>(), "IIIIIIIIISISIIISS");
  expectNamedByPosition(selected<tAvailableCableService>(), "IIIIIIIIIIISIIISS");
  expectNamedByPosition(selected<tAvailableIPService>(), "ISSIISISIIISS");
}

TEST_F(Select, NullCellsAreZeroOrEmpty) {
  CatalogueFile(path).insert(kSat, {});
  const auto list = selected<tAvailableSatService>();
  ASSERT_EQ(list->rows.size(), 1U);
  EXPECT_EQ(list->rows[0].asInt(11), 0);
  EXPECT_EQ(list->rows[0].asText(11), "0");
  EXPECT_EQ(list->rows[0].asText(16), "");
}

TEST_F(Select, TextInAnIntegerColumnGivesTheNumberItBeginsWith) {
  CatalogueFile(path).insert(kSat, {{7, "11778 MHz"}, {17, "none"}});
  const auto list = selected<tAvailableSatService>();
  EXPECT_EQ(list->rows[0].asInt(7), 11778);
  EXPECT_EQ(list->rows[0].asText(7), "11778");
  EXPECT_EQ(list->rows[0].asInt(17), 0);
}

TEST_F(Select, RowsKeepTheirOrderAndAlignmentWithMoreColumnsThanKnown) {
  CatalogueFile file(path, 3);
  for (const char* number : {"1", "2", "3"}) {
    Cells cells = cellsNamedByPosition(28);
    cells[0] = number;
    file.insert(kSat, cells);
  }
  const auto list = selected<tAvailableSatService>();
  ASSERT_EQ(list->rows.size(), 3U);
  for (std::size_t row = 0; row < 3; ++row) {
    EXPECT_EQ(list->rows[row].asInt(0), static_cast<int>(row) + 1);
    EXPECT_EQ(list->rows[row].asText(24), "c24");
  }
}

TEST_F(Select, ColumnsThatTheResultLacksAreNull) {
  // Only a second statement typed into a name brings this about.
  const CatalogueFile file(path);
  const auto list = selected<tAvailableSatService>("WHERE 0; SELECT 5 UNION SELECT 6");
  ASSERT_EQ(list->rows.size(), 2U);
  EXPECT_EQ(list->rows[0].asInt(0), 5);
  EXPECT_EQ(list->rows[0].asInt(1), 0);
  EXPECT_EQ(list->rows[1].asInt(0), 6);
  EXPECT_EQ(list->rows[1].asText(24), "");
}

TEST_F(Select, NoMatchIsAnEmptyListWithoutAMessage) {
  CatalogueFile(path).insert(kSat, {{15, "17"}});
  EXPECT_EQ(errorLinesOf([&] {
              const auto list = selected<tAvailableSatService>("WHERE 0");
              ASSERT_NE(list, nullptr);
              EXPECT_TRUE(list->rows.empty());
            }),
            Lines{});
}

// Leaks show under the sanitizer.
TEST_F(Select, FreeListTakesAListOrNone) {
  CatalogueFile(path).insert(kSat, {{15, "17"}});
  tAvailableSatService::freeList(selected<tAvailableSatService>());
  tAvailableSatService::freeList(nullptr);
}

TEST_F(Select, FilterArgumentsAreInsertedAsTheyAre) {
  CatalogueFile file(path);
  file.insert(kSat, {{15, "17"}, {16, "Channel One"}});
  file.insert(kSat, {{15, "18"}, {16, "100% Folk"}});
  const tSqlite3db db(path);
  const auto namesLike = [&](const char* name) {
    const auto list =
        tAvailableSatService::doSelect(db.getHandle(), "WHERE service_name LIKE '%%%s%%'", name);
    std::string names;
    for (const auto& row : list->rows) {
      names += "[" + row.asText(16) + "]";
    }
    return names;
  };
  EXPECT_EQ(namesLike("nel"), "[Channel One]");
  EXPECT_EQ(namesLike("CHANNEL"), "[Channel One]");
  EXPECT_EQ(namesLike("C%e"), "[Channel One]");
  EXPECT_EQ(namesLike("0_ f"), "[100% Folk]");
  EXPECT_EQ(namesLike(""), "[Channel One][100% Folk]");
  EXPECT_EQ(namesLike("%s%d%n"), "");
  EXPECT_EQ(namesLike("x' OR service_name LIKE '100"), "[100% Folk]");

  const auto byId = tAvailableSatService::doSelect(db.getHandle(), "WHERE service_id='%d'", 17);
  ASSERT_EQ(byId->rows.size(), 1U);
  EXPECT_EQ(byId->rows[0].asText(16), "Channel One");
  EXPECT_TRUE(
      tAvailableSatService::doSelect(db.getHandle(), "WHERE service_id='%d'", -17)->rows.empty());
}

TEST_F(Select, AMissingTableIsTriedThreeTimesWithGrowingWaits) {
  CatalogueFile(path).execute("DROP TABLE availableTdtService");
  const auto start = steady_clock::now();
  const Lines lines = errorLinesOf([&] {
    const auto list = selected<tAvailableTdtService>();
    ASSERT_NE(list, nullptr);
    EXPECT_TRUE(list->rows.empty());
  });
  EXPECT_GE(steady_clock::now() - start, seconds(6));
  ASSERT_EQ(lines.size(), 9U);
  for (std::size_t attempt = 0; attempt < 3; ++attempt) {
    EXPECT_EQ(lines[3 * attempt],
              "[ERROR_DB]doSelect: Error leyendo datos tabla availableTdtService . intento: " +
                  std::to_string(attempt));
    EXPECT_EQ(lines[3 * attempt + 1], "[ERROR_DB]doSelect: no such table: availableTdtService");
    // The last one ends in the system's own error text.
    EXPECT_EQ(lines[3 * attempt + 2].rfind("no such table: availableTdtService: ", 0), 0U);
  }
}

TEST_F(Select, AFileThatCannotBeOpenedHasNoErrorText) {
  const Lines lines = errorLinesOf([&] {
    const tSqlite3db db(folder.file("nowhere/catalogue.sqlite"));
    EXPECT_TRUE(tAvailableIPService::doSelect(db.getHandle(), nullptr)->rows.empty());
  });
  EXPECT_EQ(
      lines,
      (Lines{"[ERROR_DB]doSelect: Error leyendo datos tabla availableIPService . intento: 0",
             "[ERROR_DB]doSelect: Error leyendo datos tabla availableIPService . intento: 1",
             "[ERROR_DB]doSelect: Error leyendo datos tabla availableIPService . intento: 2"}));
}

TEST_F(Select, ALockThatGoesAwayCostsOneAttempt) {
  CatalogueFile(path).insert(kCable, {{10, "17"}, {11, "Channel One"}});
  const tSqlite3db db(path);
  CatalogueLock lock(path);

  // Standard error is a pipe meanwhile, and the first line on it releases the lock.
  Pipe pipe;
  auto piped = std::make_unique<StandardErrorIs>(pipe.writeEnd);
  closeFile(pipe.writeEnd);
  std::string errors;
  std::thread reader([&] {
    char byte = 0;
    while (read(pipe.readEnd, &byte, 1) == 1) {
      if (byte == '\n' && errors.find('\n') == std::string::npos) {
        lock.release();
      }
      errors += byte;
    }
  });
  const auto start = steady_clock::now();
  const auto list = tAvailableCableService::doSelect(db.getHandle(), nullptr);
  const auto duration = steady_clock::now() - start;
  piped.reset();
  reader.join();

  ASSERT_EQ(list->rows.size(), 1U);
  EXPECT_EQ(list->rows[0].asText(11), "Channel One");
  EXPECT_GE(duration, seconds(1));
  const Lines lines = lineup::splitWords(errors, '\n');
  ASSERT_EQ(lines.size(), 3U) << errors;
  EXPECT_EQ(lines[0],
            "[ERROR_DB]doSelect: Error leyendo datos tabla availableCableService . intento: 0");
  EXPECT_EQ(lines[1], "[ERROR_DB]doSelect: database is locked");
}

TEST_F(Select, ASecondStatementThatWritesIsRefused) {
  CatalogueFile(path).insert(kSat, {{15, "17"}, {16, "Channel One"}});
  const auto before = filesIn(folder.path());
  const Lines lines = errorLinesOf([&] {
    const tSqlite3db db(path);
    EXPECT_TRUE(tAvailableSatService::doSelect(db.getHandle(), "WHERE service_name LIKE '%%%s%%'",
                                               "One';DROP TABLE availableSatService;--")
                    ->rows.empty());
  });
  ASSERT_EQ(lines.size(), 9U);
  EXPECT_EQ(lines[1], "[ERROR_DB]doSelect: not authorized");
  EXPECT_EQ(filesIn(folder.path()), before);
}

TEST_F(Select, ASecondStatementThatDeletesIsRefused) {
  CatalogueFile(path).insert(kSat, {{15, "17"}});
  const auto before = filesIn(folder.path());
  const Lines lines = errorLinesOf([&] {
    EXPECT_TRUE(selected<tAvailableSatService>("; DELETE FROM availableSatService")->rows.empty());
  });
  ASSERT_EQ(lines.size(), 9U);
  EXPECT_EQ(lines[1], "[ERROR_DB]doSelect: attempt to write a readonly database");
  EXPECT_EQ(filesIn(folder.path()), before);
}

TEST_F(Select, VirtualTablesAreRead) {
  for (const std::string module : {"fts3", "fts4", "fts5", "rtree"}) {
    SCOPED_TRACE(module);
    CatalogueFile file(path);
    file.execute("DROP TABLE availableTdtService; CREATE VIRTUAL TABLE availableTdtService USING " +
                 module + "(service_id, service_name, other)");
    file.execute("INSERT INTO availableTdtService VALUES(17, 18, 19)");
    const auto before = filesIn(folder.path());
    const std::string search = module == "rtree" ? "" : "WHERE availableTdtService MATCH '18'";
    for (const std::string& filter :
         {std::string(), std::string("WHERE service_id = 17"), search}) {
      const auto list = selected<tAvailableTdtService>(filter.c_str());
      ASSERT_EQ(list->rows.size(), 1U);
      EXPECT_EQ(list->rows[0].asInt(0), 17);
      EXPECT_EQ(list->rows[0].asInt(1), 18);
    }
    EXPECT_EQ(filesIn(folder.path()), before);
  }
}

TEST_F(Select, ViewsOnViewsAndCompoundSelectsAreRead) {
  CatalogueFile file(path);
  std::string views = "ALTER TABLE availableTdtService RENAME TO view0;";
  for (int i = 0; i < 40; ++i) {
    views += "CREATE VIEW view" + std::to_string(i + 1) + " AS SELECT * FROM view" +
             std::to_string(i) + " UNION ALL SELECT * FROM view0 WHERE 0;";
  }
  file.insert(kTdt, {{0, "17"}});
  file.execute(views + "CREATE VIEW availableTdtService AS SELECT * FROM view40 " +
               "WHERE (SELECT abs(count(*)) FROM view0) = 1");
  EXPECT_EQ(selected<tAvailableTdtService>()->rows.size(), 1U);
}

TEST_F(Select, TheConnectionMayWriteAfterASelect) {
  const CatalogueFile file(path);
  tSqlite3db db(path);
  EXPECT_TRUE(tAvailableSatService::doSelect(db.getHandle(), nullptr)->rows.empty());
  EXPECT_TRUE(db.exec("INSERT INTO availableSatService(service_id) VALUES(17)"));
  EXPECT_EQ(tAvailableSatService::doSelect(db.getHandle(), nullptr)->rows.size(), 1U);
}

TEST_F(Select, RowsInTheWriteAheadLogAreRead) {
  constexpr int kRows = 22'000;
  CatalogueFile file(path);
  file.execute("PRAGMA journal_mode=WAL; PRAGMA wal_autocheckpoint=0; VACUUM");
  file.execute("PRAGMA wal_checkpoint(TRUNCATE)");
  file.fill(kIP, kRows,
            "i, 'uuid-' || i, 'udp://239.1.' || i / 250 || '.' || i % 250 || ':1234', 0, 0, '', i, "
            "'Channel ' || i, i, 1, 1, 'spa', '1,2'");
  file.execute(
      "UPDATE availableIPService SET service_name = hex(zeroblob(750000)) "
      "WHERE service_id = 17");
  ASSERT_LT(std::filesystem::file_size(path), 100'000U);
  const auto list = selected<tAvailableIPService>();
  ASSERT_EQ(list->rows.size(), static_cast<std::size_t>(kRows));
  EXPECT_EQ(list->rows[16].asText(7), std::string(1'500'000, '0'));
  EXPECT_EQ(list->rows.back().asText(7), "Channel 22000");
  EXPECT_EQ(list->rows.back().asText(12), "1,2");
}

TEST_F(Select, AViewMayTakeHundredsOfMillionsOfSteps) {
  CatalogueFile file(path);
  file.execute("DROP TABLE availableSatService");
  file.execute(
      "CREATE VIEW availableSatService AS SELECT max(i) FROM (WITH RECURSIVE n(i) AS (VALUES(1) "
      "UNION ALL SELECT i + 1 FROM n LIMIT 10000000) SELECT i FROM n)");
  EXPECT_EQ(errorLinesOf([&] {
              const auto list = selected<tAvailableSatService>();
              ASSERT_EQ(list->rows.size(), 1U);
              EXPECT_EQ(list->rows[0].asInt(0), 10'000'000);
            }),
            Lines{});
}

TEST_F(Select, ACatalogueInWalModeIsReadAndLeftAsItWas) {
  {
    CatalogueFile file(path);
    file.execute("PRAGMA journal_mode=WAL");
    file.insert(kSat, {{15, "17"}});
    EXPECT_EQ(selected<tAvailableSatService>()->rows.size(), 1U) << "with its writer connected";
  }
  const auto before = filesIn(folder.path());
  ASSERT_EQ(before.size(), 1U);
  EXPECT_EQ(selected<tAvailableSatService>()->rows.size(), 1U) << "on its own";
  EXPECT_EQ(filesIn(folder.path()), before);
}

TEST_F(Select, AHotJournalIsRolledBack) {
  const TemporaryFolder crashed;
  CatalogueFile file(path);
  file.insert(kSat, {{15, "17"}, {16, "Channel One"}});
  file.execute(
      "PRAGMA cache_size=1; BEGIN; UPDATE availableSatService SET service_name='Half written';"
      "CREATE TABLE filler(x); WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n LIMIT "
      "100) INSERT INTO filler SELECT zeroblob(2000) FROM n");
  // The file and its journal as a power cut would leave them.
  std::filesystem::copy(folder.path(), crashed.path());
  ASSERT_EQ(filesIn(crashed.path()).count("catalogue.sqlite-journal"), 1U);

  const tSqlite3db db(crashed.file("catalogue.sqlite"));
  const auto list = tAvailableSatService::doSelect(db.getHandle(), nullptr);
  ASSERT_EQ(list->rows.size(), 1U);
  EXPECT_EQ(list->rows[0].asText(16), "Channel One");
}

}  // namespace
}  // namespace korveldb
