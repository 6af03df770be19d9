// The commands of lineupctl. Each is defined in the source of its name, "backup" in
// ctl/backups.cpp.

#pragma once

#include <string>
#include <vector>

#include "ctl/arguments.h"
#include "ctl/failure.h"

namespace lineup::ctl {

// Results go to standard output. Each throws Failure.

/// Shows a configuration: tables, JSON, or a lineup as comma-separated values.
Status show(const Arguments& arguments);

/// Shows what differs between two configurations, in words or as a patch (RFC 6902).
Status diff(const Arguments& arguments);

/// Saves the running configuration in a file.
Status save(const Arguments& arguments);

/// Sends a configuration: checks, compares, keeps a copy, sends, reads back and compares.
Status apply(const Arguments& arguments);

/// Keeps the running configuration in a folder.
Status backup(const Arguments& arguments);

/// The command "wait": asks the controller until it answers, or until the time is over.
Status waitForController(const Arguments& arguments);

/// Lists the services of the catalogue whose names hold every word.
Status catalogue(const Arguments& arguments);

/// Runs the command that `words` begin with.
Status runCommand(const std::vector<std::string>& words);

}  // namespace lineup::ctl
