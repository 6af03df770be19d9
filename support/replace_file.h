// Files that are written as a whole.

#pragma once

#include <string>
#include <string_view>

namespace lineup {

/// Puts a file of this content at `path`, readable and writable by its owner alone, in place of the
/// one that may be there: whatever happens, the file at `path` is the old one or the new one. It is
/// written to a new file ".lineup-XXXXXX" beside it, synced, and renamed; a symbolic link is
/// followed. Throws std::runtime_error, with the reason alone, if it fails: the old file is as it
/// was then, and nothing is left beside it.
void replaceFile(const std::string& path, std::string_view content);

}  // namespace lineup
