// The headend that the simulator begins with when it has no state file yet.

#pragma once

#include "state_types.h"

namespace lineup::simulator {

/// A headend as an installer finds it: set up, with two terrestrial, eight satellite and two IP
/// inputs, and with an empty lineup.
HeadendState initialState();

}  // namespace lineup::simulator
