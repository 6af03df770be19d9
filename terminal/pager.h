// Showing text that is longer than the screen.

#pragma once

#include <string>

namespace lineup {

/// Shows `text` on the terminal in the user's pager: $PAGER, or "less -FRX", or else "more".
/// Returns when it has ended, in whatever mode it leaves the terminal. Keys that interrupt or quit
/// are the pager's. Ctrl-Z stops $PAGER and this program; it ends "less" and "more", and SIGTSTP,
/// which the caller has blocked, is then still pending. Throws EndedBySignal if another signal is
/// caught meanwhile, or a SIGINT or SIGQUIT that a process has sent. Returns false if no pager
/// could be run.
bool showInPager(const std::string& text);

}  // namespace lineup
