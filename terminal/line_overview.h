// Showing an overview below the line that is edited.

#pragma once

#include <functional>
#include <string>

#include "terminal/line_display.h"
#include "terminal/terminal_input.h"

namespace lineup {

/// Shows what `overview` returns below the line, in the user's pager if the screen has no room for
/// both. If it `mayWait`, the terminal is as it is while a command runs: its keys interrupt and
/// stop the program, and it shows what is typed ahead. An interrupt ends `overview` alone; throws
/// EndedBySignal if another signal is caught. Pastes are not marked meanwhile, nor after. A null
/// `overview` rings the bell.
void showOverview(const std::function<std::string()>& overview, bool mayWait, LineDisplay& display,
                  TerminalInput& input);

}  // namespace lineup
