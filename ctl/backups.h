// A folder of earlier configurations, each in a file of its own.

#pragma once

#include <cstddef>
#include <string>

namespace lineup::ctl {

/// The newest file of such a folder.
struct KeptCopy {
  std::string path;
  bool isNew;  ///< false where it held the same already
};

/// Adds a file of this content to `folder`, named by the date and time,
/// "lineup-20261121T221500.123Z.json", unless the newest of such files there holds just that; then
/// removes the oldest of them beyond `keep`, none if that is 0. Only regular files count. Where the
/// clock is behind the newest file, the new one's name is the next one possible, so that names sort
/// in the order in which the files were written. Throws Failure.
KeptCopy keepCopy(const std::string& folder, const std::string& content, std::size_t keep);

}  // namespace lineup::ctl
