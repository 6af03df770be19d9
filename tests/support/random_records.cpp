#include "tests/support/random_records.h"

#include <array>
#include <cstddef>
#include <limits>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/support/encoding.h"

namespace lineup::test {

namespace {

using namespace korvel::thrift;
using namespace korvel::thrift::hub_module;

/// Fills anything of the interface: fill() takes any number of fields, and the overloads of one()
/// say what a field's type takes. Each record names all its fields in order.
class Filler {
 public:
  explicit Filler(uint32_t seed) : random_(seed) {}

  template <class... Fields>
  void fill(Fields&... fields) {
    (one(fields), ...);
  }

 private:
  int32_t upTo(int32_t largest) {
    return std::uniform_int_distribution<int32_t>(0, largest)(random_);
  }

  template <class T>
  T made() {
    T value{};
    one(value);
    return value;
  }

  void one(bool& value) { value = upTo(1) == 1; }
  void one(double& value) { value = std::uniform_real_distribution<double>(-1e6, 1e6)(random_); }
  void one(int32_t& value) {
    using Limits = std::numeric_limits<int32_t>;
    value = std::uniform_int_distribution<int32_t>(Limits::min(), Limits::max())(random_);
  }
  void one(int64_t& value) {
    using Limits = std::numeric_limits<int64_t>;
    value = std::uniform_int_distribution<int64_t>(Limits::min(), Limits::max())(random_);
  }
  void one(std::string& value) {
    static const std::array<std::string, 17> kPieces = {"a",    "Canal", " ",  "é",  "Ñ",  "ü",
                                                        "ß",    "\"",    "\\", "/",  "\n", "\x01",
                                                        "\x1f", "\t✓",   "✕",  "日", "😀"};
    for (int32_t pieces = 1 + upTo(20); pieces > 0; --pieces) {
      value += kPieces.at(static_cast<std::size_t>(upTo(kPieces.size() - 1)));
    }
  }

  void one(general::CountryCode::type& value) {
    value = static_cast<general::CountryCode::type>(upTo(14));
  }
  void one(general::RFInputId::type& value) {
    value = static_cast<general::RFInputId::type>(1 + upTo(9));
  }
  void one(general::AlarmCode::type& value) {
    value = static_cast<general::AlarmCode::type>(1 + upTo(6));
  }
  void one(module::ModuleSlot::type& value) {
    value = static_cast<module::ModuleSlot::type>(upTo(12));
  }
  void one(LineupEntryKind::type& value) { value = static_cast<LineupEntryKind::type>(upTo(2)); }

  template <class T>
  void one(std::vector<T>& values) {
    for (int32_t count = 1 + upTo(4); count > 0; --count) {
      values.push_back(made<T>());
    }
  }
  template <class T>
  void one(std::set<T>& values) {
    for (int32_t count = 1 + upTo(4); count > 0; --count) {
      values.insert(made<T>());
    }
  }
  template <class Key, class Value>
  void one(std::map<Key, Value>& values) {
    for (int32_t count = 1 + upTo(4); count > 0; --count) {
      values[made<Key>()] = made<Value>();
    }
  }

  // general, module, enc_module, rfchannels, simulcrypt, modulations
  void one(general::OutputAddress& r) { fill(r.address, r.port); }
  void one(general::LNBConfiguration& r) {
    fill(r.voltage, r.tone, r.diseqcPosition, r.lowBandOscillator, r.highBandOscillator);
  }
  void one(module::ModuleChainAddress& r) { fill(r.slot, r.port); }
  void one(module::ModuleStatus& r) {
    fill(r.model, r.serialNumber, r.firmwareVersion, r.temperature, r.present);
  }
  void one(enc_module::BasicENCSettings& r) {
    fill(r.videoCodec, r.videoResolution, r.videoProfile, r.audioCodec, r.videoBitrate,
         r.audioBitrate, r.serviceName, r.providerName);
  }
  void one(rfchannels::RFChannelInfo& r) {
    fill(r.channelIndex, r.channelName, r.frequency, r.bandwidth);
  }
  void one(simulcrypt::EcmGenerator& r) { fill(r.superCasId, r.host, r.port); }
  void one(simulcrypt::Config& r) { fill(r.enabled, r.networkId, r.ecmGenerators); }
  void one(simulcrypt::Status& r) { fill(r.connected, r.generatorStates); }
  void one(cofdm::COFDMModConfig& r) {
    fill(r.bandwidth, r.constellation, r.guardInterval, r.codeRate, r.transmissionMode);
  }
  void one(qam::QAMModConfig& r) { fill(r.constellation, r.symbolRate, r.spectrumInverted); }

