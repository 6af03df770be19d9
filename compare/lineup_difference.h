// What differs between the lineups of two configurations and between the services in them.

#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "hub_module_types.h"

namespace lineup {

/// The lines of configDifference() on entries and services.
std::string lineupDifferences(const korvel::thrift::hub_module::HeadendConfig& from,
                              const korvel::thrift::hub_module::HeadendConfig& to);

/// The line that says what differs at `place`: "PLACE: 1 -> 2", "PLACE: added 2" or
/// "PLACE: removed 1". Null stands for nothing.
std::string differenceLine(const std::string& place, const nlohmann::json* before,
                           const nlohmann::json* now);

}  // namespace lineup
