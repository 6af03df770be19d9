// The find commands: services of the catalogue by a part of their name.

#include <iostream>
#include <string>

#include "catalogue/available_services.h"
#include "catalogue/connection.h"
#include "catalogue/service_tables.h"
#include "model/lineup_editor.h"
#include "support/ending_signals.h"

namespace lineup {

namespace {

template <typename Row>
std::string serviceLine(const ServiceTable& table, const Row& row) {
  return row.asText(table.id) + '\t' + row.asText(table.name) + table.beforeSource +
         row.asText(table.source) + table.afterSource + row.asText(table.sid) +
         " L: " + row.asText(table.textList);
}

template <typename Row>
void findInTable(const ServiceTable& table, const std::string& name) {
  const korveldb::tSqlite3db catalogue(kCatalogueFile);
  const auto found =
      Row::doSelect(catalogue.getHandle(), "WHERE service_name LIKE '%%%s%%'", name.c_str());
  if (found->rows.empty()) {
    std::cout << "No " << table.kind << " services found." << std::endl;
  }
  for (const auto& row : found->rows) {
    std::cout << serviceLine(table, row) << std::endl;
    endIfSignalled();
  }
}

}  // namespace

void LineupEditor::findTdtServices(const std::string& name) const {
  findInTable<korveldb::tAvailableTdtService>(kTdtTable, name);
}

void LineupEditor::findSatServices(const std::string& name) const {
  findInTable<korveldb::tAvailableSatService>(kSatTable, name);
}

void LineupEditor::findCableServices(const std::string& name) const {
  findInTable<korveldb::tAvailableCableService>(kCableTable, name);
}

void LineupEditor::findIPServices(const std::string& name) const {
  findInTable<korveldb::tAvailableIPService>(kIPTable, name);
}

void LineupEditor::findServices(const std::string& name) const {
  findTdtServices(name);
  findSatServices(name);
  findCableServices(name);
  findIPServices(name);
}

}  // namespace lineup
