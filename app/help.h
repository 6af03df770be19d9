// The text of the command "help".

#pragma once

namespace lineup {

/// Writes the list of commands to standard output.
void printHelp();

}  // namespace lineup
