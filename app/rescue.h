// What happens to staged edits when the program is about to end abnormally.

#pragma once

#include "model/lineup_editor.h"

namespace lineup {

/// If changes are pending, writes the configuration to a new file of mode 0600 in $TMPDIR, or in
/// /tmp if that is unset, cannot be written to or has blanks or control characters in its path,
/// which the prompt's "restore" could not name. Says on standard error where the file is and how to
/// bring it back, or that it could not be written; but does not wait for long until that is read.
/// Never throws.
void rescuePendingChanges(const LineupEditor& editor) noexcept;

}  // namespace lineup
