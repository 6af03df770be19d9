// What differs between the inputs of two configurations.

#pragma once

#include <string>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// The lines of configDifference() on what "addipmux", "addpls" and "rmpls" change: the muxes of
/// the IP inputs and the items of the satellite scan's PLS list.
std::string inputDifferences(const hub_module::HeadendConfig& from,
                             const hub_module::HeadendConfig& to);

}  // namespace lineup
