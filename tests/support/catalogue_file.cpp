#include "tests/support/catalogue_file.h"

#include <filesystem>
#include <stdexcept>

namespace lineup::test {

namespace {

struct Table {
  const char* name;
  std::size_t columns;
  std::size_t idColumn;
  std::size_t nameColumn;
};

constexpr Table kTables[] = {
    {kSat, 25, 15, 16}, {kTdt, 17, 10, 11}, {kCable, 17, 10, 11}, {kIP, 13, 6, 7}};

std::string columnDefinition(const Table& table, std::size_t column) {
  if (column == table.idColumn) {
    return "service_id INTEGER";
  }
  if (column == table.nameColumn) {
    return "service_name TEXT";
  }
  return "column" + std::to_string(column);
}

std::string createStatement(const Table& table, std::size_t extraColumns) {
  std::string sql = std::string("CREATE TABLE ") + table.name + "(" + columnDefinition(table, 0);
  for (std::size_t column = 1; column < table.columns + extraColumns; ++column) {
    sql += ", " + columnDefinition(table, column);
  }
  return sql + ");";
}

std::string quoted(const std::optional<std::string>& text) {
  char* sql = sqlite3_mprintf("%Q", text ? text->c_str() : nullptr);
  std::string result = sql;
  sqlite3_free(sql);
  return result;
}

/// Makes room for a new file at `path` and returns the path.
const std::string& cleared(const std::string& path) {
  std::filesystem::create_directories(std::filesystem::absolute(path).parent_path());
  for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
    std::filesystem::remove(path + suffix);
  }
  return path;
}

}  // namespace

CatalogueWriter::CatalogueWriter(const std::string& path) {
  if (sqlite3_open(path.c_str(), &handle_) != SQLITE_OK) {
    const std::string reason = sqlite3_errmsg(handle_);
    sqlite3_close(handle_);
    throw std::runtime_error("cannot open " + path + ": " + reason);
  }
}

CatalogueWriter::~CatalogueWriter() {
  sqlite3_close(handle_);
}

void CatalogueWriter::execute(const std::string& sql) {
  if (sqlite3_exec(handle_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw std::runtime_error(sql + ": " + sqlite3_errmsg(handle_));
  }
}

void CatalogueWriter::createTables(std::size_t extraColumns) {
  std::string sql = "BEGIN;";
  for (const Table& table : kTables) {
    sql += createStatement(table, extraColumns);
  }
  execute(sql + "COMMIT");
}

void CatalogueWriter::insert(const std::string& table, const Cells& cells) {
  std::string values;
  for (std::size_t column = 0; column < columnCount(table); ++column) {
    const auto cell = cells.find(column);
    values += std::string(column == 0 ? "" : ", ") +
              (cell == cells.end() ? "NULL" : quoted(cell->second));
  }
  execute("INSERT INTO " + table + " VALUES(" + values + ")");
}

void CatalogueWriter::fill(const std::string& table, int count, const std::string& cells) {
  execute("WITH RECURSIVE n(i) AS (VALUES(1) UNION ALL SELECT i + 1 FROM n LIMIT " +
          std::to_string(count) + ") INSERT INTO " + table + " SELECT " + cells + " FROM n");
}

std::size_t CatalogueWriter::columnCount(const std::string& table) {
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(handle_, ("SELECT * FROM " + table).c_str(), -1, &statement, nullptr);
  const int count = sqlite3_column_count(statement);
  sqlite3_finalize(statement);
  return static_cast<std::size_t>(count);
}

CatalogueFile::CatalogueFile(const std::string& path, std::size_t extraColumns)
    : CatalogueWriter(cleared(path)) {
  createTables(extraColumns);
}

CatalogueLock::CatalogueLock(const std::string& path) : writer_(path) {
  writer_.execute("BEGIN EXCLUSIVE");
}

void CatalogueLock::release() {
  writer_.execute("COMMIT");
}

}  // namespace lineup::test
