// The catalogue's list columns and cells. An input is one table: its first character names the
// table (S, T, C or I), each line is a row with tabs between the cells. A cell is a text, or, after
// '#', an integer, after '%' a real number, after '!' a blob; '~' alone is NULL. The first row says
// how many columns there are.

#include <sqlite3.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue/build_dvb_services.h"
#include "catalogue/tables.h"
#include "model/lineup_editor.h"
#include "support/words.h"
#include "tests/fuzz/memory_limit.h"
#include "tests/fuzz/require.h"
#include "tests/fuzz/round_trip.h"
#include "tests/fuzz/surroundings.h"

namespace {

using lineup::fuzz::require;

using korveldb::tTable;

constexpr std::size_t kMostColumns = 64;
constexpr std::size_t kMostRows = 4096;  // a row of one byte takes a kilobyte of memory

using Row = std::vector<std::string>;

std::string columnName(const tTable& table, std::size_t column) {
  if (column == table.id) {
    return "service_id";
  }
  return column == table.serviceName ? "service_name" : "column" + std::to_string(column);
}

void execute(const std::string& sql) {
  require(
      sqlite3_exec(lineup::fuzz::catalogue(), sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK,
      "the catalogue can be filled");
}

bool makeEmptyTables() {
  for (const tTable* table : korveldb::kTables) {
    execute(std::string("CREATE TABLE ") + table->name + "(service_id, service_name)");
  }
  return true;
}

/// An empty table with `columns` columns; the others are empty, too. A missing one would be tried
/// three times for each service.
void makeTable(const tTable& table, std::size_t columns) {
  static const bool made = makeEmptyTables();
  static const tTable* before = &table;
  require(made, "the catalogue has its tables");
  execute(std::string("DELETE FROM ") + before->name);
  before = &table;
  execute(std::string("DROP TABLE ") + table.name);
  std::string names;
  for (std::size_t column = 0; column < columns; ++column) {
    names += (column == 0 ? "" : ",") + columnName(table, column);
  }
  execute(std::string("CREATE TABLE ") + table.name + "(" + names + ")");
}

void bind(sqlite3_stmt* statement, int place, const std::string& cell) {
  const char* const content = cell.data() + (cell.empty() ? 0 : 1);
  const int size = static_cast<int>(cell.size()) - 1;
  switch (cell.empty() ? '\0' : cell[0]) {
    case '#':
      sqlite3_bind_int64(statement, place, std::strtoll(content, nullptr, 10));
      break;
    case '%':
      sqlite3_bind_double(statement, place, std::strtod(content, nullptr));
      break;
    case '!':
      sqlite3_bind_blob(statement, place, content, size, SQLITE_STATIC);
      break;
    case '~':
      sqlite3_bind_null(statement, place);
      break;
    default:
      sqlite3_bind_text(statement, place, cell.data(), static_cast<int>(cell.size()),
                        SQLITE_STATIC);
  }
}

void insertRows(const tTable& table, std::size_t columns, const std::vector<Row>& rows) {
  std::string places = "?";
  for (std::size_t column = 1; column < columns; ++column) {
    places += ",?";
  }
  const std::string sql = std::string("INSERT INTO ") + table.name + " VALUES(" + places + ")";
  sqlite3_stmt* statement = nullptr;
  require(sqlite3_prepare_v2(lineup::fuzz::catalogue(), sql.c_str(), -1, &statement, nullptr) ==
              SQLITE_OK,
          "a row can be inserted");
  for (const Row& row : rows) {
    for (std::size_t column = 0; column < columns && column < row.size(); ++column) {
      bind(statement, static_cast<int>(column) + 1, row[column]);
    }
    sqlite3_step(statement);
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
  }
  sqlite3_finalize(statement);
}

void fill(const tTable& table, const std::vector<Row>& rows) {
  const std::size_t columns =
      rows.empty() ? 1 : std::min(std::max<std::size_t>(1, rows.front().size()), kMostColumns);
  execute("BEGIN");
  makeTable(table, columns);
  insertRows(table, columns, rows);
  execute("COMMIT");
}

/// Adds the service `id`. A refusal leaves everything as it was.
void addService(lineup::LineupEditor& editor, int32_t id) {
  const auto before = editor.config;
  const bool wasPending = editor.pendingChanges;
  try {
    const int32_t key = editor.addCatalogueService(id);
    require(editor.pendingChanges && editor.config.lineupConfig.dvbInputServices.contains(key),
            "an added service is there and waits for a commit");
    return;
  } catch (const std::runtime_error& error) {
    require(std::string_view(error.what()) == "Service not found", "the message of a missing id");
  } catch (const std::invalid_argument& error) {
    require(std::string_view(error.what()) == "stoi", "the message of an item without a number");
  } catch (const std::out_of_range& error) {
    require(std::string_view(error.what()) == "stoi", "the message of an item that is too large");
  }
  require(editor.config == before && editor.pendingChanges == wasPending,
          "a service that is not added changes nothing");
}

void checkLists(const std::string& text) {
  std::string joined;
  const std::vector<std::string> items = lineup::parseTextList(text);
  for (const std::string& item : items) {
    joined += item + ',';
  }
  require(joined == text || joined == text + ',', "a list is its items with commas between them");
  try {
    require(lineup::parseIntegerList(text).size() == items.size(), "a number for every item");
  } catch (const std::invalid_argument&) {
  } catch (const std::out_of_range&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  constexpr std::size_t kRowsAdded = 4;
  static const bool quiet = (lineup::fuzz::beQuiet(), true);
  require(quiet, "the output goes nowhere");
  const std::string text(reinterpret_cast<const char*>(data), size);
  checkLists(text);
  // Their letters are the ones that the names of their inputs begin with.
  const tTable* table = korveldb::kTables.front();
  for (const tTable* candidate : korveldb::kTables) {
    if (text.starts_with(candidate->input.name[0])) {
      table = candidate;
    }
  }
  std::vector<Row> rows;
  for (const std::string& line :
       lineup::splitWords(text.substr(std::min<std::size_t>(1, size)), '\n')) {
    rows.push_back(lineup::splitWords(line, '\t'));
  }
  rows.resize(std::min(rows.size(), kMostRows));
  fill(*table, rows);

  const lineup::fuzz::MemoryLimit limit;
  lineup::LineupEditor editor;
  editor.findServices("");
  for (std::size_t row = 0; row < rows.size() && row < kRowsAdded; ++row) {
    const std::size_t column = table->id;
    const std::string id = column < rows[row].size() ? rows[row][column] : "";
    addService(editor, lineup::readNumber(id.starts_with('#') ? id.substr(1) : id));
  }
  if (editor.pendingChanges) {
    lineup::fuzz::requireRoundTrip(editor.config);
  }
  return 0;
}
