#include <iostream>
#include <string>

#include "catalogue/connection.h"
#include "catalogue/select.h"
#include "catalogue/tables.h"
#include "model/headend_places.h"
#include "model/lineup_editor.h"
#include "support/ending_signals.h"

namespace lineup {

using korveldb::tRow;
using korveldb::tSqlite3db;
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

}  // namespace lineup
