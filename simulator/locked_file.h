// Files that are replaced whole, so that a crash leaves the old one or the new one, and are locked
// while they are used.

#pragma once

#include <string>

#include "support/descriptor.h"

namespace lineup::simulator {

/// Whether there is a file at `path`; false too if stat() fails. Throws
/// std::runtime_error naming the path if it is not a regular file but a folder or a device.
bool fileExists(const std::string& path);

/// Puts a file with `contents` at `path`, making the folders above it, by way of a temporary file
/// beside it. It is on disk when the call returns. Returns the file, still open and with an
/// exclusive flock() taken before it had its name. Throws std::runtime_error naming the path;
/// an existing file is then unchanged.
Descriptor replaceLocked(const std::string& path, const std::string& contents);

}  // namespace lineup::simulator
