#include "print/config_tables.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace lineup::test {
namespace {

namespace general = korvel::thrift::general;
namespace hub_module = korvel::thrift::hub_module;
using hub_module::HeadendConfig;
using hub_module::LineupEntryKind;
using Rows = std::vector<std::vector<std::string>>;

void addEntry(HeadendConfig& config, LineupEntryKind::type kind, int32_t key,
              const std::string& name) {
  auto& entry = config.lineupConfig.rfEntries.emplace_back();
  entry.serviceKind = kind;
  entry.serviceKey = key;
  entry.name = name;
}

hub_module::DVBInputService& addDvb(HeadendConfig& config, int32_t key, int32_t inputType) {
  auto& service = config.lineupConfig.dvbInputServices[key].service;
  service.inputType = inputType;
  service.sid = 100 + key;
  service.serviceType = 1;
  addEntry(config, LineupEntryKind::DVB, key, "Service " + std::to_string(key));
  return service;
}

TEST(ConfigTables, ShowALineupWithEveryKindOfService) {
  HeadendConfig config;
  addDvb(config, 1, 2).__set_lineupSATMux({});
  config.lineupConfig.dvbInputServices[1].service.lineupSATMux.frequency = 11778;
  addDvb(config, 2, 1).__set_lineupTDTMux({});
  config.lineupConfig.dvbInputServices[2].service.lineupTDTMux.frequency = 474000;
  addDvb(config, 3, 3).__set_lineupCableMux({});
  config.lineupConfig.dvbInputServices[3].service.lineupCableMux.frequency = 306000;
  addDvb(config, 4, 4).__set_ipMuxUUID("some-uuid");
  config.ipInputs["4/0"].muxes["some-uuid"].url = "udp://239.0.0.1:5000";
  addDvb(config, 5, 4).__set_ipMuxUUID("lost-uuid");
  addDvb(config, 6, 9);
  config.lineupConfig.encInputServices[1].address.slot = 5;
  config.lineupConfig.encInputServices[1].address.port = 2;
  addEntry(config, LineupEntryKind::ENC, 1, "ENC 5/2");
  config.lineupConfig.emptyInputServices[1].service.serviceType = 2;
  addEntry(config, LineupEntryKind::EMPTY, 1, "EMPTY SLOT");
  addEntry(config, LineupEntryKind::DVB, 99, "gone");
  const TextTable table = rfLineupTable(config);
  EXPECT_EQ(table.columns,
            (std::vector<std::string>{"position", "name", "kind", "source", "SID", "type"}));
  EXPECT_EQ(table.rows, (Rows{{"1", "Service 1", "SAT", "11778 MHz", "101", "1"},
                              {"2", "Service 2", "TDT", "474000 kHz", "102", "1"},
                              {"3", "Service 3", "Cable", "306000 kHz", "103", "1"},
                              {"4", "Service 4", "IP", "udp://239.0.0.1:5000", "104", "1"},
                              {"5", "Service 5", "IP", "lost-uuid", "105", "1"},
                              {"6", "Service 6", "unknown (9)", "", "106", "1"},
                              {"7", "ENC 5/2", "ENC", "slot 5 input 2", "", "1"},
                              {"8", "EMPTY SLOT", "EMPTY", "", "", "2"},
                              {"9", "gone", "DVB", "no service 99", "", ""}}));
  EXPECT_EQ(ipLineupTable(config).rows, Rows{});
  EXPECT_EQ(reservedSlotsTable(config).rows, (Rows{{"1", "2", "8"}}));
}

TEST(ConfigTables, ShowSettingsInTheWordsOfTheCommands) {
  EXPECT_EQ(settingsTable(HeadendConfig()).rows, (Rows{{"type", "standard"},
                                                       {"id", "1"},
                                                       {"country", "not set"},
                                                       {"rfmod", "cofdm"},
                                                       {"rfnum", "4"},
                                                       {"drm", "off"},
                                                       {"eit", "actual"},
                                                       {"stdp", "video"},
                                                       {"vlan", "2"},
                                                       {"tdtscan cofdm", "disabled"},
                                                       {"tdtscan qams", "disabled"}}));
}

TEST(ConfigTables, ShowInputsAndScans) {
  HeadendConfig config;
  config.ipInputs["4/0"].__set_slot(4);
  config.ipInputs["4/0"].address = "10.0.0.1";
  config.ipInputs["4/1"].muxes["u"].url = "udp://239.0.0.1:5000";
  EXPECT_EQ(ipInputsTable(config).rows,
            (Rows{{"4/0", "4", "", "10.0.0.1", "", "", ""},
                  {"4/1", "", "", "", "u", "udp://239.0.0.1:5000", ""}}));
  config.rfInputsScanConfig.plsItemList.resize(2);
  config.rfInputsScanConfig.plsItemList[1].plsType = 7;
  EXPECT_EQ(scanTable(config).rows, (Rows{{"1", "Gold", "0"}, {"2", "unknown (7)", "0"}}));
  hub_module::HeadendStatus status;
  status.satRFInputs[general::RFInputId::SAT1].config.enabled = true;
  status.tdtRFInputs[general::RFInputId::TDT2].locked = true;
  EXPECT_EQ(rfInputsTable(status).rows,
            (Rows{{"TDT2", "disabled", "yes"}, {"SAT1", "enabled", "no"}}));
}

}  // namespace
}  // namespace lineup::test
