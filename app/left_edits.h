// The pending edits that earlier consoles left, in copies.

#pragma once

#include <string>

#include "hub_module_types.h"

namespace lineup {

/// Says on standard error which copies consoles have left that do not run any more, and how to
/// bring them back. Removes those announced for the first time more than 30 days ago, unfinished
/// copies as old, and copies of `running`, which hold no edits; it is what the controller runs, or
/// null if that is not known.
void announceLeftEdits(const korvel::thrift::hub_module::HeadendConfig* running) noexcept;

/// Removes the file `path` if it is such a copy.
void removeLeftEdits(const std::string& path);

}  // namespace lineup
