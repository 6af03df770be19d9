// The words for a service in a line about a lineup, and the fields that they cover.

#pragma once

#include <string>

#include "compare/difference_lines.h"
#include "hub_module_types.h"
#include "model/namespaces.h"
#include "print/service_words.h"

namespace lineup {

/// The words for a service: ""News", SAT 11778 MHz, SID 4101, type 1".
std::string described(const ServiceWords& words, const std::string& name);

/// The fields that the words cover only under a condition: whether they do here.
struct AlsoDescribed {
  bool name;     ///< not if the entry has another name than the service
  bool muxUuid;  ///< not if several muxes have the URL that stands for it
};

/// Copies the fields that the words cover from `service` to `other`, so that a comparison finds the
/// rest.
void copyDescribedFields(hub_module::DVBInputServiceConfig& other,
                         const hub_module::DVBInputServiceConfig& service,
                         const AlsoDescribed& also);
void copyDescribedFields(hub_module::ENCInputServiceConfig& other,
                         const hub_module::ENCInputServiceConfig& service,
                         const AlsoDescribed& also);
void copyDescribedFields(hub_module::EmptyInputServiceConfig& other,
                         const hub_module::EmptyInputServiceConfig& service,
                         const AlsoDescribed& also);

/// ", /filteredPids/0 100" for each field of a new service that its words do not cover and that has
/// not the value that it has in `expected`, by default its default value.
template <class Service>
std::string notDescribed(const Service& service, const AlsoDescribed& also, Service expected = {}) {
  copyDescribedFields(expected, service, also);
  return expected == service ? "" : otherFields(expected, service);
}
std::string notDescribed(const hub_module::DVBInputServiceConfig& service,
                         const AlsoDescribed& also);

}  // namespace lineup
