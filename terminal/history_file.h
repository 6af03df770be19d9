// The lines that were entered in consoles before, in the file "history" of the state folder.

#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace lineup {

// The file is the user's own and closed to others; one that is a link, or somebody else's, is
// neither read nor written. There is none where LINEUP_HISTORY is set and empty. Nothing is said,
// and nothing but std::bad_alloc thrown: what cannot be read or written is left out. So is what is
// before the last 64 MiB of the file.

/// The last lines of the file, at most `most`, the oldest first.
std::vector<std::string> readHistoryFile(std::size_t most);

/// Adds `line`, which has no line feed, after those that any console has added meanwhile, and
/// leaves out the oldest beyond `most` lines.
void appendToHistoryFile(const std::string& line, std::size_t most);

}  // namespace lineup
