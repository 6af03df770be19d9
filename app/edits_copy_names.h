// What the copies of pending edits are called.

#pragma once

#include <ctime>
#include <string>

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

}  // namespace lineup
