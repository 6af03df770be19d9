// The copies of pending edits that earlier consoles have left.

#pragma once

#include <string>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// Prints on standard error the copies left by consoles that are no longer running, and how to
/// restore them. Removes those first announced more than 30 days ago, unfinished ones last written
/// more than 30 days ago, and those that hold just `running` and so no edits. `running` is what the
/// controller runs, or null if that is not known.
void announceEarlierCopies(const hub_module::HeadendConfig* running) noexcept;

/// The command that restores the copy `path`, in quotes.
std::string restoreCommand(const std::string& path);

/// Removes the file `path` if it is such a copy.
void removeEarlierCopy(const std::string& path);

}  // namespace lineup
