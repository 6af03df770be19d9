// The place of a headend on this machine, which sandbox/headend-sandbox gives to a test process.

#pragma once

namespace lineup::test {

/// Where the console looks for the controller and for its catalogue.
inline constexpr int kHeadendPort = 9190;
inline constexpr const char* kCatalogueFolder = "/etc/korvel/conf/ControllerTask";
inline constexpr const char* kCataloguePath =
    "/etc/korvel/conf/ControllerTask/ControllerTask.sqlite";

/// Starts this program anew in a sandbox, with the arguments `argv` of main(); returns in one that
/// is already inside. There the port is free, and the folder exists, is empty and can be written
/// to. Ends the program with status 125 and a line on standard error where that cannot be had.
void enterSandbox(char** argv);

}  // namespace lineup::test
