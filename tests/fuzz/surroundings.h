// What stands around the console's code in the targets that run commands: no controller, a
// catalogue in memory, files in memory, nothing on the screen, and no waiting.
//
// The targets are linked so that connect, getaddrinfo, open, sync, syncfs, sqlite3_open_v2,
// sqlite3_close and sqlite3_progress_handler come here (see CMakeLists.txt); the functions of
// terminal/line_input.h and support/ending_signals.h are replaced.

#pragma once

#include <sqlite3.h>

#include <string>

namespace lineup::fuzz {

/// Silences what the console prints by C++ streams and what the Thrift library reports. To be
/// called once.
void beQuiet();

/// What the functions of terminal/line_input.h deliver from now on, line by line.
void setInput(std::string text);

/// The connection to the catalogue that the console is given whenever it opens one, for filling it.
/// Kept for the length of the process, as opening takes longer than most selects. What the console
/// selects is stopped after twenty thousand steps, and SQLite has 32 MiB of memory: the find
/// commands run any select, whatever it takes.
sqlite3* catalogue();

/// Removes the files that the console made, the only ones that it can open.
void removeFiles();

}  // namespace lineup::fuzz
