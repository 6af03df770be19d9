// The names of services.

#pragma once

#include <string>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// The name that a new entry gets from the service that it names: the DVB service's own, "ENC
/// SLOT/INPUT" for an encoder's input, "EMPTY SLOT" for a reservation.
std::string serviceName(const hub_module::DVBInputServiceConfig& service);
std::string serviceName(const hub_module::ENCInputServiceConfig& service);
std::string serviceName(const hub_module::EmptyInputServiceConfig& service);

}  // namespace lineup
