// Showing text that is longer than the screen.

#pragma once

#include <string>

namespace lineup {

/// Has the user's pager show `text` on the terminal: $PAGER, or "less -FRX", or else "more".
/// Returns when it has ended, in whatever mode it leaves the terminal. Keys that interrupt or quit
/// are the pager's. One that stops stops $PAGER and this program; "less" and "more" it ends, and
/// SIGTSTP, which the caller holds back, is then still to be acted on. Throws EndedBySignal if
/// another signal is caught meanwhile, or a SIGINT or SIGQUIT that a process has sent. Returns
/// false if no pager could be run.
bool showInPager(const std::string& text);

}  // namespace lineup
