// Real catalogues for tests: SQLite files with the controller's four tables.

#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lineup::test {

inline constexpr const char* kSat = "availableSatService";
inline constexpr const char* kTdt = "availableTdtService";
inline constexpr const char* kCable = "availableCableService";
inline constexpr const char* kIP = "availableIPService";

/// The shape of a table. Columns are positions from 0.
struct CatalogueTable {
  const char* name;
  std::string_view columnTypes;  ///< I integer, S text; the last two columns hold lists
  std::size_t serviceId;
  std::size_t serviceName;
  std::size_t serviceType;
};

inline constexpr CatalogueTable kCatalogueTables[] = {
    {kSat, "IIISISIIIIIIIISISIIISIISS", 15, 16, 19},
    {kTdt, "IIIIIIIIISISIIISS", 10, 11, 14},
    {kCable, "IIIIIIIIIIISIIISS", 10, 11, 14},
    {kIP, "ISSIISISIIISS", 6, 7, 10},
};

/// Cells of a row by their position from 0; nothing is an SQL NULL.
using Cells = std::map<std::size_t, std::optional<std::string>>;

/// All cells of a row; nothing is an SQL NULL.
using Row = std::vector<std::optional<std::string>>;

/// A connection to a database file that may change it. Every failure is a std::runtime_error.
class CatalogueWriter {
 public:
  explicit CatalogueWriter(const std::string& path);
  ~CatalogueWriter();
  CatalogueWriter(const CatalogueWriter&) = delete;
  CatalogueWriter& operator=(const CatalogueWriter&) = delete;

  /// Runs one or more statements.
  void execute(const std::string& sql);

  /// The rows that a statement finds, after one of the columns' names; nothing without any row.
  std::vector<Row> select(const std::string& sql) const;

  /// Adds a row to `table`. Columns that `cells` does not name are NULL.
  void insert(const std::string& table, const Cells& cells);

  /// Adds `count` rows to `table`. `cells` are SQL expressions with commas between them, one for
  /// each column, in which `i` counts the rows from 1.
  void fill(const std::string& table, int count, const std::string& cells);

 private:
  std::size_t columnCount(const std::string& table) const;

  sqlite3* handle_ = nullptr;
};

/// A catalogue with four empty tables at `path`, each with `extraColumns` columns after those that
/// the console knows. Makes the folders above it and replaces the file.
class CatalogueFile : public CatalogueWriter {
 public:
  explicit CatalogueFile(const std::string& path, std::size_t extraColumns = 0);
};

/// Locks the database at `path`, so that nobody else reads it, until release() or its own end.
class CatalogueLock {
 public:
  explicit CatalogueLock(const std::string& path);
  void release();

 private:
  CatalogueWriter writer_;
};

}  // namespace lineup::test
