// The place of a headend on this machine, which sandbox/headend-sandbox gives to a test process.

#pragma once

#include <filesystem>
#include <string>

#include "model/headend_places.h"

namespace lineup::test {

using lineup::kCataloguePath;

inline const std::string kCatalogueFolder = std::filesystem::path(kCataloguePath).parent_path();

/// Starts this program anew in a sandbox, with the arguments `argv` of main(); returns in one that
/// is already inside. There the port is free, and the folder exists, is empty and can be written
/// to. Ends the program with status 125 and a line on standard error where that cannot be had.
void enterSandbox(char** argv);

}  // namespace lineup::test
