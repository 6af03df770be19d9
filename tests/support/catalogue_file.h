// Real catalogues for tests: SQLite files with the controller's four tables.

#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <map>
#include <optional>
#include <string>

namespace lineup::test {

inline constexpr const char* kSat = "availableSatService";
inline constexpr const char* kTdt = "availableTdtService";
inline constexpr const char* kCable = "availableCableService";
inline constexpr const char* kIP = "availableIPService";

/// Cells of a row by their position from 0; nothing is an SQL NULL.
using Cells = std::map<std::size_t, std::optional<std::string>>;

/// A connection to a database file that may change it. Every failure is a std::runtime_error.
class CatalogueWriter {
 public:
  explicit CatalogueWriter(const std::string& path);
  ~CatalogueWriter();
  CatalogueWriter(const CatalogueWriter&) = delete;
  CatalogueWriter& operator=(const CatalogueWriter&) = delete;

  /// Runs one or more statements.
  void execute(const std::string& sql);

  /// Adds a row to `table`. Columns that `cells` does not name are NULL.
  void insert(const std::string& table, const Cells& cells);

 private:
  std::size_t columnCount(const std::string& table);

  sqlite3* handle_ = nullptr;
};

/// A catalogue with four empty tables at `path`. Makes the folders above it and replaces the file.
class CatalogueFile : public CatalogueWriter {
 public:
  /// Each table has `extraColumns` columns behind those that the console knows.
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

/// The files in `folder`, by name, and their bytes.
std::map<std::string, std::string> filesIn(const std::string& folder);

}  // namespace lineup::test
