#include "catalogue/service_names.h"

#include <sqlite3.h>

#include <filesystem>
#include <system_error>

#include "catalogue/connection.h"
#include "catalogue/statement.h"
#include "catalogue/tables.h"
#include "model/headend_places.h"
#include "support/words.h"

namespace lineup {

using korveldb::tReadingOnly;
using korveldb::tSqlite3db;
using korveldb::tStatement;
using korveldb::tTable;

namespace {

void visitNames(sqlite3* catalogue, const tTable& table,
                const std::function<void(const AvailableServiceName&)>& visit) {
  const tStatement rows =
      korveldb::prepareSelect(catalogue, "service_id, service_name, *", table.name);
  while (sqlite3_step(rows.get()) == SQLITE_ROW) {
    const auto type = static_cast<int>(2 + table.serviceType);
    visit(
        {textOf(rows, 0), textOf(rows, 1), table.input.name, sqlite3_column_int(rows.get(), type)});
  }
}

}  // namespace

void visitAvailableServiceNames(std::string_view input,
                                const std::function<void(const AvailableServiceName&)>& visit) {
  std::error_code unknown;  // a folder that may not be searched
  if (!std::filesystem::exists(kCataloguePath, unknown)) {
    return;  // opening would create it
  }
  const tSqlite3db catalogue(kCataloguePath);
  const tReadingOnly reading(catalogue.getHandle(), tReadingOnly::Clock::now() + kTimeForNames);
  for (const tTable* table : korveldb::kTables) {
    if (input.empty() || input == table->input.name) {
      visitNames(catalogue.getHandle(), *table, visit);
    }
  }
}

std::map<int32_t, AvailableServiceName> readAvailableServiceNames() {
  std::map<int32_t, AvailableServiceName> names;
  visitAvailableServiceNames("", [&names](const AvailableServiceName& service) {
    const int32_t number = readNumber(service.id);
    if (service.id == std::to_string(number)) {  // as the look-up writes it
      names.emplace(number, service);            // unless a table before has the id
    }
  });
  return names;
}

}  // namespace lineup
