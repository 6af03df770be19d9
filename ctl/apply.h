// Sending a configuration.

#pragma once

#include "ctl/arguments.h"
#include "ctl/failure.h"

namespace lineup::ctl {

/// The command "apply": checks, compares, keeps, sends, reads back and compares.
Status apply(const Arguments& arguments);

}  // namespace lineup::ctl
