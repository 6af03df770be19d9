#include "simulator/catalogue.h"

#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>

#include "simulator/locked_file.h"

namespace lineup::simulator {

namespace {

// Marks a catalogue as this program's own: SQLite keeps the number in the file's header.
constexpr int kApplicationId = 0x48445349;

using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;

Database openDatabase(const std::string& path, int flags) {
  sqlite3* handle = nullptr;
  const int result = sqlite3_open_v2(path.c_str(), &handle, flags, nullptr);
  Database database(handle, &sqlite3_close);
  if (result != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errstr(result));
  }
  return database;
}

void execute(sqlite3* database, const std::string& sql) {
  if (sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(database));  // COVERAGE_EXCL_LINE: only without memory
  }
}

/// Whether it is empty: SQLite creates such a file when a console opens a catalogue that is
/// missing.
bool isEmpty(const std::string& path) {
  std::error_code unknown;
  return std::filesystem::file_size(path, unknown) == 0;
}

bool isOwnCatalogue(const std::string& path) {
  int id = 0;
  const auto readId = [](void* out, int, char** cells, char**) {
    *static_cast<int*>(out) = static_cast<int>(std::strtol(cells[0], nullptr, 10));
    return 0;
  };
  try {
    const Database database = openDatabase(path, SQLITE_OPEN_READONLY);
    sqlite3_exec(database.get(), "PRAGMA application_id", readId, &id, nullptr);
  } catch (const std::runtime_error&) {
    return false;
  }
  return id == kApplicationId;
}

/// The catalogue as the bytes of a SQLite file.
std::string catalogueBytes() {
  const Database database = openDatabase(":memory:", SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  execute(database.get(), "PRAGMA application_id = " + std::to_string(kApplicationId));
  execute(database.get(), kCatalogueSql);
  sqlite3_int64 size = 0;
  const std::unique_ptr<unsigned char, decltype(&sqlite3_free)> bytes(
      sqlite3_serialize(database.get(), "main", &size, 0), &sqlite3_free);
  if (bytes == nullptr) {
    throw std::runtime_error("out of memory");  // COVERAGE_EXCL_LINE
  }
  return {bytes.get(), bytes.get() + size};
}

}  // namespace

void writeCatalogue(const std::string& path, bool replaceForeign) {
  if (fileExists(path) && !replaceForeign && !isEmpty(path) && !isOwnCatalogue(path)) {
    throw std::runtime_error("the catalogue " + path +
                             " was not written by this program; --replace-catalogue replaces it");
  }
  try {
    replaceLocked(path, catalogueBytes());
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(std::string(error.what()) + "; --no-catalogue does without it");
  }
}

}  // namespace lineup::simulator
