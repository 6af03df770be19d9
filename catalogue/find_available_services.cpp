#include "catalogue/find_available_services.h"

#include <sqlite3.h>

#include <filesystem>
#include <iostream>
#include <system_error>

#include "catalogue/connection.h"
#include "catalogue/select.h"
#include "catalogue/statement.h"
#include "catalogue/tables.h"
#include "model/headend_places.h"
#include "model/lineup_editor.h"
#include "support/ending_signals.h"
#include "support/words.h"

namespace lineup {

using korveldb::tReadingOnly;
using korveldb::tRow;
using korveldb::tSqlite3db;
using korveldb::tStatement;
using korveldb::tTable;

namespace {

std::string lineOf(const tTable& table, const tRow& row) {
  return row.asText(table.id) + '\t' + row.asText(table.serviceName) + table.beforeSource +
         row.asText(table.source) + table.afterSource + row.asText(table.sid) +
         " L: " + row.asText(table.textList);
}

void find(const tTable& table, const std::string& name) {
  const tSqlite3db catalogue(kCataloguePath);
  const auto found =
      table.doSelect(catalogue.getHandle(), "WHERE service_name LIKE '%%%s%%'", name.c_str());
  if (found->rows.empty()) {
    std::cout << "No " << table.input.name << " services found." << std::endl;
  }
  for (const tRow& row : found->rows) {
    std::cout << lineOf(table, row) << std::endl;
    throwIfSignalled();
  }
}

void visitNames(sqlite3* catalogue, const tTable& table,
                const std::function<void(const AvailableServiceName&)>& visit) {
  const std::string select = std::string("SELECT service_id, service_name, * FROM ") + table.name;
  sqlite3_stmt* compiled = nullptr;
  sqlite3_prepare_v2(catalogue, select.c_str(), -1, &compiled, nullptr);
  const tStatement rows(compiled);
  while (sqlite3_step(rows.get()) == SQLITE_ROW) {
    const auto type = static_cast<int>(2 + table.serviceType);
    visit(
        {textOf(rows, 0), textOf(rows, 1), table.input.name, sqlite3_column_int(rows.get(), type)});
  }
}

}  // namespace

void LineupEditor::findTdtServices(const std::string& name) const {
  find(korveldb::kTdtTable, name);
}

void LineupEditor::findSatServices(const std::string& name) const {
  find(korveldb::kSatTable, name);
}

void LineupEditor::findCableServices(const std::string& name) const {
  find(korveldb::kCableTable, name);
}

void LineupEditor::findIPServices(const std::string& name) const {
  find(korveldb::kIPTable, name);
}

void LineupEditor::findServices(const std::string& name) const {
  findTdtServices(name);
  findSatServices(name);
  findCableServices(name);
  findIPServices(name);
}

void visitAvailableServiceNames(std::string_view kind,
                                const std::function<void(const AvailableServiceName&)>& visit) {
  std::error_code unknown;  // a folder that may not be searched
  if (!std::filesystem::exists(kCataloguePath, unknown)) {
    return;  // opening would create it
  }
  const tSqlite3db catalogue(kCataloguePath);
  const tReadingOnly reading(catalogue.getHandle(), tReadingOnly::Clock::now() + kTimeForNames);
  for (const tTable* table : korveldb::kTables) {
    if (kind.empty() || kind == table->input.name) {
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
