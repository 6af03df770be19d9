// Waiting for the controller.

#pragma once

#include "ctl/arguments.h"
#include "ctl/failure.h"

namespace lineup::ctl {

/// The command "wait": asks the controller until it answers, or until the time is over.
Status waitForController(const Arguments& arguments);

}  // namespace lineup::ctl
