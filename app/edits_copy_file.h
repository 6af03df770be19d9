// The file of a copy of edits: under a temporary name while it is written, then under its own.

#pragma once

#include <optional>
#include <string>

#include "hub_module_types.h"
#include "model/namespaces.h"
#include "support/descriptor.h"
#include "support/state_folder.h"

namespace lineup {

/// A file of a copy, readable by the user alone and locked (flock) as long as it is open here. A
/// default-constructed one stands for no file.
struct EditsCopyFile {
  const Folder* folder = nullptr;
  std::string name;
  std::string temporaryName;  ///< while it is written
  Descriptor descriptor{};    ///< open as long as the file is there; keeps it locked
  std::optional<hub_module::HeadendConfig> content{};  ///< what it holds, or will

  /// Creates a temporary file for a name that no other has. Nothing if that fails.
  static std::optional<EditsCopyFile> createNew(const Folder& folder);

  /// Creates a temporary file that is to replace this one, which may be being written. Nothing if
  /// that fails.
  std::optional<EditsCopyFile> createNext() const;

  /// Fills the file and has the disk take it. Throws std::exception.
  void fill(const hub_module::HeadendConfig& config) const;

  /// Throws std::system_error.
  void renameIntoPlace() const;

  /// Returns false if there is no such name any more, as after renameIntoPlace().
  bool unlinkTemporary() const;

  /// Whether the file still has a name: nobody has removed it.
  bool isThere() const;

  /// Unlinks the file and forgets it. If it is gone, its name may be another's, and stays.
  void remove() noexcept;

  /// Removes what a write that was broken off has left, before the rename or after it.
  void discard() noexcept;
};

}  // namespace lineup
