// What a terminal can do, by its entry in the termcap or terminfo database.

#pragma once

#include <optional>

#include "terminal/line_screen.h"
#include "terminal/terminal_mode.h"

struct editline;  // libedit's EditLine

namespace lineup {

struct TerminalDescription {
  TerminalAbilities abilities{"\x1b[A", "\x1b[K", "\x1b[J", "\x1b[H\x1b[2J", true};
  TerminalSize usualSize{24, 80};  ///< where the terminal does not know its own
  bool sparesLastColumn = false;   ///< nothing is to be written there
  bool canMarkPastes = true;       ///< where a paste begins and ends, if it is asked to
};

/// Describes the terminal of `lib`; none if lines cannot be edited on it. One that is not `known`
/// to the database is taken for an xterm, as nearly all are. To be called before `lib` is given
/// another screen.
std::optional<TerminalDescription> describeTerminal(editline* lib, bool known);

}  // namespace lineup
