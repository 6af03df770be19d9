#include "print/service_words.h"

#include <string>

#include "model/input_types.h"
#include "model/services.h"
#include "print/setting_words.h"

namespace lineup {

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

}  // namespace

std::string kindWord(int32_t kind) {
  const auto found = hub_module::_LineupEntryKind_VALUES_TO_NAMES.find(kind);
  return found == hub_module::_LineupEntryKind_VALUES_TO_NAMES.end() ? unknownWord(kind)
                                                                     : found->second;
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
          std::to_string(serviceType(service))};
}

ServiceWords wordsOf(const hub_module::ENCInputServiceConfig& service,
                     const HeadendConfig& /*config*/) {
  const std::string slot = std::to_string(service.address.slot);
  const std::string input = std::to_string(service.address.port);
  return {kindWord(LineupEntryKind::ENC), "slot " + slot + " input " + input, "",
          std::to_string(serviceType(service))};
}

ServiceWords wordsOf(const hub_module::EmptyInputServiceConfig& service,
                     const HeadendConfig& /*config*/) {
  return {kindWord(LineupEntryKind::EMPTY), "", "", std::to_string(serviceType(service))};
}

ServiceWords entryWords(const HeadendConfig& config, LineupEntryKind::type kind, int32_t key) {
  ServiceWords words;
  const bool isThere = visitService(config.lineupConfig, kind, key,
                                    [&](const auto& service) { words = wordsOf(service, config); });
  if (!isThere) {
    words = {kindWord(kind), "no service " + std::to_string(key), "", ""};
  }
  return words;
}

}  // namespace lineup
