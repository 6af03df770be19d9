// What a line on a lineup says of a service, so that other lines need not.

#pragma once

#include <string>

#include "compare/lineup_services.h"
#include "hub_module_types.h"

namespace lineup {

/// The words for a service: ""News", SAT 11778 MHz, SID 4101, type 1".
std::string described(const ServiceWords& words, const std::string& name);

/// Which fields the words say that they do not always say.
struct AlsoDescribed {
  bool name;     ///< not if the entry has another name than the service
  bool muxUuid;  ///< not if several muxes have the URL that stands for it
};

/// Gives `other` the values of `service` that its words say. What then differs is left to be said.
void takeDescribed(korvel::thrift::hub_module::DVBInputServiceConfig& other,
                   const korvel::thrift::hub_module::DVBInputServiceConfig& service,
                   const AlsoDescribed& also);
void takeDescribed(korvel::thrift::hub_module::ENCInputServiceConfig& other,
                   const korvel::thrift::hub_module::ENCInputServiceConfig& service,
                   const AlsoDescribed& also);
void takeDescribed(korvel::thrift::hub_module::EmptyInputServiceConfig& other,
                   const korvel::thrift::hub_module::EmptyInputServiceConfig& service,
                   const AlsoDescribed& also);

/// ", /filteredPids/0 100" for each field of a new service that its words do not say and that is
/// not as the record has it by default.
std::string notDescribed(const korvel::thrift::hub_module::DVBInputServiceConfig& service,
                         const AlsoDescribed& also);
std::string notDescribed(const korvel::thrift::hub_module::ENCInputServiceConfig& service,
                         const AlsoDescribed& also);
std::string notDescribed(const korvel::thrift::hub_module::EmptyInputServiceConfig& service,
                         const AlsoDescribed& also);

}  // namespace lineup
