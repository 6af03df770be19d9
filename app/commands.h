// The commands of the prompt. LineupEditor::dispatchCommand() runs them.

#pragma once

#include <string>
#include <vector>

#include "support/line_input.h"

namespace lineup {

/// What a line up to its cursor may become: command words, then what the command table says of
/// their arguments.
std::vector<Possibility> completeCommandLine(const std::string& begun);

}  // namespace lineup
