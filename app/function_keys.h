// What F2 and F3 show while a command line is edited.

#pragma once

#include <string>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// What the next "commit" of `edited` would change: its difference from what runs on the headend,
/// which is fetched, or a line that says that there is none. If it cannot be fetched, that is said
/// as "reset" says it, and nothing is returned. Throws EndedBySignal as the remote calls do.
std::string changesToCommit(const hub_module::HeadendConfig& edited);

/// The two lineups as tables.
std::string lineupTables(const hub_module::HeadendConfig& edited);

}  // namespace lineup
