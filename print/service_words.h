// The services that lineups refer to, as people read them.

#pragma once

#include <cstdint>
#include <string>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// A service, or a slot reserved for one, in words. A text is empty where there is nothing to say.
struct ServiceWords {
  std::string kind;         ///< "SAT", "TDT", "Cable", "IP", "ENC", "EMPTY"
  std::string source;       ///< "11778 MHz", "474000 kHz", a URL, "slot 5 input 2"
  std::string sid;          ///< DVB service id
  std::string serviceType;  ///< DVB service_type
};

/// The word for a LineupEntryKind: "DVB", "ENC", "EMPTY", or "unknown (N)".
std::string kindWord(int32_t kind);

/// The frequency of a mux, or the UUID of an IP mux.
template <class Mux>
std::string muxPlace(const Mux& mux) {
  return std::to_string(mux.frequency);
}
inline std::string muxPlace(const std::string& uuid) {
  return uuid;
}

ServiceWords wordsOf(const hub_module::DVBInputServiceConfig& service,
                     const hub_module::HeadendConfig& config);
ServiceWords wordsOf(const hub_module::ENCInputServiceConfig& service,
                     const hub_module::HeadendConfig& config);
ServiceWords wordsOf(const hub_module::EmptyInputServiceConfig& service,
                     const hub_module::HeadendConfig& config);

/// The service of `config` that an entry of this kind and key refers to. If there is none, `source`
/// says so.
ServiceWords entryWords(const hub_module::HeadendConfig& config,
                        hub_module::LineupEntryKind::type kind, int32_t key);

/// The URL of the IP mux, or its UUID if no IP input has it.
std::string muxUrl(const hub_module::HeadendConfig& config, const std::string& uuid);

}  // namespace lineup
