// The services that lineups name, as people read them.

#pragma once

#include <cstdint>
#include <string>

#include "hub_module_types.h"

namespace lineup {

/// A service, or a slot reserved for one, in words. A text is empty where there is nothing to say.
struct ServiceWords {
  std::string kind;         ///< "SAT", "TDT", "Cable", "IP", "ENC", "EMPTY"
  std::string source;       ///< "11778 MHz", "474000 kHz", a URL, "slot 5 input 2"
  std::string sid;          ///< DVB service id
  std::string serviceType;  ///< DVB service_type
};

ServiceWords wordsOf(const korvel::thrift::hub_module::DVBInputServiceConfig& service,
                     const korvel::thrift::hub_module::HeadendConfig& config);
ServiceWords wordsOf(const korvel::thrift::hub_module::ENCInputServiceConfig& service,
                     const korvel::thrift::hub_module::HeadendConfig& config);
ServiceWords wordsOf(const korvel::thrift::hub_module::EmptyInputServiceConfig& service,
                     const korvel::thrift::hub_module::HeadendConfig& config);

/// The service of `config` that an entry of this kind and key names. If there is none, `source`
/// says so.
ServiceWords entryWords(const korvel::thrift::hub_module::HeadendConfig& config,
                        korvel::thrift::hub_module::LineupEntryKind::type kind, int32_t key);

/// The URL of the IP mux, or its UUID if no IP input has it.
std::string muxUrl(const korvel::thrift::hub_module::HeadendConfig& config,
                   const std::string& uuid);

}  // namespace lineup
