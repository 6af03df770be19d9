// The names that the user gives to RF inputs.

#pragma once

#include <string>
#include <vector>

#include "general_types.h"
#include "model/namespaces.h"

namespace lineup {

/// "TDT1", "TDT2", "SAT1" to "SAT8"; "UNKNOWN" for every other value, the groups included.
std::string rfInputName(general::RFInputId::type id);

/// Upper-cases `name` in place, byte by byte, and looks it up among the inputs and the groups
/// "TDTALL" and "SATALL". Returns whether it is one; only then `id` is set.
bool parseRFInputName(std::string& name, general::RFInputId::type& id);

/// Every name that parseRFInputName() accepts.
std::vector<std::string> rfInputNames();

}  // namespace lineup
