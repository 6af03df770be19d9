#include "catalogue/available_names.h"

#include <sqlite3.h>

#include "catalogue/connection.h"
#include "catalogue/tables.h"
#include "model/headend_places.h"
#include "support/words.h"

namespace lineup {

using korveldb::textOf;
using korveldb::tReadingOnly;
using korveldb::tSqlite3db;
using korveldb::tTable;

void visitAvailableServiceNames(std::string_view input,
                                const std::function<void(const AvailableServiceName&)>& visit) {
  const tSqlite3db catalogue(kCataloguePath, SQLITE_OPEN_READWRITE);
  const tReadingOnly reading(catalogue.getHandle(), tReadingOnly::Clock::now() + kTimeForNames);
  for (const tTable* table : korveldb::kTables) {
    if (!input.empty() && input != table->input.name) {
      continue;
    }
    korveldb::visitRows(catalogue.getHandle(), table->name, [&](sqlite3_stmt* row) {
      visit({textOf(row, table->id), textOf(row, table->serviceName), table->input.name,
             sqlite3_column_int(row, static_cast<int>(table->serviceType))});
    });
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
