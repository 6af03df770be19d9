#include "catalogue/service_names.h"

#include <sqlite3.h>

#include <filesystem>
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

/// Adds the services whose id no table before has. An id is one that can be asked for: a number
/// written as the look-up writes it.
void addNames(sqlite3* catalogue, const NamedTable& named, ServiceNames& names) {
  const std::string select =
      std::string("SELECT service_id, service_name FROM ") + named.layout.name;
  sqlite3_stmt* compiled = nullptr;
  sqlite3_prepare_v2(catalogue, select.c_str(), -1, &compiled, nullptr);
  const std::unique_ptr<sqlite3_stmt, Finalize> rows(compiled);
  while (sqlite3_step(rows.get()) == SQLITE_ROW) {
    const std::string id = textOf(rows.get(), 0);
    const int32_t number = readNumber(id);
    if (id == std::to_string(number)) {
      names.emplace(number, ServiceName{textOf(rows.get(), 1), named.table.kind});
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
  if (!std::filesystem::exists(kCatalogueFile)) {
    return names;  // opening would create it
  }
  const korveldb::tSqlite3db catalogue(kCatalogueFile);
  using korveldb::tReadingOnly;
  const tReadingOnly reading(catalogue.getHandle(), tReadingOnly::Clock::now() + kTimeForNames);
  for (const NamedTable& named : kTables) {
    addNames(catalogue.getHandle(), named, names);
  }
  return names;
}

}  // namespace lineup
