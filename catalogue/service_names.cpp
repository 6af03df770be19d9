#include "catalogue/service_names.h"

#include <sqlite3.h>

#include <memory>

#include "catalogue/available_services.h"
#include "catalogue/connection.h"
#include "catalogue/service_tables.h"
#include "support/words.h"

namespace lineup {

namespace {

using ServiceNames = std::map<int32_t, ServiceName>;

struct Finalize {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

struct NamedTable {
  const korveldb::tTableLayout& layout;
  const ServiceTable& table;
};

std::string textOf(sqlite3_stmt* row, int column) {
  const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
  return text == nullptr ? std::string() : text;
}

/// What all names may take, so that a catalogue that makes up rows without end is left at some
/// time.
constexpr std::size_t kMostBytes = std::size_t{32} * 1024 * 1024;
constexpr std::size_t kBytesOfAName = 100;  // beside its text

/// Adds the services whose id no table before has. An id is one that can be asked for: a number
/// written as the look-up writes it.
void addNames(sqlite3* catalogue, const NamedTable& named, ServiceNames& names,
              std::size_t& bytesLeft) {
  const std::string select =
      std::string("SELECT service_id, service_name FROM ") + named.layout.name;
  sqlite3_stmt* compiled = nullptr;
  sqlite3_prepare_v2(catalogue, select.c_str(), -1, &compiled, nullptr);
  const std::unique_ptr<sqlite3_stmt, Finalize> rows(compiled);
  while (sqlite3_step(rows.get()) == SQLITE_ROW) {
    const std::string id = textOf(rows.get(), 0);
    const std::string name = textOf(rows.get(), 1);
    const std::size_t bytes = kBytesOfAName + name.size();
    if (bytes > bytesLeft) {
      return;
    }
    bytesLeft -= bytes;
    const int32_t number = readNumber(id);
    if (id == std::to_string(number)) {
      names.emplace(number, ServiceName{name, named.table.kind});
    }
  }
}

}  // namespace

ServiceNames readServiceNames() {
  // In the order in which a service is looked up.
  static constexpr NamedTable kTables[] = {{korveldb::kSatLayout, kSatTable},
                                           {korveldb::kTdtLayout, kTdtTable},
                                           {korveldb::kCableLayout, kCableTable},
                                           {korveldb::kIPLayout, kIPTable}};
  ServiceNames names;
  const korveldb::tSqlite3db catalogue(kCatalogueFile);
  std::size_t bytesLeft = kMostBytes;
  for (const NamedTable& named : kTables) {
    addNames(catalogue.getHandle(), named, names, bytesLeft);
  }
  return names;
}

}  // namespace lineup
