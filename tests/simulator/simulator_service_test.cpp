// The controller's service on the simulator: every call, what it changes, prints and keeps.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "model/lineup_editor.h"
#include "tests/simulator/simulator_process.h"
#include "tests/support/lineup_entries.h"

namespace lineup::test {
namespace {

using general::RFInputId;
using hub_module::HeadendConfig;
using hub_module::HeadendStatus;
using hub_module::LineupEntryKind;

class SimulatorService : public testing::Test {
 protected:
  HeadendConfig config() const {
    HeadendConfig result;
    simulator_->connect()->getHeadendConfig(result);
    return result;
  }

  HeadendStatus status() const {
    HeadendStatus result;
    simulator_->connect()->getHeadendStatus(result);
    return result;
  }

  HeadendStatus commit(const HeadendConfig& config) const {
    HeadendStatus result;
    simulator_->connect()->setHeadendConfig(result, config);
    return result;
  }

  /// The line that the call printed after it.
  std::string lineOf(const std::string& call) const {
    std::string line;
    do {
      line = simulator_->nextLine();
    } while (line.rfind(call + ": ", 0) != 0);
    return line;
  }

  void start(const std::vector<std::string>& options) {
    simulator_.reset();
    simulator_ = std::make_unique<SimulatorProcess>(folder_, options);
  }

  void restart() {
    EXPECT_EQ(simulator_->end().status, 0);
    start({});
  }

