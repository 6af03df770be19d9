// The files and the output of lineupctl.

#pragma once

#include <string>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup::ctl {

/// What messages call a file: "standard input" for "-".
std::string fileName(const std::string& path);

// Each throws Failure, with the file in its message.

/// All that a file holds, "-" for standard input.
std::string textInFile(const std::string& path);

/// The configuration in a file, "-" for standard input.
hub_module::HeadendConfig configInFile(const std::string& path);

/// Puts a file at `path`, in place of the one that is there, with the ending signals blocked.
void writeFile(const std::string& path, const std::string& content);

/// Writes all of `text` on standard output.
void print(const std::string& text);

}  // namespace lineup::ctl
