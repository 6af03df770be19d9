// The status that the simulated headend reports.

#pragma once

#include <chrono>
#include <set>

#include "model/namespaces.h"
#include "state_types.h"

namespace lineup::simulator {

/// A healthy headend, `uptime` after its start, that runs the configuration of `state`. The RF
/// inputs `absentInputs` are missing from it.
hub_module::HeadendStatus statusOf(const HeadendState& state,
                                   const std::set<general::RFInputId::type>& absentInputs,
                                   std::chrono::seconds uptime);

}  // namespace lineup::simulator
