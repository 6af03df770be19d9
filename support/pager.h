// Showing text that is longer than the screen.

#pragma once

#include <string>

/// Has the user's pager show `text` on the terminal: $PAGER, or "less -FRX", or else "more".
/// Returns when it has ended, in whatever mode it leaves the terminal. Keys that interrupt are the
/// pager's; one that stops stops both. Throws EndedBySignal if another signal is caught meanwhile.
/// Returns false if no pager could be run.
bool showInPager(const std::string& text);
