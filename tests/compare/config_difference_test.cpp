#include "compare/config_difference.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "compare/json_difference.h"
#include "print/named_json_reader.h"
#include "print/named_json_writer.h"
#include "print/printed_text.h"
#include "tests/support/lineup_entries.h"
#include "tests/support/random_records.h"

namespace lineup::test {
namespace {

namespace hub_module = korvel::thrift::hub_module;
using hub_module::HeadendConfig;
using hub_module::LineupEntryKind;
using nlohmann::json;

// ---- a small headend

/// Adds a satellite service to both lineups.
void addService(HeadendConfig& config, int32_t key, const std::string& name, int32_t sid) {
  hub_module::DVBInputServiceConfig service;
  service.service.name = name;
  service.service.sid = sid;
  service.service.inputType = 2;
  service.service.serviceType = 1;
  hub_module::LineupSATMux mux;
  mux.frequency = 11778;
  service.service.__set_lineupSATMux(mux);
  config.lineupConfig.dvbInputServices[key] = service;
  config.lineupConfig.rfEntries.push_back(rfEntry(key, LineupEntryKind::DVB, name));
  config.lineupConfig.ipEntries.push_back(ipEntry(key, LineupEntryKind::DVB, name));
}

HeadendConfig smallHeadend() {
  HeadendConfig config;
  addService(config, 1, "News", 4101);
  addService(config, 2, "Film", 4102);
  addService(config, 3, "Sport", 4103);
  return config;
}

TEST(ConfigDifference, IsEmptyForEqualRecords) {
  EXPECT_EQ(configDifference(smallHeadend(), smallHeadend()), "");
  HeadendConfig config;
  config.lineupConfig.globalConfig.drmConfig.vsecureConfig.keyPeriod = std::nan("");
  EXPECT_EQ(configDifference(config, config), "");
}

TEST(ConfigDifference, SaysSettingsInTheWordsOfTheCommands) {
  const HeadendConfig from;
  HeadendConfig to;
  to.headendGlobalConfig.headendType = 1;
  to.headendGlobalConfig.headendId = 7;
  to.headendGlobalConfig.__set_countryCode(korvel::thrift::general::CountryCode::ITALY);
  to.lineupConfig.rfConfig.modulation = 2;
  to.lineupConfig.rfConfig.carriersPerModule = 4;
  to.lineupConfig.globalConfig.drmConfig.vsecureConfig.enabled = true;
  to.lineupConfig.globalConfig.eitMode = 0;
  to.lineupConfig.globalConfig.decryptPolicy = 3;
  to.lineupConfig.ipConfig.outputVlan = 1;
  to.lineupConfig.globalConfig.cofdmScanEnabled = true;
  to.lineupConfig.globalConfig.qamsScanEnabled = true;
  EXPECT_EQ(
      configDifference(from, to),
      "type: standard -> skyit\nid: 1 -> 7\ncountry: not set -> italy\nrfmod: cofdm -> qamb\n"
      "rfnum: 4 -> unknown (4)\ndrm: off -> vsecure\neit: actual -> off\nstdp: video -> ttx\n"
      "vlan: 2 -> 1\ntdtscan cofdm: disabled -> enabled\ntdtscan qams: disabled -> enabled\n");
}

TEST(ConfigDifference, SaysThatBothDrmSystemsAreEnabledAndTheFlagForIt) {
  HeadendConfig to;
  auto& drm = to.lineupConfig.globalConfig.drmConfig;
  drm.lynkConfig.enabled = true;
  drm.vsecureConfig.enabled = true;
  drm.combinedFlag = true;
  EXPECT_EQ(configDifference({}, to),
            "drm: off -> lynk and vsecure\n"
            "/lineupConfig/globalConfig/drmConfig/combinedFlag: false -> true\n");
}

TEST(ConfigDifference, SaysOneEntryPutInFrontInOneLineOfEachLineup) {
  HeadendConfig to = smallHeadend();
  addService(to, 4, "Kids", 4104);
  auto& lineup = to.lineupConfig;
  std::rotate(lineup.rfEntries.begin(), lineup.rfEntries.end() - 1, lineup.rfEntries.end());
  std::rotate(lineup.ipEntries.begin(), lineup.ipEntries.end() - 1, lineup.ipEntries.end());
  const std::string service = "\"Kids\", SAT 11778 MHz, SID 4104, type 1\n";
  EXPECT_EQ(configDifference(smallHeadend(), to),
            "RF lineup: added at 1: " + service + "IP lineup: added at 1: " + service);
  EXPECT_EQ(configDifference(to, smallHeadend()),
            "RF lineup: removed from 1: " + service + "IP lineup: removed from 1: " + service);
}

TEST(ConfigDifference, SaysThatAnEntryHasMoved) {
  HeadendConfig to = smallHeadend();
  auto& entries = to.lineupConfig.rfEntries;
  std::rotate(entries.begin(), entries.end() - 1, entries.end());
  EXPECT_EQ(configDifference(smallHeadend(), to),
            "RF lineup: moved from 3 to 1: \"Sport\", SAT 11778 MHz, SID 4103, type 1\n");
}

TEST(ConfigDifference, SaysWhatElseDiffersInAnEntry) {
  HeadendConfig to = smallHeadend();
  to.lineupConfig.rfEntries[1].lcn = 5;
  to.lineupConfig.ipEntries[2].name = "Sport\n\"2\"";
  EXPECT_EQ(configDifference(smallHeadend(), to),
            "RF lineup: changed at 2, \"Film\": /lcn: 0 -> 5\n"
            "IP lineup: changed at 3, \"Sport\\n\\\"2\\\"\": /name: \"Sport\" -> "
            "\"Sport\\n\\\"2\\\"\"\n");
}

TEST(ConfigDifference, SaysInTheSameLineWhatElseANewEntryHas) {
  HeadendConfig to = smallHeadend();
  to.lineupConfig.rfEntries.push_back(to.lineupConfig.rfEntries[0]);
  to.lineupConfig.rfEntries.back().lcn = 5;
  EXPECT_EQ(configDifference(smallHeadend(), to),
            "RF lineup: added at 4: \"News\", SAT 11778 MHz, SID 4101, type 1, /lcn 5\n");
}

TEST(ConfigDifference, KnowsAServiceUnderAnotherNumber) {
  HeadendConfig to = smallHeadend();
  auto& services = to.lineupConfig.dvbInputServices;
  services[9] = services[1];
  services.erase(1);
  to.lineupConfig.rfEntries[0].serviceKey = 9;
  to.lineupConfig.ipEntries[0].serviceKey = 9;
  EXPECT_EQ(configDifference(smallHeadend(), to), "DVB service 9, \"News\": its number was 1\n");
}

TEST(ConfigDifference, SaysAServiceInTheNumberOfAnotherAsRemovedAndAdded) {
  HeadendConfig to = smallHeadend();
  auto& service = to.lineupConfig.dvbInputServices[2].service;
  service.sid = 5000;
  service.name = "Arte";
  to.lineupConfig.rfEntries[1].name = "Arte";
  to.lineupConfig.ipEntries.erase(to.lineupConfig.ipEntries.begin() + 1);
  EXPECT_EQ(configDifference(smallHeadend(), to),
            "RF lineup: removed from 2: \"Film\", SAT 11778 MHz, SID 4102, type 1\n"
            "RF lineup: added at 2: \"Arte\", SAT 11778 MHz, SID 5000, type 1\n"
            "IP lineup: removed from 2: \"Film\", SAT 11778 MHz, SID 4102, type 1\n");
}

TEST(ConfigDifference, SaysWhatElseDiffersInAServiceThatBecomesAnother) {
  HeadendConfig from = smallHeadend();
  from.lineupConfig.dvbInputServices[2].service.lItems = {"spa"};
  HeadendConfig to = from;
  hub_module::DVBInputServiceConfig& service = to.lineupConfig.dvbInputServices[2];
  service.service.sid = 5000;
  service.service.providerName = "other";
  service.service.lItems = {};
  service.filteredPids = {100};
  EXPECT_EQ(configDifference(from, to),
            "RF lineup: removed from 2: \"Film\", SAT 11778 MHz, SID 4102, type 1\n"
            "RF lineup: added at 2: \"Film\", SAT 11778 MHz, SID 5000, type 1\n"
            "IP lineup: removed from 2: \"Film\", SAT 11778 MHz, SID 4102, type 1\n"
            "IP lineup: added at 2: \"Film\", SAT 11778 MHz, SID 5000, type 1\n"
            "DVB service 2, \"Film\": /filteredPids/0: added 100\n"
            "DVB service 2, \"Film\": /service/lItems/0: removed \"spa\"\n"
            "DVB service 2, \"Film\": /service/providerName: \"\" -> \"other\"\n");
}

TEST(ConfigDifference, SaysTheMuxOfAServiceThatIsReceivedFromElsewhere) {
  HeadendConfig to = smallHeadend();
  to.lineupConfig.ipEntries.clear();
  const HeadendConfig from = to;
  hub_module::DVBInputService& service = to.lineupConfig.dvbInputServices[2].service;
  service.lineupSATMux.frequency = 12000;
  service.lineupSATMux.satParam2 = 22000;
  const std::string removed =
      "RF lineup: removed from 2: \"Film\", SAT 11778 MHz, SID 4102, type 1\n";
  EXPECT_EQ(configDifference(from, to),
            removed +
                "RF lineup: added at 2: \"Film\", SAT 12000 MHz, SID 4102, type 1\n"
                "DVB service 2, \"Film\": /service/lineupSATMux/satParam2: 0 -> 22000\n");
  service.__isset.lineupSATMux = false;
  hub_module::LineupCableMux mux;
  mux.frequency = 474000;
  service.__set_lineupCableMux(mux);
  EXPECT_EQ(configDifference(from, to),
            removed +
                "RF lineup: added at 2: \"Film\", SAT 474000 kHz, SID 4102, type 1\n"
                "DVB service 2, \"Film\": /service/lineupSATMux: removed "
                "{\"frequency\": 11778, \"satParam2\": 0, \"satParam3\": 0, "
                "\"satParam4\": 0, \"satParam5\": -1, \"satParam6\": 0, "
                "\"satParam7\": -1}\n"
                "DVB service 2, \"Film\": /service/lineupCableMux: added "
                "{\"cableParam2\": 0, \"cableParam3\": 0, \"frequency\": 474000}\n");
}

TEST(ConfigDifference, SaysWhatElseANewServiceHas) {
  HeadendConfig to = smallHeadend();
  addService(to, 4, "Kids", 4104);
  to.lineupConfig.ipEntries.pop_back();
  hub_module::DVBInputServiceConfig& service = to.lineupConfig.dvbInputServices[4];
  service.service.providerName = "A";
  service.filteredPids = {100};
  service.service.lineupSATMux.satParam2 = 22000;
  EXPECT_EQ(configDifference(smallHeadend(), to),
            "RF lineup: added at 4: \"Kids\", SAT 11778 MHz, SID 4104, type 1\n"
            "DVB service 4, \"Kids\": added, /filteredPids/0 100, "
            "/service/lineupSATMux/satParam2 22000, /service/providerName \"A\"\n");
  service = hub_module::DVBInputServiceConfig(smallHeadend().lineupConfig.dvbInputServices[3]);
  service.service.sid = 4104;  // named "Sport", where the entry has "Kids"
  EXPECT_EQ(configDifference(smallHeadend(), to),
            "RF lineup: added at 4: \"Kids\", SAT 11778 MHz, SID 4104, type 1\n"
            "DVB service 4, \"Sport\": added, /service/name \"Sport\"\n");
  to.lineupConfig.rfEntries.pop_back();
  service.configFlag = false;
  EXPECT_EQ(configDifference(smallHeadend(), to),
            "DVB service 4 added, in no lineup: \"Sport\", SAT 11778 MHz, SID 4104, type 1, "
            "/configFlag false\n");
}

// In words a mux is named by the service's input type, of whichever kind it is.
TEST(ConfigDifference, SaysTheMuxOfANewServiceWhoseInputTypeIsOfAnotherKind) {
  HeadendConfig to = smallHeadend();
  addService(to, 4, "Kids", 4104);
  to.lineupConfig.ipEntries.pop_back();
  to.lineupConfig.dvbInputServices[4].service.inputType = 1;
  EXPECT_EQ(configDifference(smallHeadend(), to),
            "RF lineup: added at 4: \"Kids\", TDT 11778 MHz, SID 4104, type 1\n"
            "DVB service 4, \"Kids\": added, /service/lineupSATMux "
            "{\"frequency\": 11778, \"satParam2\": 0, \"satParam3\": 0, \"satParam4\": 0, "
            "\"satParam5\": -1, \"satParam6\": 0, \"satParam7\": -1}\n");
}

TEST(ConfigDifference, SaysTheLabelAndTheSettingsOfANewEncoderInput) {
  HeadendConfig to = smallHeadend();
  to.lineupConfig.encInputServices[1].address.slot = 5;
  to.lineupConfig.encInputServices[1].label = "Camera";
  to.lineupConfig.rfEntries[0].serviceKind = LineupEntryKind::ENC;
  EXPECT_EQ(configDifference(smallHeadend(), to),
            "RF lineup: removed from 1: \"News\", SAT 11778 MHz, SID 4101, type 1\n"
            "RF lineup: added at 1: \"News\", ENC slot 5 input 0, type 1\n"
            "ENC service 1, \"ENC 5/0\": added, /label \"Camera\"\n");
}

TEST(ConfigDifference, SaysWhichOfTwoMuxesWithOneUrlANewServiceIsOn) {
  HeadendConfig from;
  from.ipInputs["4/0"].muxes["u1"].url = "udp://239.0.0.1:5000";
  HeadendConfig to = from;
  addService(to, 1, "News", 4101);
  to.lineupConfig.ipEntries.clear();
  hub_module::DVBInputService& service = to.lineupConfig.dvbInputServices[1].service;
  service.__isset.lineupSATMux = false;
  service.inputType = 4;
  service.__set_ipMuxUUID("u1");
  const std::string added =
      "RF lineup: added at 1: \"News\", IP udp://239.0.0.1:5000, SID 4101, type 1\n";
  EXPECT_EQ(configDifference(from, to), added);
  from.ipInputs["4/0"].muxes["u2"].url = "udp://239.0.0.1:5000";
  to.ipInputs = from.ipInputs;
  EXPECT_EQ(configDifference(from, to),
            added + "DVB service 1, \"News\": added, /service/ipMuxUUID \"u1\"\n");
}

TEST(ConfigDifference, TellsAServiceThatStaysFromOneThatGoesWithItsEntry) {
  HeadendConfig from = smallHeadend();
  from.lineupConfig.ipEntries.clear();
  HeadendConfig to = from;
  to.lineupConfig.rfEntries.pop_back();
  const std::string service = "\"Sport\", SAT 11778 MHz, SID 4103, type 1\n";
  EXPECT_EQ(configDifference(from, to), "RF lineup: removed from 3: " + service +
                                            "DVB service 3, \"Sport\": is in no lineup any more\n");
  EXPECT_EQ(configDifference(to, from),
            "RF lineup: added at 3: " + service + "DVB service 3, \"Sport\": was in no lineup\n");
  to.lineupConfig.dvbInputServices.erase(3);
  EXPECT_EQ(configDifference(from, to), "RF lineup: removed from 3: " + service);
  EXPECT_EQ(configDifference(to, from), "RF lineup: added at 3: " + service);
}

TEST(ConfigDifference, NumbersTheServiceIfAnotherIsIdentical) {
  HeadendConfig from;
  from.lineupConfig.emptyInputServices[1].service.serviceType = 2;
  from.lineupConfig.rfEntries.resize(1);
  from.lineupConfig.rfEntries[0].serviceKind = LineupEntryKind::EMPTY;
  from.lineupConfig.rfEntries[0].serviceKey = 1;
  from.lineupConfig.rfEntries[0].name = "EMPTY SLOT";
  HeadendConfig to = from;
  to.lineupConfig.emptyInputServices[2] = to.lineupConfig.emptyInputServices[1];
  to.lineupConfig.rfEntries.push_back(to.lineupConfig.rfEntries[0]);
  const std::string added = "RF lineup: added at 2: \"EMPTY SLOT\", EMPTY, type 2, EMPTY service ";
  EXPECT_EQ(configDifference(from, to),
            added + "1\nEMPTY service 2 added, in no lineup: \"EMPTY SLOT\", EMPTY, type 2\n");
  to.lineupConfig.rfEntries[1].serviceKey = 2;
  EXPECT_EQ(configDifference(from, to), added + "2\n");
}

TEST(ConfigDifference, SaysOfAnEntryInThePlaceOfAnotherWhatTheOtherHad) {
  HeadendConfig from = smallHeadend();
  from.lineupConfig.ipEntries[1].sapAnnounced = false;
  HeadendConfig to = from;
  to.lineupConfig.ipEntries[1] = smallHeadend().lineupConfig.ipEntries[1];
  to.lineupConfig.ipEntries[1].serviceKey = 7;
  EXPECT_EQ(configDifference(from, to),
            "IP lineup: removed from 2: \"Film\", SAT 11778 MHz, SID 4102, type 1\n"
            "IP lineup: added at 2: \"Film\", DVB no service 7, /sapAnnounced true\n");
}

TEST(ConfigDifference, SaysServicesThatAreInNoLineup) {
  HeadendConfig to = smallHeadend();
  to.lineupConfig.emptyInputServices[1].service.serviceType = 2;
  to.lineupConfig.encInputServices[1].address.slot = 5;
  EXPECT_EQ(configDifference(smallHeadend(), to),
            "ENC service 1 added, in no lineup: \"ENC 5/0\", ENC slot 5 input 0, type 1\n"
            "EMPTY service 1 added, in no lineup: \"EMPTY SLOT\", EMPTY, type 2\n");
  EXPECT_EQ(configDifference(to, smallHeadend()),
            "ENC service 1 removed, was in no lineup: \"ENC 5/0\", ENC slot 5 input 0, type 1\n"
            "EMPTY service 1 removed, was in no lineup: \"EMPTY SLOT\", EMPTY, type 2\n");
}

TEST(ConfigDifference, SaysEverythingElseByItsPath) {
  HeadendConfig to = smallHeadend();
  to.installerInfo.name = "Ada \x1b[2J";
  to.lineupConfig.globalConfig.preferredLanguages = {"eng"};
  to.lineupConfig.dvbInputServices[1].filteredPids = {100};
  to.ipInputs["4/0"].address = "10.0.0.1";
  to.rfInputsScanConfig.__set_plsItemList({});
  const std::string text = configDifference(smallHeadend(), to);
  EXPECT_EQ(text,
            "DVB service 1, \"News\": /filteredPids/0: added 100\n"
            "/installerInfo/name: \"\" -> \"Ada \\x1b[2J\"\n"
            "/ipInputs/4~10: added {\"address\": \"10.0.0.1\", \"muxes\": {}, \"netmask\": \"\"}\n"
            "/lineupConfig/globalConfig/preferredLanguages/0: added \"eng\"\n"
            "/rfInputsScanConfig/plsItemList: added []\n");
}

/// A headend with one mux on an IP input that has a place and none on one that has not.
HeadendConfig headendWithMux() {
  HeadendConfig config;
  hub_module::IPInput& input = config.ipInputs["first"];
  input.__set_slot(4);
  input.__set_interfaceId(1);
  input.muxes["u1"].uuid = "u1";
  input.muxes["u1"].url = "udp://239.0.0.1:5000";
  config.ipInputs["second\n"];
  return config;
}

TEST(ConfigDifference, SaysMuxesAsAddipmuxNamesThem) {
  HeadendConfig to = headendWithMux();
  auto& muxes = to.ipInputs["first"].muxes;
  muxes["u1"].fecRows = 5;
  muxes["u2"].uuid = "u2";
  muxes["u2"].url = "udp://\"2\"";
  to.ipInputs["second\n"].muxes["u3"].name = "News";
  EXPECT_EQ(configDifference(headendWithMux(), to),
            "IP input 4/1, mux \"udp://239.0.0.1:5000\", UUID u1: /fecRows: 0 -> 5\n"
            "IP input 4/1: added mux \"udp://\\\"2\\\"\", UUID u2\n"
            "IP input second\\n: added mux \"\", UUID u3, /name \"News\", /uuid \"\"\n");
  EXPECT_EQ(configDifference(to, headendWithMux()),
            "IP input 4/1, mux \"udp://239.0.0.1:5000\", UUID u1: /fecRows: 5 -> 0\n"
            "IP input 4/1: removed mux \"udp://\\\"2\\\"\", UUID u2\n"
            "IP input second\\n: removed mux \"\", UUID u3\n");
}

TEST(ConfigDifference, SaysTheMuxesOfAnInputThatComesOrGoes) {
  const std::string input =
      " {\"address\": \"\", \"interfaceId\": 1, \"muxes\": {}, \"netmask\": \"\", \"slot\": 4}\n";
  HeadendConfig without = headendWithMux();
  without.ipInputs.erase("first");
  EXPECT_EQ(
      configDifference(without, headendWithMux()),
      "IP input 4/1: added mux \"udp://239.0.0.1:5000\", UUID u1\n/ipInputs/first: added" + input);
  EXPECT_EQ(
      configDifference(headendWithMux(), without),
      "IP input 4/1: removed mux \"udp://239.0.0.1:5000\", UUID u1\n/ipInputs/first: removed" +
          input);
}

TEST(ConfigDifference, SaysThePlsItemsInTheWordsOfAddpls) {
  const auto headendWith = [](const std::vector<std::pair<int32_t, int32_t>>& typesAndCodes) {
    HeadendConfig config;
    std::vector<hub_module::PLSItem> items(typesAndCodes.size());
    for (std::size_t index = 0; index < items.size(); ++index) {
      items[index].plsType = typesAndCodes[index].first;
      items[index].plsCode = typesAndCodes[index].second;
    }
    config.rfInputsScanConfig.__set_plsItemList(items);
    return config;
  };
  EXPECT_EQ(configDifference(HeadendConfig(), headendWith({{1, 131070}, {7, 2}})),
            "PLS item 1: added Gold 131070\nPLS item 2: added unknown (7) 2\n");
  EXPECT_EQ(configDifference(headendWith({}), headendWith({{0, 3}})), "PLS item 1: added Auto 3\n");
  EXPECT_EQ(configDifference(headendWith({{1, 5}, {2, 6}}), headendWith({{2, 5}})),
            "PLS item 1: Gold 5 -> Root 5\nPLS item 2: removed Root 6\n");
  // An empty list, as "rmpls" leaves it, is not the same as none.
  EXPECT_EQ(configDifference(headendWith({{1, 5}}), headendWith({})),
            "PLS item 1: removed Gold 5\n");
  EXPECT_EQ(configDifference(headendWith({{1, 5}}), HeadendConfig()),
            "PLS item 1: removed Gold 5\n/rfInputsScanConfig/plsItemList: removed []\n");
  EXPECT_EQ(configDifference(headendWith({}), HeadendConfig()),
            "/rfInputsScanConfig/plsItemList: removed []\n");
}

TEST(ConfigDifference, SaysEachOfTenThousandEntriesThatMovedOnce) {
  HeadendConfig from;
  for (int32_t key = 1; key <= 10'000; ++key) {
    addService(from, key, "Channel", 17);
  }
  HeadendConfig to = from;
  addService(to, 10'001, "Kids", 18);
  auto& entries = to.lineupConfig.rfEntries;
  std::reverse(entries.begin(), entries.end());
  const std::string text = configDifference(from, to);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 10'001);  // all but one moved, two added
}

// ---- whatever the records are

/// Changes some of a record: moves, removes and repeats entries, takes parts of another one over.
class Changes {
 public:
  explicit Changes(uint32_t seed) : random_(seed), other_(randomHeadendConfig(seed + 1'000'000)) {}

  HeadendConfig applyTo(HeadendConfig config) {
    using Change = std::function<void(HeadendConfig&)>;
    const std::vector<Change> changes = {
        [&](HeadendConfig& c) { shuffle(c.lineupConfig.rfEntries); },
        [&](HeadendConfig& c) { shuffle(c.lineupConfig.ipEntries); },
        [&](HeadendConfig& c) { nameServices(c); },
        [&](HeadendConfig& c) { renumber(c.lineupConfig.dvbInputServices); },
        [&](HeadendConfig& c) { renumber(c.lineupConfig.encInputServices); },
        [&](HeadendConfig& c) { c.lineupConfig.rfConfig = other_.lineupConfig.rfConfig; },
        [&](HeadendConfig& c) { c.lineupConfig.rfEntries = other_.lineupConfig.rfEntries; },
        [&](HeadendConfig& c) { c.lineupConfig.globalConfig = other_.lineupConfig.globalConfig; },
        [&](HeadendConfig& c) { c.headendGlobalConfig = other_.headendGlobalConfig; },
        [&](HeadendConfig& c) { c.headendGlobalConfig.__isset.countryCode = false; },
        [&](HeadendConfig& c) { c.rfInputsScanConfig = other_.rfInputsScanConfig; },
        [&](HeadendConfig& c) {
          c.ipInputs.insert(other_.ipInputs.begin(), other_.ipInputs.end());
        },
        [&](HeadendConfig& c) {
          c.lineupConfig.dvbInputServices.insert(other_.lineupConfig.dvbInputServices.begin(),
                                                 other_.lineupConfig.dvbInputServices.end());
        },
        [&](HeadendConfig& c) { c.lineupConfig.emptyInputServices.clear(); },
        [](HeadendConfig& c) { c = HeadendConfig(); }};
    for (std::size_t left = random_() % 4; left > 0; --left) {
      changes[random_() % changes.size()](config);
    }
    return config;
  }

  /// Lets the entries of the lineups name services that there are.
  void nameServices(HeadendConfig& config) {
    nameServices(config, config.lineupConfig.rfEntries);
    nameServices(config, config.lineupConfig.ipEntries);
  }

 private:
  template <class Entries>
  void nameServices(const HeadendConfig& config, Entries& entries) {
    std::vector<int32_t> keys;
    for (const auto& [key, service] : config.lineupConfig.dvbInputServices) {
      keys.push_back(key);
    }
    for (auto& entry : entries) {
      if (!keys.empty() && random_() % 4 != 0) {
        entry.serviceKind = LineupEntryKind::DVB;
        entry.serviceKey = keys[random_() % keys.size()];
      }
    }
  }

  template <class Entries>
  void shuffle(Entries& entries) {
    std::shuffle(entries.begin(), entries.end(), random_);
    if (!entries.empty()) {
      entries.push_back(entries.front());
      entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(random_() % entries.size()));
    }
  }

  template <class Services>
  void renumber(Services& services) {
    if (!services.empty()) {
      auto first = services.extract(services.begin());
      first.key() = static_cast<int32_t>(random_() % 5);
      services.insert(std::move(first));
    }
  }

  std::mt19937 random_;
  const HeadendConfig other_;
};

/// Ten thousand pairs of records, a thousand with sanitizers, in parts that run side by side.
class ConfigDifferenceProperty : public testing::TestWithParam<uint32_t> {
 protected:
#ifdef SANITIZED  // ten times as slow
  static constexpr uint32_t kPairs = 125;
#else
  static constexpr uint32_t kPairs = 1'250;
#endif