  // headend-wide settings and IP inputs
  void one(HeadendGlobalConfig& r) {
    fill(r.headendId, r.headendType, r.timeZone, r.headendName, r.networkId, r.originalNetworkId,
         r.networkName);
    r.__set_countryCode(made<general::CountryCode::type>());
  }
  void one(InstallerInfo& r) { fill(r.name, r.phone, r.email); }
  void one(PLSItem& r) { fill(r.plsType, r.plsCode); }
  void one(RFInputsScanConfig& r) {
    fill(r.scanMode);
    r.__set_plsItemList(made<std::vector<PLSItem>>());
  }
  void one(IPMux& r) { fill(r.uuid, r.url, r.name, r.services, r.fecColumns, r.fecRows); }
  void one(IPInput& r) {
    r.__set_slot(made<int32_t>());
    r.__set_interfaceId(made<int32_t>());
    fill(r.address, r.netmask, r.muxes);
  }

  // the lineup
  void one(LineupDRMLynkConfig& r) { fill(r.enabled); }
  void one(LineupDRMVSecureConfig& r) { fill(r.enabled, r.keyPeriod); }
  void one(LineupDRMSimulCryptConfig& r) { fill(r.config); }
  void one(LineupDRMProIdiomConfig& r) { fill(r.keySet, r.serviceKeys); }
  void one(LineupDRMConfig& r) {
    fill(r.combinedFlag, r.lynkConfig, r.vsecureConfig, r.simulCryptConfig, r.proIdiomConfig);
  }
  void one(LineupGlobalConfig& r) {
    fill(r.globalFlag, r.drmConfig, r.preferredLanguages, r.eitMode, r.decryptPolicy,
         r.cofdmScanEnabled, r.qamsScanEnabled, r.totEnabled, r.lcnEnabled);
  }
  void one(LineupIPConfig& r) {
    fill(r.interfaceAddress, r.streamProtocol, r.outputVlan, r.mcastRangeStart, r.mcastRangeEnd,
         r.port);
  }
  void one(LineupRFConfig& r) {
    fill(r.modulation, r.carriersPerModule, r.cofdmConfig, r.qamConfig, r.carrierFrequencies,
         r.rfProfileFlag);
  }
  void one(LineupRFEntryConfig& r) {
    fill(r.serviceKey, r.name, r.channelInfo, r.serviceKind, r.lcn, r.outputSid);
  }
  void one(LineupIPEntryConfig& r) {
    fill(r.serviceKey, r.outputAddress, r.name, r.serviceKind, r.outputSelector, r.sapAnnounced);
  }
  void one(LineupSATMux& r) {
    fill(r.frequency, r.satParam2, r.satParam3, r.satParam4, r.satParam5, r.satParam6, r.satParam7);
  }
  void one(LineupTDTMux& r) { fill(r.frequency, r.tdtParam2, r.tdtParam3, r.tdtParam4); }
  void one(LineupCableMux& r) { fill(r.frequency, r.cableParam2, r.cableParam3); }
  void one(DVBInputService& r) {
    fill(r.sid, r.name, r.catalogueFlag, r.inputType, r.serviceType, r.auxFlag, r.lItems,
         r.intItems, r.providerName);
    r.__set_lineupSATMux(made<LineupSATMux>());
    r.__set_lineupTDTMux(made<LineupTDTMux>());
    r.__set_lineupCableMux(made<LineupCableMux>());
    r.__set_ipMuxUUID(made<std::string>());
  }
  void one(DVBInputServiceConfig& r) { fill(r.service, r.configFlag, r.filteredPids); }
  void one(ENCInputServiceConfig& r) { fill(r.address, r.settings, r.label); }
  void one(EmptyInputService& r) { fill(r.serviceType); }
  void one(EmptyInputServiceConfig& r) { fill(r.service); }
  void one(LineupENCConfig& r) { fill(r.moduleSettings); }
  void one(LineupConfig& r) {
    fill(r.globalConfig, r.ipConfig, r.ipEntries, r.rfConfig, r.rfEntries, r.dvbInputServices,
         r.encInputServices, r.encConfig, r.emptyInputServices);
  }
  void one(HeadendConfig& r) {
    fill(r.lineupConfig, r.headendGlobalConfig, r.installerInfo, r.rfInputsScanConfig, r.ipInputs);
  }

