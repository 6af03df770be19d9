// What differs between the lineups of two configurations and between the services in them.

#pragma once

#include <string>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// The lines of configDifference() on entries and services.
std::string lineupDifferences(const hub_module::HeadendConfig& from,
                              const hub_module::HeadendConfig& to);

}  // namespace lineup