  static uint32_t first() {
    return GetParam() * kPairs;
  }
};

INSTANTIATE_TEST_SUITE_P(Parts, ConfigDifferenceProperty, testing::Range(0U, 8U));

TEST_P(ConfigDifferenceProperty, IsEmptyExactlyForEqualRecordsAndThePatchGivesTheOther) {
  for (uint32_t seed = first(); seed < first() + kPairs; ++seed) {
    HeadendConfig from = randomHeadendConfig(seed);
    Changes changes(seed);
    changes.nameServices(from);
    const HeadendConfig to = changes.applyTo(from);
    ASSERT_EQ(configDifference(from, to).empty(), from == to) << seed;
    const json before = namedJson(from);
    const json now = namedJson(to);
    const json patch = patchBetween(before, now);
    ASSERT_EQ(patch.empty(), from == to) << seed;
    ASSERT_EQ(before.patch(patch), now) << seed;
  }
}

/// The places of all values that are neither objects nor arrays.
void gatherLeaves(const json& value, const std::string& path, std::vector<std::string>& leaves) {
  if (!value.is_structured()) {
    leaves.push_back(path);
    return;
  }
  for (const auto& [name, member] : value.items()) {
    gatherLeaves(member, (json::json_pointer(path) / name).to_string(), leaves);
  }
}

/// A path without the place of the service, entry or list that it is in, and that place as the
/// lines name it; a place that they do not name is empty.
std::pair<std::string, std::string> placeAndField(const std::string& path) {
  const std::vector<std::pair<std::string, std::string>> kPlaces = {
      {"/lineupConfig/dvbInputServices/", "DVB service "},
      {"/lineupConfig/encInputServices/", "ENC service "},
      {"/lineupConfig/emptyInputServices/", "EMPTY service "},
      {"/lineupConfig/rfEntries/", "RF lineup: "},
      {"/lineupConfig/ipEntries/", "IP lineup: "}};
  for (const auto& [start, words] : kPlaces) {
    if (path.starts_with(start)) {
      const std::size_t end = path.find('/', start.size());
      const std::string number = path.substr(start.size(), end - start.size());
      return {words.starts_with("RF") || words.starts_with("IP")
                  ? " at " + std::to_string(std::stoi(number) + 1)
                  : words + number + ",",
              path.substr(end)};
    }
  }
  return {"", path.substr(path.rfind('/'))};
}

/// Changes a value; returns the texts that all have to be in one line.
std::vector<std::string> change(json& value, const std::string& path, uint32_t number) {
  if (value.is_boolean()) {
    value = !value.get<bool>();
    // DRM has one word for two flags.
    if (path.find("lynkConfig") != std::string::npos ||
        path.find("vsecureConfig") != std::string::npos) {
      return {"drm: "};
    }
    if (path.ends_with("ScanEnabled")) {
      return {path.find("cofdm") != std::string::npos ? "tdtscan cofdm: " : "tdtscan qams: "};
    }
    const auto [place, field] = placeAndField(path);
    return {place, field, value.get<bool>() ? "true" : "false"};
  }
  if (value.is_string()) {
    value = "changed " + std::to_string(number) + ".";
    return {"changed " + std::to_string(number) + "."};
  }
  value = 1'900'000'000 + number;
  return {std::to_string(1'900'000'000 + number)};
}

/// Whether one line of the text has all of the parts.
bool hasLineWith(const std::string& text, const std::vector<std::string>& parts) {
  std::istringstream lines(text);
  std::string line;
  while (std::getline(lines, line)) {
    if (std::all_of(parts.begin(), parts.end(), [&](const std::string& part) {
          return line.find(part) != std::string::npos;
        })) {
      return true;
    }
  }
  return false;
}

/// One to eight leaves, half of them near the first: in the same service, entry or record.
std::set<std::string> someOf(const std::vector<std::string>& leaves, std::mt19937& random) {
  const std::string& first = leaves[random() % leaves.size()];
  std::size_t end = 0;
  for (int steps = 0; steps < 4 && end != std::string::npos; ++steps) {
    end = first.find('/', end + 1);
  }
  const std::string around = first.substr(0, end);
  std::vector<std::string> near;
  std::copy_if(leaves.begin(), leaves.end(), std::back_inserter(near),
               [&](const std::string& leaf) { return leaf.starts_with(around); });
  std::set<std::string> some = {first};
  for (std::size_t more = random() % 8; more > 0; --more) {
    const std::vector<std::string>& from = more % 2 == 0 ? leaves : near;
    some.insert(from[random() % from.size()]);
  }
  return some;
}

TEST_P(ConfigDifferenceProperty, SaysEveryChangedLeafInSomeLineWhateverElseChanges) {
  for (uint32_t seed = first(); seed < first() + kPairs; ++seed) {
    std::mt19937 random(seed);
    HeadendConfig from = randomHeadendConfig(seed % 500);
    Changes(seed).nameServices(from);
    json changed = namedJson(from);
    std::vector<std::string> leaves;
    gatherLeaves(changed, "", leaves);
    std::vector<std::pair<std::string, std::vector<std::string>>> expected;
    uint32_t number = seed * 10;
    for (const std::string& path : someOf(leaves, random)) {
      expected.emplace_back(path, change(changed[json::json_pointer(path)], path, number++));
    }
    const std::string text = configDifference(from, configFromJson(changed));
    for (const auto& [path, parts] : expected) {
      ASSERT_TRUE(hasLineWith(text, parts)) << seed << " " << path << " " << json(parts) << "\n"
                                            << text;
    }
  }
}

}  // namespace
}  // namespace lineup::test
