#include "compare/lineup_services.h"

#include <iterator>

namespace lineup {

namespace hub_module = korvel::thrift::hub_module;
using hub_module::HeadendConfig;
using hub_module::LineupEntryKind;

namespace {

/// DVBInputService.inputType
std::string inputKind(int32_t inputType) {
  static constexpr const char* kNames[] = {nullptr, "TDT", "SAT", "Cable", "IP"};
  const bool isKnown = inputType > 0 && inputType < static_cast<int32_t>(std::size(kNames));
  return isKnown ? kNames[inputType] : "unknown (" + std::to_string(inputType) + ")";
}

/// Where it is received from. A service has one such place, but a record can name several.
std::string sourceOf(const hub_module::DVBInputService& service, const HeadendConfig& config) {
  std::string source;
  const auto add = [&](const std::string& place, const char* unit) {
    source += source.empty() ? "" : ", ";
    source += place;
    source += unit;
  };
  if (service.__isset.lineupSATMux) {
    add(std::to_string(service.lineupSATMux.frequency), " MHz");
  }
  if (service.__isset.lineupTDTMux) {
    add(std::to_string(service.lineupTDTMux.frequency), " kHz");
  }
  if (service.__isset.lineupCableMux) {
    add(std::to_string(service.lineupCableMux.frequency), " kHz");
  }
  if (service.__isset.ipMuxUUID) {
    add(muxUrl(config, service.ipMuxUUID), "");
  }
  return source;
}

template <class Services>
ServiceWords wordsUnder(const Services& services, int32_t key, const char* kind,
                        const HeadendConfig& config) {
  const auto found = services.find(key);
  if (found == services.end()) {
    return {kind, "no service " + std::to_string(key), "", ""};
  }
  return wordsOf(found->second, config);
}

}  // namespace

std::string muxUrl(const HeadendConfig& config, const std::string& uuid) {
  for (const auto& [name, input] : config.ipInputs) {
    const auto mux = input.muxes.find(uuid);
    if (mux != input.muxes.end()) {
      return mux->second.url;
    }
  }
  return uuid;
}

ServiceWords wordsOf(const hub_module::DVBInputServiceConfig& service,
                     const HeadendConfig& config) {
  const hub_module::DVBInputService& dvb = service.service;
  return {inputKind(dvb.inputType), sourceOf(dvb, config), std::to_string(dvb.sid),
          std::to_string(dvb.serviceType)};
}

ServiceWords wordsOf(const hub_module::ENCInputServiceConfig& service,
                     const HeadendConfig& /*config*/) {
  const std::string slot = std::to_string(service.address.slot);
  const std::string input = std::to_string(service.address.port);
  return {"ENC", "slot " + slot + " input " + input, "", "1"};
}

ServiceWords wordsOf(const hub_module::EmptyInputServiceConfig& service,
                     const HeadendConfig& /*config*/) {
  return {"EMPTY", "", "", std::to_string(service.service.serviceType)};
}

ServiceWords entryWords(const HeadendConfig& config, LineupEntryKind::type kind, int32_t key) {
  const hub_module::LineupConfig& lineup = config.lineupConfig;
  switch (kind) {
    case LineupEntryKind::DVB:
      return wordsUnder(lineup.dvbInputServices, key, "DVB", config);
    case LineupEntryKind::ENC:
      return wordsUnder(lineup.encInputServices, key, "ENC", config);
    case LineupEntryKind::EMPTY:
      return wordsUnder(lineup.emptyInputServices, key, "EMPTY", config);
  }
  return {"unknown (" + std::to_string(kind) + ")", "no service " + std::to_string(key), "", ""};
}

}  // namespace lineup
