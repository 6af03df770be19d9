// The commands of lineupctl.

#pragma once

#include <string>
#include <vector>

#include "ctl/failure.h"

namespace lineup::ctl {

/// Runs the command that `words` begin with; results go to standard output. Throws Failure.
Status runCommand(const std::vector<std::string>& words);

}  // namespace lineup::ctl
