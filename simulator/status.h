// The status that the simulated headend reports.

#pragma once

#include <chrono>
#include <set>

#include "state_types.h"

namespace lineup::simulator {

/// A healthy headend, `uptime` after its start, that runs the configuration of `state`. The RF
/// inputs `absentInputs` are missing from it.
korvel::thrift::hub_module::HeadendStatus statusOf(
    const HeadendState& state,
    const std::set<korvel::thrift::general::RFInputId::type>& absentInputs,
    std::chrono::seconds uptime);

}  // namespace lineup::simulator
