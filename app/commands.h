// The commands of the prompt. LineupEditor::dispatchCommand() runs them.

#pragma once

#include <string>
#include <vector>

#include "model/lineup_editor.h"
#include "terminal/line_input.h"

namespace lineup {

/// Completes the last word of `begun`, the line up to the cursor: a command word, or an argument as
/// the row of its command says, in a console that edits `config`.
std::vector<Candidate> completeCommandLine(const std::string& begun,
                                           const hub_module::HeadendConfig& config);

}  // namespace lineup
