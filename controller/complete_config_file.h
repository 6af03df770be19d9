// Configuration files that are checked for completeness.

#pragma once

#include <string>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// The configuration in the file `path`, "-" for standard input. Throws std::runtime_error, with
/// the reason alone, unless the file holds exactly one configuration: every field that a writer
/// writes, none that is unknown or given twice, and nothing but white space after it.
hub_module::HeadendConfig readCompleteConfigFile(const std::string& path);

}  // namespace lineup
