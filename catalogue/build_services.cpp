#include "catalogue/build_services.h"

#include <stdexcept>

#include "catalogue/available_services.h"
#include "catalogue/connection.h"
#include "catalogue/item_lists.h"
#include "catalogue/service_tables.h"

namespace lineup {

namespace hub_module = korvel::thrift::hub_module;
using hub_module::DVBInputService;
using hub_module::DVBInputServiceConfig;
using korveldb::tAvailableCableService;
using korveldb::tAvailableIPService;
using korveldb::tAvailableSatService;
using korveldb::tAvailableTdtService;

namespace {

// What a service is received from, which is all that the tables do not share.

void setMux(DVBInputService& service, const tAvailableSatService& row) {
  hub_module::LineupSATMux mux;
  mux.frequency = row.asInt(7);
  mux.satParam2 = row.asInt(2);
  mux.satParam3 = row.asInt(4);
  mux.satParam4 = row.asInt(8);
  mux.satParam5 = row.asInt(11);
  mux.satParam6 = row.asInt(12);
  mux.satParam7 = row.asInt(13);
  service.__set_lineupSATMux(mux);
}

void setMux(DVBInputService& service, const tAvailableTdtService& row) {
  hub_module::LineupTDTMux mux;
  mux.frequency = row.asInt(5);
  mux.tdtParam2 = row.asInt(6);
  mux.tdtParam3 = row.asInt(7);
  mux.tdtParam4 = row.asInt(8);
  service.__set_lineupTDTMux(mux);
}

void setMux(DVBInputService& service, const tAvailableCableService& row) {
  hub_module::LineupCableMux mux;
  mux.frequency = row.asInt(5);
  mux.cableParam2 = row.asInt(6);
  mux.cableParam3 = row.asInt(7);
  service.__set_lineupCableMux(mux);
}

void setMux(DVBInputService& service, const tAvailableIPService& row) {
  service.__set_ipMuxUUID(row.asText(1));
}

template <typename Row>
DVBInputServiceConfig buildService(const ServiceTable& table, int32_t id) {
  DVBInputServiceConfig result;
  const korveldb::tSqlite3db catalogue(kCatalogueFile);
  auto found = Row::doSelect(catalogue.getHandle(), "WHERE service_id='%d'", id);
  if (found->rows.empty()) {
    throw std::runtime_error("Service not found on DB");
  }
  const Row& row = found->rows.front();

  DVBInputService& service = result.service;
  service.sid = row.asInt(table.sid);
  service.name = row.asText(table.name);
  service.catalogueFlag = row.asInt(table.flag) != 0;
  service.inputType = table.inputType;
  service.serviceType = row.asInt(table.serviceType);
  service.auxFlag = false;
  setMux(service, row);
  result.configFlag = service.catalogueFlag;
  const std::string integerList = row.asText(table.integerList);
  const std::string textList = row.asText(table.textList);
  found.reset();  // many rows and a long list would be a lot together
  service.intItems = parseIntegerList(integerList);
  service.lItems = parseTextList(textList);
  return result;
}

}  // namespace

DVBInputServiceConfig buildSatService(int32_t id) {
  return buildService<tAvailableSatService>(kSatTable, id);
}

DVBInputServiceConfig buildTdtService(int32_t id) {
  return buildService<tAvailableTdtService>(kTdtTable, id);
}

DVBInputServiceConfig buildCableService(int32_t id) {
  return buildService<tAvailableCableService>(kCableTable, id);
}

DVBInputServiceConfig buildIPService(int32_t id) {
  return buildService<tAvailableIPService>(kIPTable, id);
}

}  // namespace lineup
