// The SOURCE of a configuration on the command line.

#pragma once

#include <string>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup::ctl {

/// Whether a SOURCE is the controller.
bool isController(const std::string& source);

/// The configuration in a SOURCE: "running", a file, or "-" for standard input. Throws Failure.
hub_module::HeadendConfig configIn(const std::string& source);

}  // namespace lineup::ctl
