// Messages on standard output.

#pragma once

#include <string>

namespace lineup::simulator {

/// Puts the time in front of each line from now on. Call it while there is one thread.
void stampLines();

/// Prints the line and flushes it.
void say(const std::string& line);

}  // namespace lineup::simulator
