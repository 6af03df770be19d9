// The copies of pending edits that earlier consoles have left.

#pragma once

#include <string>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// Prints on standard error the copies left by consoles that are no longer running, and how to
/// restore them. Removes those announced for the first time more than 30 days ago, unfinished
/// copies as old, and copies of `running`, which hold no edits; it is what the controller runs, or
/// null if that is not known.
void announceEarlierCopies(const hub_module::HeadendConfig* running) noexcept;

/// The command that restores the copy `path`, in quotes.
std::string restoreCommand(const std::string& path);

/// Removes the file `path` if it is such a copy.
void removeEarlierCopy(const std::string& path);

}  // namespace lineup