  TemporaryFolder folder_;
  std::unique_ptr<SimulatorProcess> simulator_ = std::make_unique<SimulatorProcess>(folder_);
};

/// A configuration with something in every part that the summary tells of.
HeadendConfig editedConfig(HeadendConfig config) {
  hub_module::LineupConfig& lineup = config.lineupConfig;
  lineup.rfConfig.modulation = 1;
  for (int32_t key = 1; key <= 2; ++key) {
    hub_module::DVBInputServiceConfig& service = lineup.dvbInputServices[key];
    service.service.name = "Sérvice \"✓\" \x01 " + std::to_string(key);
    service.service.lItems = {"a", "", " b"};
    service.service.__set_ipMuxUUID("6f1c2a9e-3b57-4d08-9a41-c2e8b7d05f13");
    lineup.ipEntries.push_back(ipEntry(key, LineupEntryKind::DVB, ""));
    lineup.rfEntries.push_back(rfEntry(key, LineupEntryKind::DVB, ""));
  }
  lineup.emptyInputServices[1].service.serviceType = 25;
  lineup.rfEntries.push_back(rfEntry(1, LineupEntryKind::EMPTY, ""));
  lineup.encInputServices[1].label = "HDMI";
  config.headendGlobalConfig.headendId = 4;
  config.headendGlobalConfig.__set_countryCode(general::CountryCode::ITALY);
  return config;
}

TEST_F(SimulatorService, ConfigurationBeginsWithTwoIPInputsAndAnEmptyLineup) {
  const HeadendConfig initial = config();
  EXPECT_TRUE(initial.lineupConfig.rfEntries.empty());
  EXPECT_TRUE(initial.lineupConfig.ipEntries.empty());
  ASSERT_EQ(initial.ipInputs.size(), 2U);
  std::set<std::pair<int32_t, int32_t>> places;
  for (const auto& [key, input] : initial.ipInputs) {
    EXPECT_TRUE(input.__isset.slot && input.__isset.interfaceId);
    places.insert({input.slot, input.interfaceId});
    EXPECT_FALSE(input.muxes.empty());
    for (const auto& [uuid, mux] : input.muxes) {
      EXPECT_EQ(uuid.size(), 36U);
      EXPECT_EQ(mux.uuid, uuid);
    }
  }
  EXPECT_EQ(places, (std::set<std::pair<int32_t, int32_t>>{{7, 1}, {7, 2}}));
  EXPECT_EQ(simulator_->nextLine(),
            "getHeadendConfig: 0 RF entries, 0 IP entries, modulation COFDM");
}

TEST_F(SimulatorService, StatusShowsAllInputsAndRepeatsTheConfiguration) {
  const HeadendConfig edited = editedConfig(config());
  commit(edited);
  const HeadendStatus shown = status();
  std::vector<RFInputId::type> ids;
  for (const auto& [id, input] : shown.tdtRFInputs) {
    ids.push_back(id);
  }
  for (const auto& [id, input] : shown.satRFInputs) {
    ids.push_back(id);
  }
  EXPECT_EQ(ids, (std::vector<RFInputId::type>{RFInputId::TDT1, RFInputId::TDT2, RFInputId::SAT1,
                                               RFInputId::SAT2, RFInputId::SAT3, RFInputId::SAT4,
                                               RFInputId::SAT5, RFInputId::SAT6, RFInputId::SAT7,
                                               RFInputId::SAT8}));
  EXPECT_EQ(shown.ipInputs, edited.ipInputs);
  EXPECT_EQ(shown.headendGlobalConfig, edited.headendGlobalConfig);
  EXPECT_EQ(shown.installerInfo, edited.installerInfo);
  EXPECT_EQ(shown.rfInputsScanStatus.config, edited.rfInputsScanConfig);
  EXPECT_EQ(shown.lineupStatus.globalConfig, edited.lineupConfig.globalConfig);
  EXPECT_EQ(shown.lineupStatus.ipStatus.config, edited.lineupConfig.ipConfig);
  EXPECT_EQ(shown.lineupStatus.rfStatus.config, edited.lineupConfig.rfConfig);
  ASSERT_EQ(shown.lineupStatus.rfEntries.size(), 3U);
  EXPECT_EQ(shown.lineupStatus.rfEntries[2].config, edited.lineupConfig.rfEntries[2]);
  EXPECT_TRUE(shown.lineupStatus.rfEntries[0].running);
  EXPECT_FALSE(shown.lineupStatus.rfEntries[2].running);
  EXPECT_EQ(shown.lineupStatus.dvbInputServices, edited.lineupConfig.dvbInputServices);
  EXPECT_EQ(shown.lineupStatus.encInputServices, edited.lineupConfig.encInputServices);
  EXPECT_EQ(shown.modules.size(), 9U);
  EXPECT_EQ(shown.hubModuleStatus.inModules.size(), 3U);
  EXPECT_EQ(lineOf("getHeadendStatus"), "getHeadendStatus: 2 TDT, 8 SAT, 2 IP inputs");
}

TEST_F(SimulatorService, CommitIsServedAgainAlsoAfterARestart) {
  const HeadendConfig edited = editedConfig(config());
  EXPECT_EQ(commit(edited).headendGlobalConfig, edited.headendGlobalConfig);
  EXPECT_EQ(lineOf("setHeadendConfig"),
            "setHeadendConfig: 3 RF entries, 2 IP entries, modulation QAM; headend id 4, country "
            "ITALY, DVB services 2, ENC services 1, reserved slots 1");
  EXPECT_EQ(config(), edited);
  restart();
  EXPECT_EQ(config(), edited);
}

TEST_F(SimulatorService, ACommitWithoutOptionalFieldsLeavesNoneSet) {
  HeadendConfig edited = config();
  ASSERT_TRUE(edited.headendGlobalConfig.__isset.countryCode);
  edited.headendGlobalConfig.__isset.countryCode = false;
  commit(edited);
  EXPECT_EQ(lineOf("setHeadendConfig"),
            "setHeadendConfig: 0 RF entries, 0 IP entries, modulation COFDM; country not set");
  EXPECT_FALSE(config().headendGlobalConfig.__isset.countryCode);
  restart();
  EXPECT_FALSE(config().headendGlobalConfig.__isset.countryCode);
}

TEST_F(SimulatorService, EverySettingThatChangesIsTold) {
  const std::vector<std::pair<std::function<void(HeadendConfig&)>, std::string>> changes{
      {[](auto& c) { c.lineupConfig.rfConfig.modulation = 2; }, "modulation QAM B"},
      {[](auto& c) { c.lineupConfig.rfConfig.carriersPerModule = 1; },
       "modulation QAM B; carriers per module 6"},
      {[](auto& c) { c.lineupConfig.globalConfig.drmConfig.lynkConfig.enabled = true; },
       "modulation QAM B; DRM Lynk on VSecure off"},
      {[](auto& c) { c.lineupConfig.globalConfig.eitMode = 2; }, "modulation QAM B; EIT others"},
      {[](auto& c) { c.lineupConfig.globalConfig.decryptPolicy = 9; },
       "modulation QAM B; decrypt policy 9"},
      {[](auto& c) { c.headendGlobalConfig.headendId = 10; }, "modulation QAM B; headend id 10"},
      {[](auto& c) { c.headendGlobalConfig.headendType = 1; }, "modulation QAM B; type skyit"},
      {[](auto& c) { c.headendGlobalConfig.timeZone = "a\nb"; }, "modulation QAM B; time zone a?b"},
      {[](auto& c) { c.lineupConfig.ipConfig.outputVlan = 1; },
       "modulation QAM B; output VLAN only TV1"},
      {[](auto& c) { c.lineupConfig.ipConfig.mcastRangeStart = "239.1.1.1"; },
       "modulation QAM B; multicast range 239.1.1.1-239.255.255.254"},
      {[](auto& c) { c.lineupConfig.ipConfig.port = -1; }, "modulation QAM B; port -1"},
      {[](auto& c) { c.lineupConfig.globalConfig.cofdmScanEnabled = true; },
       "modulation QAM B; COFDM scan on"},
      {[](auto& c) { c.lineupConfig.globalConfig.qamsScanEnabled = true; },
       "modulation QAM B; QAMS scan on"},
      {[](auto& c) { c.rfInputsScanConfig.__set_plsItemList({{}}); },
       "modulation QAM B; PLS items 1"},
      {[](auto& c) { c.ipInputs.begin()->second.muxes.clear(); }, "modulation QAM B; IP muxes 1"},
      {[](auto& c) { c.installerInfo.name = "someone"; }, "modulation QAM B; other changes"},
      {[](auto&) {}, "modulation QAM B; no change"},
      {[](auto& c) { c.lineupConfig.rfConfig.modulation = -7; }, "modulation -7"}};
  HeadendConfig edited = config();
  for (const auto& [change, told] : changes) {
    change(edited);
    commit(edited);
    EXPECT_EQ(lineOf("setHeadendConfig"), "setHeadendConfig: 0 RF entries, 0 IP entries, " + told);
  }
}

TEST_F(SimulatorService, SingleEntriesAreToldInTheSingular) {
  HeadendConfig edited;
  edited.lineupConfig.rfEntries.resize(1);
  edited.lineupConfig.ipEntries.resize(1);
  commit(edited);
  EXPECT_EQ(lineOf("setHeadendConfig").substr(0, 57),
            "setHeadendConfig: 1 RF entry, 1 IP entry, modulation COFD");
}

TEST_F(SimulatorService, SatelliteInputSwitchesAndStaysSwitched) {
  const auto initial = status().satRFInputs;
  hub_module::SATRFInputConfig wanted = initial.at(RFInputId::SAT3).config;
  ASSERT_FALSE(wanted.enabled);
  wanted.enabled = true;
  wanted.lnb.voltage = 18;
  simulator_->connect()->setSATRFInputConfig(RFInputId::SAT3, wanted);
  EXPECT_EQ(lineOf("setSATRFInputConfig"), "setSATRFInputConfig: SAT3 on");
  for (int round = 0; round < 2; ++round) {
    const auto inputs = status().satRFInputs;
    for (const auto& [id, input] : inputs) {
      EXPECT_EQ(input.config, id == RFInputId::SAT3 ? wanted : initial.at(id).config);
    }
    EXPECT_TRUE(inputs.at(RFInputId::SAT3).locked);
    restart();
  }
  wanted.enabled = false;
  simulator_->connect()->setSATRFInputConfig(RFInputId::SAT3, wanted);
  EXPECT_EQ(lineOf("setSATRFInputConfig"), "setSATRFInputConfig: SAT3 off");
  EXPECT_FALSE(status().satRFInputs.at(RFInputId::SAT3).locked);
}

TEST_F(SimulatorService, InputWithoutASignalIsNotLockedWhenSwitchedOn) {
  hub_module::SATRFInputConfig wanted;
  wanted.enabled = true;
  simulator_->connect()->setSATRFInputConfig(RFInputId::SAT7, wanted);
  const auto input = status().satRFInputs.at(RFInputId::SAT7);
  EXPECT_TRUE(input.config.enabled);
  EXPECT_FALSE(input.locked);
}

TEST_F(SimulatorService, TerrestrialInputsSwitchAsAPairAndStaySwitched) {
  const auto initial = status().tdtRFInputs;
  hub_module::TDTRFInputConfig tdt1 = initial.at(RFInputId::TDT1).config;
  hub_module::TDTRFInputConfig tdt2 = initial.at(RFInputId::TDT2).config;
  ASSERT_TRUE(tdt1.enabled);
  ASSERT_FALSE(tdt2.enabled);
  tdt1.enabled = false;
  tdt2.enabled = true;
  tdt2.antennaVoltage = 12;
  simulator_->connect()->setTDTRFInputConfig(tdt1, tdt2);
  EXPECT_EQ(lineOf("setTDTRFInputConfig"), "setTDTRFInputConfig: TDT1 off, TDT2 on");
  for (int round = 0; round < 2; ++round) {
    const auto inputs = status().tdtRFInputs;
    EXPECT_EQ(inputs.at(RFInputId::TDT1).config, tdt1);
    EXPECT_EQ(inputs.at(RFInputId::TDT2).config, tdt2);
    restart();
  }
}

TEST_F(SimulatorService, SwitchingInputsLeavesTheConfigurationAlone) {
  const HeadendConfig before = config();
  simulator_->connect()->setSATRFInputConfig(RFInputId::SAT8, {});
  simulator_->connect()->setTDTRFInputConfig({}, {});
  EXPECT_EQ(config(), before);
}

TEST_F(SimulatorService, InputThatNoHeadendHasIsNotSwitched) {
  const HeadendStatus before = status();
  const std::pair<int, std::string> inputs[] = {
      {0, "0"}, {1, "TDT1"}, {11, "11"}, {243, "SATALL"}, {255, "255"}};
  for (const auto& [id, name] : inputs) {
    simulator_->connect()->setSATRFInputConfig(static_cast<RFInputId::type>(id), {});
    EXPECT_EQ(lineOf("setSATRFInputConfig"), "setSATRFInputConfig: " + name + " is not present");
  }
  EXPECT_EQ(status().satRFInputs, before.satRFInputs);
  EXPECT_EQ(status().tdtRFInputs, before.tdtRFInputs);
}

TEST_F(SimulatorService, InputsLeftOutAreMissingFromTheStatusAndNotSwitched) {
  const HeadendStatus before = status();
  start({"--without-input", "sat5", "--without-input", "Tdt1"});
  const HeadendStatus shown = status();
  EXPECT_EQ(shown.satRFInputs.count(RFInputId::SAT5), 0U);
  EXPECT_EQ(shown.satRFInputs.size(), 7U);
  EXPECT_EQ(shown.tdtRFInputs.count(RFInputId::TDT1), 0U);
  EXPECT_EQ(shown.tdtRFInputs.size(), 1U);
  EXPECT_EQ(simulator_->nextLine(), "getHeadendStatus: 1 TDT, 7 SAT, 2 IP inputs");

  hub_module::SATRFInputConfig sat;
  sat.enabled = true;
  simulator_->connect()->setSATRFInputConfig(RFInputId::SAT5, sat);
  EXPECT_EQ(simulator_->nextLine(), "setSATRFInputConfig: SAT5 is not present");
  hub_module::TDTRFInputConfig off;
  hub_module::TDTRFInputConfig on;
  on.enabled = true;
  simulator_->connect()->setTDTRFInputConfig(off, on);
  EXPECT_EQ(simulator_->nextLine(), "setTDTRFInputConfig: TDT1 is not present, TDT2 on");

  start({});
  EXPECT_EQ(status().satRFInputs, before.satRFInputs);
  EXPECT_TRUE(status().tdtRFInputs.at(RFInputId::TDT1).config.enabled);
  EXPECT_TRUE(status().tdtRFInputs.at(RFInputId::TDT2).config.enabled);
}

TEST_F(SimulatorService, PartsOfTheConfigurationAreSetAlone) {
  const HeadendConfig before = config();
  HeadendConfig expected = before;
  HeadendStatus answer;

  expected.lineupConfig = editedConfig(before).lineupConfig;
  simulator_->connect()->setLineupConfig(answer, expected.lineupConfig);
  EXPECT_EQ(answer.lineupStatus.dvbInputServices, expected.lineupConfig.dvbInputServices);
  EXPECT_EQ(lineOf("setLineupConfig"),
            "setLineupConfig: 3 RF entries, 2 IP entries, modulation QAM; DVB services 2, ENC "
            "services 1, reserved slots 1");

  expected.headendGlobalConfig = editedConfig(before).headendGlobalConfig;
  simulator_->connect()->setHeadendGlobalConfig(answer, expected.headendGlobalConfig);
  EXPECT_EQ(answer.headendGlobalConfig, expected.headendGlobalConfig);
  EXPECT_EQ(lineOf("setHeadendGlobalConfig"),
            "setHeadendGlobalConfig: 3 RF entries, 2 IP entries, modulation QAM; headend id 4, "
            "country ITALY");

  expected.rfInputsScanConfig.__set_plsItemList({{}, {}});
  simulator_->connect()->setRFInputsScanConfig(answer, expected.rfInputsScanConfig);
  EXPECT_EQ(answer.rfInputsScanStatus.config, expected.rfInputsScanConfig);
  EXPECT_EQ(lineOf("setRFInputsScanConfig"),
            "setRFInputsScanConfig: 3 RF entries, 2 IP entries, modulation QAM; PLS items 2");

  restart();
  EXPECT_EQ(config(), expected);
}

TEST_F(SimulatorService, ValidationTellsWhatIsWrongAndChangesNothing) {
  const HeadendConfig before = config();
  HeadendConfig checked = editedConfig(before);
  const auto expectFound = [&](const std::string& result) {
    EXPECT_EQ(simulator_->connect()->validateHeadendConfig(checked), result == "valid");
    EXPECT_EQ(lineOf("validateHeadendConfig"), "validateHeadendConfig: " + result);
  };
  expectFound("valid");
  checked.headendGlobalConfig.headendId = 11;
  expectFound("invalid, headend id 11");
  checked.lineupConfig.ipEntries[0].serviceKey = 77;
  expectFound("invalid, an IP entry without a service");
  checked.lineupConfig.rfEntries[0].serviceKind = static_cast<LineupEntryKind::type>(3);
  expectFound("invalid, an RF entry without a service");
  EXPECT_EQ(config(), before);
}

TEST_F(SimulatorService, ValidationFindsTheServicesOfEveryKind) {
  using Kind = hub_module::LineupEntryKind;
  HeadendConfig checked = config();
  checked.lineupConfig.dvbInputServices[1];
  checked.lineupConfig.encInputServices[2];
  checked.lineupConfig.emptyInputServices[3];
  const std::pair<Kind::type, int> services[] = {{Kind::DVB, 1}, {Kind::ENC, 2}, {Kind::EMPTY, 3}};
  for (const auto& [kind, key] : services) {
    for (const int asked : {1, 2, 3}) {
      hub_module::LineupRFEntryConfig entry;
      entry.serviceKind = kind;
      entry.serviceKey = asked;
      checked.lineupConfig.rfEntries = {entry};
      EXPECT_EQ(simulator_->connect()->validateHeadendConfig(checked), asked == key)
          << kind << " " << asked;
    }
  }
}

TEST_F(SimulatorService, ValidationTakesHeadendIdsFromOneToTen) {
  HeadendConfig checked = config();
  for (const int id : {0, 1, 10, 11}) {
    checked.headendGlobalConfig.headendId = id;
    EXPECT_EQ(simulator_->connect()->validateHeadendConfig(checked), id == 1 || id == 10) << id;
  }
}

TEST_F(SimulatorService, ScanAndResetChangeNothing) {
  commit(editedConfig(config()));
  const HeadendConfig before = config();
  simulator_->connect()->orderRFInputsScan();
  EXPECT_EQ(lineOf("orderRFInputsScan"), "orderRFInputsScan: scanned, no change");
  simulator_->connect()->resetHeadend();
  EXPECT_EQ(lineOf("resetHeadend"), "resetHeadend: started anew, no change");
  EXPECT_EQ(config(), before);
}

TEST_F(SimulatorService, FactoryDefaultsAreTheFirstState) {
  const HeadendConfig firstConfig = config();
  const auto firstInputs = status().satRFInputs;
  commit(editedConfig(firstConfig));
  simulator_->connect()->setSATRFInputConfig(RFInputId::SAT1, {});
  simulator_->connect()->resetFactoryDefaults();
  EXPECT_EQ(lineOf("resetFactoryDefaults"),
            "resetFactoryDefaults: 0 RF entries, 0 IP entries, modulation COFDM");
  restart();
  EXPECT_EQ(config(), firstConfig);
  EXPECT_EQ(status().satRFInputs, firstInputs);
}

TEST_F(SimulatorService, EveryCallIsRefusedWhileNotReadyAndChangesNothing) {
  commit(editedConfig(config()));
  const HeadendConfig before = config();
  HeadendConfig unusedConfig;
  HeadendStatus unused;
  const std::pair<std::string, std::function<void(Connection&)>> everyCall[] = {
      {"getHeadendConfig", [&](Connection& c) { c->getHeadendConfig(unusedConfig); }},
      {"getHeadendStatus", [&](Connection& c) { c->getHeadendStatus(unused); }},
      {"setHeadendConfig", [&](Connection& c) { c->setHeadendConfig(unused, {}); }},
      {"setTDTRFInputConfig", [](Connection& c) { c->setTDTRFInputConfig({}, {}); }},
      {"setSATRFInputConfig", [](Connection& c) { c->setSATRFInputConfig(RFInputId::SAT1, {}); }},
      {"setLineupConfig", [&](Connection& c) { c->setLineupConfig(unused, {}); }},
      {"setHeadendGlobalConfig", [&](Connection& c) { c->setHeadendGlobalConfig(unused, {}); }},
      {"setRFInputsScanConfig", [&](Connection& c) { c->setRFInputsScanConfig(unused, {}); }},
      {"validateHeadendConfig", [](Connection& c) { c->validateHeadendConfig({}); }},
      {"orderRFInputsScan", [](Connection& c) { c->orderRFInputsScan(); }},
      {"resetHeadend", [](Connection& c) { c->resetHeadend(); }},
      {"resetFactoryDefaults", [](Connection& c) { c->resetFactoryDefaults(); }}};
  start({"--not-ready", "3600"});
  for (const auto& [name, call] : everyCall) {
    Connection connection = simulator_->connect();
    try {
      call(connection);
      ADD_FAILURE() << name << " was answered";
    } catch (const hub_module::ControllerTaskIsNotReady& notReady) {
      EXPECT_EQ(notReady.reason, "starting");
    }
    EXPECT_EQ(simulator_->nextLine(), name + ": refused, not ready");
  }
  start({});
  EXPECT_EQ(config(), before);
}

TEST_F(SimulatorService, BecomesReadyAfterTheSecondsThatWereAskedFor) {
  const auto asked = std::chrono::steady_clock::now();
  start({"--not-ready", "2"});
  EXPECT_THROW(config(), hub_module::ControllerTaskIsNotReady);
  bool ready = false;
  while (!ready && std::chrono::steady_clock::now() - asked < std::chrono::seconds(60)) {
    try {
      config();
      ready = true;
    } catch (const hub_module::ControllerTaskIsNotReady&) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
  }
  EXPECT_TRUE(ready);
  EXPECT_GE(std::chrono::steady_clock::now() - asked, std::chrono::seconds(2));
  simulator_->connect()->resetHeadend();
  EXPECT_THROW(config(), hub_module::ControllerTaskIsNotReady);
}

TEST_F(SimulatorService, ConfigurationOfFortyMegabytesIsAcceptedServedAndKept) {
  HeadendConfig large = config();
  constexpr int32_t kServices = 40000;
  for (int32_t key = 1; key <= kServices; ++key) {
    hub_module::DVBInputServiceConfig& service = large.lineupConfig.dvbInputServices[key];
    service.service.sid = key;
    service.service.name = "Service " + std::to_string(key);
    service.service.providerName = std::string(1000, 'x');
    service.service.lItems = {"spa", "eng"};
  }
  commit(large);
  EXPECT_EQ(config(), large);
  restart();
  EXPECT_EQ(config(), large);
}

}  // namespace
}  // namespace lineup::test
