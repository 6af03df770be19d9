#include "tests/support/catalogue_services.h"

namespace lineup::test {

using namespace korvel::thrift::hub_module;

const Cells kSatRow{{2, "120"}, {4, "1"},   {7, "11778"}, {8, "27500"},        {11, "4"},
                    {12, "1"},  {13, "26"}, {15, "1017"}, {16, "Channel One"}, {17, "4101"},
                    {18, "1"},  {19, "25"}, {23, "a,b"},  {24, "101,102,103"}};
const Cells kTdtRow{{5, "490000"}, {6, "8"},          {7, "2"},    {8, "1"},
                    {10, "17"},    {11, "Télé Uno"},  {12, "101"}, {13, "0"},
                    {14, "1"},     {15, "spa,,eng,"}, {16, "1,-2"}};
const Cells kCableRow{{5, "306000"}, {6, "6875"}, {7, "64"}, {10, "18"}, {11, "Kabel Eins"},
                      {12, "201"},   {13, "-1"},  {14, "2"}, {15, ""},   {16, ""}};
const Cells kIPRow{{1, "0f1e2d3c-0000-4000-8000-000000000001"},
                   {2, "udp://239.1.1.1:1234"},
                   {6, "19"},
                   {7, "IP Uno"},
                   {8, "301"},
                   {9, "1"},
                   {10, "1"},
                   {11, "x"},
                   {12, "9"}};

DVBInputServiceConfig satService() {
  DVBInputServiceConfig config;
  config.service.sid = 4101;
  config.service.name = "Channel One";
  config.service.catalogueFlag = true;
  config.service.inputType = 2;
  config.service.serviceType = 25;
  config.service.intItems = {101, 102, 103};
  config.service.lItems = {"a", "b"};
  LineupSATMux mux;
  mux.frequency = 11778;
  mux.satParam2 = 120;
  mux.satParam3 = 1;
  mux.satParam4 = 27500;
  mux.satParam5 = 4;
  mux.satParam6 = 1;
  mux.satParam7 = 26;
  config.service.__set_lineupSATMux(mux);
  config.configFlag = true;
  return config;
}

DVBInputServiceConfig tdtService() {
  DVBInputServiceConfig config;
  config.service.sid = 101;
  config.service.name = "Télé Uno";
  config.service.inputType = 1;
  config.service.serviceType = 1;
  config.service.intItems = {1, -2};
  config.service.lItems = {"spa", "", "eng"};
  LineupTDTMux mux;
  mux.frequency = 490000;
  mux.tdtParam2 = 8;
  mux.tdtParam3 = 2;
  mux.tdtParam4 = 1;
  config.service.__set_lineupTDTMux(mux);
  config.configFlag = false;
  return config;
}

DVBInputServiceConfig cableService() {
  DVBInputServiceConfig config;
  config.service.sid = 201;
  config.service.name = "Kabel Eins";
  config.service.catalogueFlag = true;
  config.service.inputType = 3;
  config.service.serviceType = 2;
  LineupCableMux mux;
  mux.frequency = 306000;
  mux.cableParam2 = 6875;
  mux.cableParam3 = 64;
  config.service.__set_lineupCableMux(mux);
  config.configFlag = true;
  return config;
}

DVBInputServiceConfig ipService() {
  DVBInputServiceConfig config;
  config.service.sid = 301;
  config.service.name = "IP Uno";
  config.service.catalogueFlag = true;
  config.service.inputType = 4;
  config.service.serviceType = 1;
  config.service.intItems = {9};
  config.service.lItems = {"x"};
  config.service.__set_ipMuxUUID("0f1e2d3c-0000-4000-8000-000000000001");
  config.configFlag = true;
  return config;
}

void insertOneOfEach(CatalogueWriter& catalogue) {
  catalogue.insert(kSat, kSatRow);
  catalogue.insert(kTdt, kTdtRow);
  catalogue.insert(kCable, kCableRow);
  catalogue.insert(kIP, kIPRow);
}

void fillCable(CatalogueWriter& catalogue, int count) {
  catalogue.fill(kCable, count,
                 "0, 0, 0, 0, 0, 306000, 6875, 64, 0, 0, i, 'Ch ' || i, i, 0, 1, '', ''");
}

Cells with(Cells row, const Cells& cells) {
  for (const auto& [column, text] : cells) {
    row[column] = text;
  }
  return row;
}

}  // namespace lineup::test
