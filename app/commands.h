// The commands of the prompt. LineupEditor::dispatchCommand() runs them.

#pragma once

#include <string>
#include <vector>

#include "support/line_input.h"

namespace lineup {

/// Completes the last word of `begun`, the line up to the cursor: a command word, or an argument as
/// the row of its command says.
std::vector<Possibility> completeCommandLine(const std::string& begun);

}  // namespace lineup
