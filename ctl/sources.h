// The SOURCE of a configuration on the command line.

#pragma once

#include <string>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup::ctl {

/// The SOURCE that is the controller.
inline constexpr const char* kRunning = "running";

/// Whether a SOURCE is that one.
bool isController(const std::string& source);

/// The configuration in a SOURCE: kRunning, a file, or "-" for standard input. Throws Failure.
hub_module::HeadendConfig configIn(const std::string& source);

}  // namespace lineup::ctl
