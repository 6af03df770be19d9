// What the copies of pending edits are called.

#pragma once

#include <ctime>
#include <string>

#include "support/state_folder.h"

namespace lineup {

/// What ends the name of a copy while it is written. Two, as a second writer may wait for the
/// first.
inline constexpr const char* kUnfinishedSuffixes[] = {".new", ".newer"};

/// "lineup-console-", `time` in local time, the process number and ".json".
std::string newCopyName(std::time_t time);

/// Whether newCopyName() makes such names. Nothing else in a shared folder is ours to touch.
bool isCopyName(const std::string& name);

/// The name without kUnfinishedSuffixes.
std::string withoutSuffix(const std::string& name);

/// `time`, in local time, as strftime() formats it, up to 31 bytes.
std::string timeText(const char* format, std::time_t time);

std::string pathIn(const Folder& folder, const std::string& name);

/// The command that restores the file `path`, in quotes.
std::string restoreCommand(const std::string& path);

}  // namespace lineup
