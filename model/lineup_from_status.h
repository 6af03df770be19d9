// A lineup out of the status.

#pragma once

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// The lineup that is running, as a configuration (no command needs it): the global, IP and RF
/// settings, the RF entries in order and the DVB and encoder services of `status`; everything else
/// at its defaults.
hub_module::LineupConfig lineupFromStatus(const hub_module::LineupStatus& status);

}  // namespace lineup
