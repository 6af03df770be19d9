#include "simulator/initial_state.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "model/namespaces.h"

namespace lineup::simulator {

namespace {

struct TdtInputRow {
  general::RFInputId::type id;
  int32_t antennaVoltage;
  bool enabled;
  int32_t carrierToNoise;
};

constexpr std::array<TdtInputRow, 2> kTdtInputs{{
    {general::RFInputId::TDT1, 24, true, 312},
    {general::RFInputId::TDT2, 0, false, 287},
}};

struct SatInputRow {
  general::RFInputId::type id;
  int32_t voltage;
  bool tone;
  bool enabled;
  int32_t carrierToNoise;
};

constexpr std::array<SatInputRow, 8> kSatInputs{{
    {general::RFInputId::SAT1, 13, false, true, 142},
    {general::RFInputId::SAT2, 18, true, true, 138},
    {general::RFInputId::SAT3, 13, true, false, 121},
    {general::RFInputId::SAT4, 18, false, false, 126},
    {general::RFInputId::SAT5, 18, true, false, 117},
    {general::RFInputId::SAT6, 13, false, false, 119},
    {general::RFInputId::SAT7, 0, false, false, 0},
    {general::RFInputId::SAT8, 0, false, false, 0},
}};

struct IPInputRow {
  const char* key;
  int32_t slot;
  int32_t interfaceId;
  const char* address;
};

constexpr std::array<IPInputRow, 2> kIPInputs{{
    {"7/1", 7, 1, "10.20.7.1"},
    {"7/2", 7, 2, "10.20.7.2"},
}};

// The muxes that carry the catalogue's IP services.
struct IPMuxRow {
  const char* input;
  const char* uuid;
  const char* url;
  const char* name;
};

constexpr std::array<IPMuxRow, 3> kIPMuxes{{
    {"7/1", "6f1c2a9e-3b57-4d08-9a41-c2e8b7d05f13", "udp://239.192.10.1:5000", "House channels"},
    {"7/1", "b84d7e20-91fa-4c6b-8e35-0d6f2c9a7741", "udp://239.192.10.2:5000", "Studio"},
    {"7/2", "2d9057c3-e6a8-4b1f-a7d2-5c3f81e0946b", "rtp://239.192.20.1:5004", ""},
}};

// In kHz, the first channels of the UHF band.
constexpr std::array<int32_t, 6> kCarrierFrequencies{474000, 482000, 490000,
                                                     498000, 506000, 514000};

void addRFInputs(HeadendState& state) {
  for (const TdtInputRow& row : kTdtInputs) {
    hub_module::TDTRFInput& input = state.tdtRFInputs[row.id];
    input.config.antennaVoltage = row.antennaVoltage;
    input.config.enabled = row.enabled;
    input.carrierToNoise = row.carrierToNoise;
  }
  for (const SatInputRow& row : kSatInputs) {
    hub_module::SATRFInput& input = state.satRFInputs[row.id];
    input.config.lnb.voltage = row.voltage;
    input.config.lnb.tone = row.tone;
    input.config.lnb.lowBandOscillator = 9750;  // MHz, of a universal LNB
    input.config.lnb.highBandOscillator = 10600;
    input.config.enabled = row.enabled;
    input.carrierToNoise = row.carrierToNoise;
  }
}

void addIPInputs(hub_module::HeadendConfig& config) {
  for (const IPInputRow& row : kIPInputs) {
    hub_module::IPInput& input = config.ipInputs[row.key];
    input.__set_slot(row.slot);
    input.__set_interfaceId(row.interfaceId);
    input.address = row.address;
    input.netmask = "255.255.255.0";
  }
  for (const IPMuxRow& row : kIPMuxes) {
    hub_module::IPMux& mux = config.ipInputs[row.input].muxes[row.uuid];
    mux.uuid = row.uuid;
    mux.url = row.url;
    mux.name = row.name;
  }
}

void addSettings(hub_module::HeadendConfig& config) {
  hub_module::HeadendGlobalConfig& global = config.headendGlobalConfig;
  global.timeZone = "Europe/Madrid";
  global.__set_countryCode(general::CountryCode::SPAIN);
  global.headendName = "Simulated headend";
  global.networkId = 0x3001;          // of those that terrestrial networks reuse
  global.originalNetworkId = 0xFF01;  // of those for private use
  global.networkName = "House network";

  hub_module::LineupConfig& lineup = config.lineupConfig;
  lineup.globalConfig.preferredLanguages = {"spa", "eng"};
  lineup.ipConfig.interfaceAddress = "10.20.0.1";
  hub_module::LineupRFConfig& rf = lineup.rfConfig;
  // Constellations (64-QAM) and mode (8k) as DVB's delivery system descriptors number them.
  rf.cofdmConfig.bandwidth = 8;
  rf.cofdmConfig.constellation = 2;
  rf.cofdmConfig.transmissionMode = 1;
  rf.qamConfig.constellation = 3;
  rf.qamConfig.symbolRate = 6900000;
  for (std::size_t carrier = 0; carrier < kCarrierFrequencies.size(); ++carrier) {
    rf.carrierFrequencies[static_cast<int32_t>(carrier)] = kCarrierFrequencies[carrier];
  }
}

}  // namespace

HeadendState initialState() {
  HeadendState state;
  addSettings(state.config);
  addIPInputs(state.config);
  addRFInputs(state);
  return state;
}

}  // namespace lineup::simulator
