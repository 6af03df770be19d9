#include "simulator/status.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace lineup::simulator {

using module::ModuleSlot;

namespace {

struct ModuleRow {
  ModuleSlot::type slot;
  const char* model;
  const char* serialNumber;
  int32_t temperature;
};

constexpr std::array<ModuleRow, 9> kModules{{
    {ModuleSlot::HUB, "HUB", "H0040817", 41},
    {ModuleSlot::SLOT1, "IN-TDT2", "T0110342", 38},
    {ModuleSlot::SLOT2, "IN-SAT4", "S0203117", 44},
    {ModuleSlot::SLOT3, "IN-SAT4", "S0203118", 45},
    {ModuleSlot::SLOT4, "SEC-2", "C0071220", 36},
    {ModuleSlot::SLOT5, "OUT-6", "O0310098", 47},
    {ModuleSlot::SLOT6, "OUT-6", "O0310099", 46},
    {ModuleSlot::SLOT7, "IP-2", "P0022406", 39},
    {ModuleSlot::SLOT8, "ENC-4", "E0150033", 43},
}};

constexpr int32_t kServiceBitrate = 4500000;  // bits a second

/// Copies the inputs that are present; one that is switched on has found its signal.
template <class Inputs>
Inputs presentInputs(const Inputs& inputs, const std::set<general::RFInputId::type>& absent) {
  Inputs present;
  for (const auto& [id, input] : inputs) {
    if (absent.count(id) != 0) {
      continue;
    }
    auto& copy = present[id];
    copy = input;
    copy.locked = input.config.enabled && input.carrierToNoise > 0;
  }
  return present;
}

template <class Inputs>
int32_t lockedCount(const Inputs& inputs) {
  int32_t count = 0;
  for (const auto& [id, input] : inputs) {
    count += input.locked ? 1 : 0;
  }
  return count;
}

hub_module::LineupStatus lineupStatus(const hub_module::LineupConfig& config) {
  hub_module::LineupStatus status;
  status.globalConfig = config.globalConfig;
  status.ipStatus.config = config.ipConfig;
  status.ipStatus.totalBitrate =
      static_cast<int32_t>(config.ipEntries.size()) * (kServiceBitrate / 1000);
  status.rfStatus.config = config.rfConfig;
  status.rfStatus.carriersInUse = static_cast<int32_t>(config.rfConfig.carrierFrequencies.size());
  for (const auto& [carrier, frequency] : config.rfConfig.carrierFrequencies) {
    status.carrierBitrates[carrier] = 0;
  }
  status.rfEntries.reserve(config.rfEntries.size());
  for (const hub_module::LineupRFEntryConfig& entry : config.rfEntries) {
    hub_module::LineupRFEntryStatus entryStatus;
    entryStatus.config = entry;
    entryStatus.running = entry.serviceKind != hub_module::LineupEntryKind::EMPTY;
    entryStatus.bitrate = entryStatus.running ? kServiceBitrate : 0;
    status.rfEntries.push_back(entryStatus);
  }
  status.dvbInputServices = config.dvbInputServices;
  status.encInputServices = config.encInputServices;
  status.encStatus.config = config.encConfig;
  status.drmStatus.simulCryptStatus.status.connected =
      config.globalConfig.drmConfig.simulCryptConfig.config.enabled;
  return status;
}

void addModules(hub_module::HeadendStatus& status) {
  for (const ModuleRow& row : kModules) {
    auto& module = status.modules[row.slot];
    module.model = row.model;
    module.serialNumber = row.serialNumber;
    module.firmwareVersion = "4.2.0";
    module.temperature = row.temperature;
    module.present = true;
  }
  hub_module::HubModuleStatus& hub = status.hubModuleStatus;
  hub.inModules[ModuleSlot::SLOT1].lockedTuners = lockedCount(status.tdtRFInputs);
  const int32_t lockedSat = lockedCount(status.satRFInputs);
  hub.inModules[ModuleSlot::SLOT2].lockedTuners = std::min(lockedSat, 4);
  hub.inModules[ModuleSlot::SLOT3].lockedTuners = lockedSat - std::min(lockedSat, 4);
  hub.secModules[ModuleSlot::SLOT4].camPresent = false;
  for (const ModuleSlot::type slot : {ModuleSlot::SLOT5, ModuleSlot::SLOT6}) {
    hub.outModules[slot].carriers =
        status.lineupStatus.rfStatus.config.carriersPerModule == 0 ? 4 : 6;
    hub.outModules[slot].outputLevel = 850;
  }
  hub.ipModules[ModuleSlot::SLOT7].linkUp = true;
  hub.encModules[ModuleSlot::SLOT8].hdmiPresent = {true, false, false, false};
}

}  // namespace

hub_module::HeadendStatus statusOf(const HeadendState& state,
                                   const std::set<general::RFInputId::type>& absentInputs,
                                   std::chrono::seconds uptime) {
  const hub_module::HeadendConfig& config = state.config;
  hub_module::HeadendStatus status;
  status.satRFInputs = presentInputs(state.satRFInputs, absentInputs);
  status.tdtRFInputs = presentInputs(state.tdtRFInputs, absentInputs);
  status.ipInputs = config.ipInputs;
  status.lineupStatus = lineupStatus(config.lineupConfig);
  addModules(status);
  status.baseStatus.serialNumber = "B0012345";
  status.baseStatus.firmwareVersion = "4.2.0";
  status.baseStatus.temperature = 40;
  status.baseStatus.uptime = uptime.count();
  status.baseStatus.fans.resize(2);
  for (hub_module::FanStatus& fan : status.baseStatus.fans) {
    fan.rpm = 2400;
  }
  status.tvOutStatus.tv1LinkUp = true;
  status.tvOutStatus.tv2LinkUp = true;
  status.headendGlobalConfig = config.headendGlobalConfig;
  status.installerInfo = config.installerInfo;
  status.streamingNetworkStatus.config.address = config.lineupConfig.ipConfig.interfaceAddress;
  status.streamingNetworkStatus.config.netmask = "255.255.255.0";
  status.streamingNetworkStatus.config.gateway = "10.20.0.254";
  status.streamingNetworkStatus.linkUp = true;
  status.rfInputsScanStatus.config = config.rfInputsScanConfig;
  status.rfInputsScanStatus.progress = 100;
  return status;
}

}  // namespace lineup::simulator