  // status
  void one(SATRFInputConfig& r) { fill(r.lnb, r.enabled); }
  void one(SATRFInput& r) { fill(r.config, r.locked, r.carrierToNoise); }
  void one(TDTRFInputConfig& r) { fill(r.antennaVoltage, r.enabled); }
  void one(TDTRFInput& r) { fill(r.config, r.locked, r.carrierToNoise); }
  void one(LineupIPStatus& r) { fill(r.config, r.totalBitrate); }
  void one(LineupRFStatus& r) { fill(r.config, r.carriersInUse); }
  void one(LineupRFEntryStatus& r) { fill(r.config, r.running, r.bitrate); }
  void one(LineupENCStatus& r) { fill(r.config); }
  void one(LineupDRMSimulCryptStatus& r) { fill(r.status); }
  void one(LineupDRMStatus& r) { fill(r.simulCryptStatus); }
  void one(LineupStatus& r) {
    fill(r.globalConfig, r.carrierBitrates, r.ipStatus, r.rfStatus, r.rfEntries, r.dvbInputServices,
         r.encInputServices, r.encStatus, r.drmStatus);
  }
  void one(FanStatus& r) { fill(r.rpm, r.failed); }
  void one(BaseStatus& r) {
    fill(r.serialNumber, r.firmwareVersion, r.temperature, r.uptime, r.alarms, r.fans);
  }
  void one(InModuleStatus& r) { fill(r.lockedTuners); }
  void one(SecModuleStatus& r) { fill(r.camPresent, r.camName); }
  void one(OutModuleStatus& r) { fill(r.carriers, r.outputLevel); }
  void one(EncModuleStatus& r) { fill(r.hdmiPresent); }
  void one(IPModuleStatus& r) { fill(r.linkUp, r.receivedBitrate); }
  void one(HubModuleStatus& r) {
    fill(r.inModules, r.secModules, r.outModules, r.encModules, r.ipModules);
  }
  void one(TVOutStatus& r) { fill(r.tv1LinkUp, r.tv2LinkUp); }
  void one(StreamingNetworkConfig& r) { fill(r.address, r.netmask, r.gateway); }
  void one(StreamingNetworkStatus& r) { fill(r.config, r.linkUp); }
  void one(DeviceManagerConfig& r) { fill(r.enabled, r.host, r.port); }
  void one(DeviceManagerStatus& r) { fill(r.config, r.connected); }
  void one(RFInputsScanStatus& r) { fill(r.config, r.scanning, r.progress); }
  void one(KorServerConnStatus& r) { fill(r.connected, r.server); }
  void one(HeadendStatus& r) {
    fill(r.modules, r.satRFInputs, r.tdtRFInputs, r.ipInputs, r.lineupStatus, r.baseStatus,
         r.hubModuleStatus, r.tvOutStatus, r.headendGlobalConfig, r.installerInfo,
         r.streamingNetworkStatus, r.deviceManagerStatus, r.rfInputsScanStatus,
         r.korServerConnStatus);
  }

  std::mt19937 random_;
};

template <class Record>
Record randomRecord(uint32_t seed) {
  Record record;
  Filler(seed).fill(record);
  return record;
}

}  // namespace

HeadendConfig randomHeadendConfig(uint32_t seed) {
  return randomRecord<HeadendConfig>(seed);
}
HeadendStatus randomHeadendStatus(uint32_t seed) {
  return randomRecord<HeadendStatus>(seed);
}

uint32_t shortConfigSeed() {
  uint32_t shortest = 0;
  for (uint32_t seed = 1; seed < 50; ++seed) {
    if (toJson(randomHeadendConfig(seed)).size() < toJson(randomHeadendConfig(shortest)).size()) {
      shortest = seed;
    }
  }
  return shortest;
}

}  // namespace lineup::test
