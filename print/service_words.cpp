#include "print/service_words.h"

#include <string>

#include "model/input_types.h"
#include "print/setting_words.h"

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
  return unknownWord(number);
}

/// Where it is received from.
std::string sourceOf(const hub_module::DVBInputService& service, const HeadendConfig& config) {
  std::string source;
  visitMuxes(service, [&](const InputType& type, auto mux, auto /*setMux*/) {
    const std::string place = muxPlace(service.*mux);
    source += source.empty() ? "" : ", ";
    source += (type.number == kIPInput.number ? muxUrl(config, place) : place) + type.unit;
  });
  return source;
}

ServiceWords noService(LineupEntryKind::type kind, int32_t key) {
  return {kindWord(kind), "no service " + std::to_string(key), "", ""};
}

template <class Services>
ServiceWords wordsUnder(const Services& services, int32_t key, LineupEntryKind::type kind,
                        const HeadendConfig& config) {
  const auto found = services.find(key);
  return found == services.end() ? noService(kind, key) : wordsOf(found->second, config);
}

}  // namespace

std::string kindWord(int32_t kind) {
  switch (kind) {
    case LineupEntryKind::DVB:
      return "DVB";
    case LineupEntryKind::ENC:
      return "ENC";
    case LineupEntryKind::EMPTY:
      return "EMPTY";
    default:
      return unknownWord(kind);
  }
}

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
  return {kindWord(LineupEntryKind::ENC), "slot " + slot + " input " + input, "", "1"};
}

ServiceWords wordsOf(const hub_module::EmptyInputServiceConfig& service,
                     const HeadendConfig& /*config*/) {
  return {kindWord(LineupEntryKind::EMPTY), "", "", std::to_string(service.service.serviceType)};
}

ServiceWords entryWords(const HeadendConfig& config, LineupEntryKind::type kind, int32_t key) {
  const hub_module::LineupConfig& lineup = config.lineupConfig;
  switch (kind) {
    case LineupEntryKind::DVB:
      return wordsUnder(lineup.dvbInputServices, key, kind, config);
    case LineupEntryKind::ENC:
      return wordsUnder(lineup.encInputServices, key, kind, config);
    case LineupEntryKind::EMPTY:
      return wordsUnder(lineup.emptyInputServices, key, kind, config);
  }
  return noService(kind, key);
}

}  // namespace lineup
