#include "tests/support/catalogue_file.h"

#include <filesystem>
#include <stdexcept>

namespace lineup::test {

namespace {

std::string columnDefinition(const CatalogueTable& table, std::size_t column) {
  if (column == table.serviceId) {
    return "service_id INTEGER";
  }
  if (column == table.serviceName) {
    return "service_name TEXT";
  }
  return "column" + std::to_string(column);
}

std::string createStatement(const CatalogueTable& table, std::size_t extraColumns) {
  std::string sql = std::string("CREATE TABLE ") + table.name + "(" + columnDefinition(table, 0);
  for (std::size_t column = 1; column < table.columnTypes.size() + extraColumns; ++column) {
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

std::vector<Row> CatalogueWriter::select(const std::string& sql) const {
  char** cells = nullptr;
  int rows = 0;
  int columns = 0;
  if (sqlite3_get_table(handle_, sql.c_str(), &cells, &rows, &columns, nullptr) != SQLITE_OK) {
    throw std::runtime_error(sql + ": " + sqlite3_errmsg(handle_));
  }
  std::vector<Row> result;
  for (int cell = 0; cell < (rows + 1) * columns; ++cell) {
    if (cell % columns == 0) {
      result.emplace_back();
    }
    result.back().push_back(cells[cell] == nullptr ? std::nullopt
                                                   : std::optional<std::string>(cells[cell]));
  }
  sqlite3_free_table(cells);
  return result;
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

std::size_t CatalogueWriter::columnCount(const std::string& table) const {
  return std::stoul(*select("SELECT count(*) FROM pragma_table_info('" + table + "')")[1][0]);
}

CatalogueFile::CatalogueFile(const std::string& path, std::size_t extraColumns)
    : CatalogueWriter(cleared(path)) {
  std::string sql = "BEGIN;";
  for (const CatalogueTable& table : kCatalogueTables) {
    sql += createStatement(table, extraColumns);
  }
  execute(sql + "COMMIT");
}

CatalogueLock::CatalogueLock(const std::string& path) : writer_(path) {
  writer_.execute("BEGIN EXCLUSIVE");
}

void CatalogueLock::release() {
  writer_.execute("COMMIT");
}

}  // namespace lineup::test
