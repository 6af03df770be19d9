// Where the console keeps what outlives a run.

#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <vector>

#include "support/descriptor.h"

namespace lineup {

/// A folder that is held open, so that its files are reached whatever becomes of its name.
struct Folder {
  std::string path;  ///< absolute
  Descriptor descriptor;
};

enum class IfMissing { Leave, Create };

/// The user's own folder: $XDG_STATE_HOME/lineup-console or, where that variable is not set to an
/// absolute path, ~/.local/state/lineup-console. It is not a symbolic link, belongs to the user and
/// has mode 0700, to which it is set if need be. Returns nothing if there is no such folder.
std::optional<Folder> openStateFolder(IfMissing ifMissing);

/// The folders in which a file can be left for later, the best first: the state folder, $TMPDIR and
/// /tmp, as far as they can be opened and a command can name them: no blank, no control character,
/// and UTF-8. The last two are shared with others.
std::vector<Folder> openFoldersForFiles(IfMissing ifMissing);

/// The path of `name` in the folder `folder`.
std::string pathIn(const std::string& folder, const std::string& name);

/// Opens the file `name`, with the flags `access` of open(), if it is a regular file of the user
/// and no link, and sets `status` to its status. One that O_CREAT creates is closed to others.
Descriptor openOwnFile(const Folder& folder, const std::string& name, int access,
                       struct stat& status);

/// Creates the file `name` for writing, closed to others. Not open, with the reason in errno, if
/// that fails, as it does where the name is taken.
Descriptor createFile(const Folder& folder, const std::string& name);

}  // namespace lineup
