#include "compare/lineup_services.h"

#include <string>

#include "model/input_types.h"

namespace lineup {

namespace hub_module = korvel::thrift::hub_module;
using hub_module::HeadendConfig;
using hub_module::LineupEntryKind;

namespace {

std::string nameOfInputType(int32_t number) {
  for (const InputType& type : kInputTypes) {
    if (type.number == number) {
      return type.name;
    }
  }
  return "unknown (" + std::to_string(number) + ")";
}

template <class Mux>
std::string placeOf(const Mux& mux, const HeadendConfig& /*config*/) {
  return std::to_string(mux.frequency);
}

std::string placeOf(const std::string& uuid, const HeadendConfig& config) {
  return muxUrl(config, uuid);
}

/// Where it is received from.
std::string sourceOf(const hub_module::DVBInputService& service, const HeadendConfig& config) {
  std::string source;
  visitMuxes(service, [&](const InputType& type, auto mux, auto /*setMux*/) {
    source += source.empty() ? "" : ", ";
    source += placeOf(service.*mux, config) + type.unit;
  });
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
  return {nameOfInputType(dvb.inputType), sourceOf(dvb, config), std::to_string(dvb.sid),
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
