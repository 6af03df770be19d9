#include "catalogue/build_dvb_services.h"

#include <stdexcept>

#include "catalogue/connection.h"
#include "catalogue/select.h"
#include "catalogue/tables.h"
#include "model/headend_places.h"
#include "model/lineup_editor.h"
#include "support/words.h"

namespace lineup {

using hub_module::DVBInputService;
using hub_module::DVBInputServiceConfig;
using korveldb::tRow;
using korveldb::tTable;

namespace {

DVBInputServiceConfig build(const tTable& table, int32_t id) {
  DVBInputServiceConfig result;
  const korveldb::tSqlite3db catalogue(kCataloguePath);
  const auto found = table.doSelect(catalogue.getHandle(), "WHERE service_id='%d'", id);
  if (found->rows.empty()) {
    throw std::runtime_error("Service not found on DB");
  }
  const tRow& row = found->rows.front();
  DVBInputService& service = result.service;
  service.sid = row.asInt(table.sid);
  service.name = row.asText(table.serviceName);
  service.catalogueFlag = row.asInt(table.flag) != 0;
  service.inputType = table.input.number;
  service.serviceType = row.asInt(table.serviceType);
  service.intItems = parseIntegerList(row.asText(table.integerList));
  service.auxFlag = false;
  service.lItems = parseTextList(row.asText(table.textList));
  table.setMux(service, row);
  result.configFlag = service.catalogueFlag;
  return result;
}

}  // namespace

DVBInputServiceConfig buildSatService(int32_t id) {
  return build(korveldb::kSatTable, id);
}

DVBInputServiceConfig buildTdtService(int32_t id) {
  return build(korveldb::kTdtTable, id);
}

DVBInputServiceConfig buildCableService(int32_t id) {
  return build(korveldb::kCableTable, id);
}

DVBInputServiceConfig buildIPService(int32_t id) {
  return build(korveldb::kIPTable, id);
}

int32_t LineupEditor::addCatalogueService(int32_t id) {
  for (const tTable* table : korveldb::kTables) {
    try {
      return storeDVBService(build(*table, id));
    } catch (const std::runtime_error&) {
      continue;
    }
  }
  throw std::runtime_error("Service not found");
}

std::vector<std::string> parseTextList(const std::string& text) {
  return splitWords(text, ',');
}

std::vector<int32_t> parseIntegerList(const std::string& text) {
  return readWords(text, ',', [](const std::string& item) -> int32_t { return std::stoi(item); });
}

}  // namespace lineup
