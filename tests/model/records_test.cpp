// The records of the interface definition: what they start with, and that encodings keep them
// whole.

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "model/lineup_editor.h"
#include "tests/support/encoding.h"
#include "tests/support/random_records.h"

namespace lineup::test {
namespace {

using apache::thrift::protocol::TBinaryProtocol;
using apache::thrift::protocol::TJSONProtocol;
using hub_module::HeadendConfig;
using hub_module::HeadendStatus;

/// Expects that what the console relies on in a new configuration is there.
void expectDefaults(const HeadendConfig& config) {
  EXPECT_TRUE(config.lineupConfig.ipEntries.empty());
  EXPECT_TRUE(config.lineupConfig.rfEntries.empty());
  EXPECT_TRUE(config.lineupConfig.dvbInputServices.empty());
  EXPECT_TRUE(config.lineupConfig.encInputServices.empty());
  EXPECT_TRUE(config.lineupConfig.emptyInputServices.empty());
  EXPECT_TRUE(config.ipInputs.empty());

  const hub_module::LineupGlobalConfig& global = config.lineupConfig.globalConfig;
  EXPECT_FALSE(global.globalFlag);
  EXPECT_FALSE(global.drmConfig.combinedFlag);
  EXPECT_FALSE(global.drmConfig.lynkConfig.enabled);
  EXPECT_FALSE(global.drmConfig.vsecureConfig.enabled);
  EXPECT_EQ(global.drmConfig.vsecureConfig.keyPeriod, 0.0);
  EXPECT_EQ(global.eitMode, 1);
  EXPECT_EQ(global.decryptPolicy, 1);
  EXPECT_FALSE(global.cofdmScanEnabled);
  EXPECT_FALSE(global.qamsScanEnabled);
  EXPECT_TRUE(global.totEnabled);
  EXPECT_TRUE(global.lcnEnabled);

  const hub_module::LineupIPConfig& ip = config.lineupConfig.ipConfig;
  EXPECT_EQ(ip.interfaceAddress, "");
  EXPECT_EQ(ip.streamProtocol, 0);
  EXPECT_EQ(ip.outputVlan, 0);
  EXPECT_EQ(ip.mcastRangeStart, "239.0.0.1");
  EXPECT_EQ(ip.mcastRangeEnd, "239.255.255.254");
  EXPECT_EQ(ip.port, 1234);
  EXPECT_FALSE(config.lineupConfig.rfConfig.rfProfileFlag);

  EXPECT_EQ(config.headendGlobalConfig.headendId, 1);
  EXPECT_EQ(config.headendGlobalConfig.headendType, 0);
  EXPECT_EQ(config.headendGlobalConfig.timeZone, "");
  EXPECT_FALSE(config.headendGlobalConfig.__isset.countryCode);
  EXPECT_FALSE(config.rfInputsScanConfig.__isset.plsItemList);
}

/// Expects that the flags of the fields with a declared default are set.
void expectDefaultedFlagsSet(const HeadendConfig& config) {
  const auto& global = config.lineupConfig.globalConfig.__isset;
  EXPECT_TRUE(global.eitMode && global.decryptPolicy && global.cofdmScanEnabled &&
              global.qamsScanEnabled && global.totEnabled && global.lcnEnabled);
  const auto& ip = config.lineupConfig.ipConfig.__isset;
  EXPECT_TRUE(ip.streamProtocol && ip.outputVlan && ip.mcastRangeStart && ip.mcastRangeEnd &&
              ip.port);
  EXPECT_TRUE(config.headendGlobalConfig.__isset.headendId);
  const auto& installer = config.installerInfo.__isset;
  EXPECT_TRUE(installer.name && installer.phone && installer.email);
}

TEST(Records, NewEditorHasAnEmptyLineupTheDefaultsAndNothingPending) {
  const LineupEditor editor;
  expectDefaults(editor.config);
  EXPECT_EQ(editor.status, HeadendStatus());
  EXPECT_FALSE(editor.pendingChanges);
  EXPECT_EQ(editor.tdtInputIds, (std::vector<int32_t>{1, 2}));
  EXPECT_EQ(editor.satInputIds, (std::vector<int32_t>{3, 4, 5, 6, 7, 8, 9, 10}));
}

TEST(Records, FlagsOfFieldsWithADefaultStartSetAndAllOthersClear) {
  const HeadendConfig config;
  expectDefaultedFlagsSet(config);
  const auto& global = config.lineupConfig.globalConfig.__isset;
  EXPECT_FALSE(global.globalFlag || global.drmConfig || global.preferredLanguages);
  EXPECT_FALSE(config.lineupConfig.ipConfig.__isset.interfaceAddress);
  EXPECT_FALSE(config.headendGlobalConfig.__isset.headendType ||
               config.headendGlobalConfig.__isset.timeZone ||
               config.headendGlobalConfig.__isset.countryCode);

  const module::ModuleChainAddress address;
  EXPECT_TRUE(address.__isset.slot);
  EXPECT_FALSE(address.__isset.port);
  const hub_module::IPMux mux;
  EXPECT_FALSE(mux.__isset.uuid || mux.__isset.url || mux.__isset.name || mux.__isset.services ||
               mux.__isset.fecColumns || mux.__isset.fecRows);
  const hub_module::IPInput input;
  EXPECT_FALSE(input.__isset.slot || input.__isset.interfaceId || input.__isset.muxes);
  EXPECT_FALSE(hub_module::EmptyInputServiceConfig().__isset.service);
  EXPECT_FALSE(hub_module::EmptyInputService().__isset.serviceType);
  const hub_module::DVBInputService service;
  EXPECT_FALSE(service.__isset.lineupSATMux || service.__isset.lineupTDTMux ||
               service.__isset.lineupCableMux || service.__isset.ipMuxUUID);
}

TEST(Records, DefaultsOfServicesAndScanItems) {
  EXPECT_TRUE(hub_module::DVBInputServiceConfig().configFlag);
  EXPECT_EQ(hub_module::PLSItem().plsType, 1);
  EXPECT_EQ(hub_module::PLSItem().plsCode, 0);
}

TEST(Records, SettersStoreTheValueAndSetTheFlag) {
  hub_module::HeadendGlobalConfig global;
  global.__set_countryCode(general::CountryCode::SWEDEN);
  EXPECT_EQ(global.countryCode, 9);
  EXPECT_TRUE(global.__isset.countryCode);
}

TEST(Records, NewConfigurationReadBackIsEqualWithTheDefaultedFlagsStillSet) {
  HeadendConfig fromBinary;
  decode<TBinaryProtocol>(toBinary(HeadendConfig()), fromBinary);
  EXPECT_EQ(fromBinary, HeadendConfig());
  expectDefaultedFlagsSet(fromBinary);
  EXPECT_FALSE(fromBinary.headendGlobalConfig.__isset.countryCode);

  HeadendConfig fromJson;
  decode<TJSONProtocol>(toJson(HeadendConfig()), fromJson);
  EXPECT_EQ(fromJson, HeadendConfig());
  expectDefaultedFlagsSet(fromJson);
}

TEST(Records, OneNumberIsAKeyInAllThreeServiceMaps) {
  LineupEditor editor;
  hub_module::LineupConfig& lineup = editor.config.lineupConfig;
  lineup.dvbInputServices[1].service.name = "DVB";
  lineup.encInputServices[1].label = "ENC";
  lineup.emptyInputServices[1].service.serviceType = 25;
  HeadendConfig copy;
  decode<TBinaryProtocol>(toBinary(editor.config), copy);
  EXPECT_EQ(copy.lineupConfig.dvbInputServices.at(1).service.name, "DVB");
  EXPECT_EQ(copy.lineupConfig.encInputServices.at(1).label, "ENC");
  EXPECT_EQ(copy.lineupConfig.emptyInputServices.at(1).service.serviceType, 25);
  EXPECT_EQ(copy, editor.config);
}

TEST(Records, EntryKindsAreNumberedAsOnTheWire) {
  EXPECT_EQ(hub_module::LineupEntryKind::DVB, 0);
  EXPECT_EQ(hub_module::LineupEntryKind::ENC, 1);
  EXPECT_EQ(hub_module::LineupEntryKind::EMPTY, 2);
}

TEST(Records, RFInputIdsAreNumberedAsOnTheWire) {
  EXPECT_EQ(general::RFInputId::TDT1, 1);
  EXPECT_EQ(general::RFInputId::TDT2, 2);
  EXPECT_EQ(general::RFInputId::SAT1, 3);
  EXPECT_EQ(general::RFInputId::SAT8, 10);
}

TEST(Records, AnyConfigurationSurvivesBothEncodings) {
  for (uint32_t seed = 0; seed < 20; ++seed) {
    const HeadendConfig config = randomHeadendConfig(seed);
    ASSERT_NE(config, HeadendConfig());
    HeadendConfig fromBinary;
    decode<TBinaryProtocol>(toBinary(config), fromBinary);
    EXPECT_EQ(fromBinary, config) << "seed " << seed;
    HeadendConfig fromJson;
    decode<TJSONProtocol>(toJson(config), fromJson);
    EXPECT_EQ(fromJson, config) << "seed " << seed;
  }
}

TEST(Records, AnyStatusSurvivesTheBinaryEncoding) {
  for (uint32_t seed = 0; seed < 20; ++seed) {
    const HeadendStatus status = randomHeadendStatus(seed);
    HeadendStatus copy;
    decode<TBinaryProtocol>(toBinary(status), copy);
    EXPECT_EQ(copy, status) << "seed " << seed;
  }
}

TEST(Records, NewStatusIsEmptyWithItsConfigurationsAtTheirDefaults) {
  const HeadendStatus status;
  EXPECT_TRUE(status.modules.empty());
  EXPECT_TRUE(status.satRFInputs.empty());
  EXPECT_TRUE(status.tdtRFInputs.empty());
  EXPECT_TRUE(status.ipInputs.empty());
  EXPECT_TRUE(status.lineupStatus.rfEntries.empty());
  EXPECT_EQ(status.lineupStatus.ipStatus.config.mcastRangeStart, "239.0.0.1");
  EXPECT_EQ(status.lineupStatus.ipStatus.config.mcastRangeEnd, "239.255.255.254");
  EXPECT_EQ(status.lineupStatus.ipStatus.config.port, 1234);
  EXPECT_EQ(status.lineupStatus.globalConfig, hub_module::LineupGlobalConfig());
  EXPECT_EQ(status.headendGlobalConfig.headendId, 1);
  EXPECT_TRUE(status.installerInfo.__isset.name);
}

TEST(Records, StatusWithoutAnInputIsAnOrdinaryStatus) {
  HeadendStatus status;
  status.satRFInputs[general::RFInputId::SAT3].config.enabled = true;
  HeadendStatus copy;
  decode<TBinaryProtocol>(toBinary(status), copy);
  EXPECT_EQ(copy, status);
  EXPECT_EQ(copy.satRFInputs.count(general::RFInputId::SAT1), 0U);
  EXPECT_TRUE(copy.tdtRFInputs.empty());
}

}  // namespace
}  // namespace lineup::test
