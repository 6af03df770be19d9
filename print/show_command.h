// The command "show".

#pragma once

#include <string>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// Every field of `config`, as LineupEditor::showLineup() prints it: in the layout of the Thrift
/// debug protocol, which shortens strings of more than 256 bytes to their first 16.
std::string configDebugString(const hub_module::HeadendConfig& config);

}  // namespace lineup
