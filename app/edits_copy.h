// The copy of the pending edits that outlives the console.
//
// A copy is a configuration file, readable by the user alone, in the best of openFoldersForFiles().
// It is written to a temporary file in the same folder and renamed over the previous copy: a reader
// finds one or the other, complete. It is locked (flock) while the console lives whose edits it
// holds.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "app/edits_copy_file.h"
#include "model/lineup_editor.h"
#include "support/descriptor.h"
#include "support/state_folder.h"

namespace lineup {

/// Keeps at most one copy of the edits of `editor`. Nothing here throws; what cannot be written
/// leaves the copy before it.
class EditsCopy {
 public:
  enum class When { WhileEditing, AtTheEnd };

  /// `editor` must live longer. `when` says whether update() writes.
  EditsCopy(const LineupEditor& editor, When when) : editor_(editor), when_(when) {}
  EditsCopy(const EditsCopy&) = delete;
  EditsCopy& operator=(const EditsCopy&) = delete;

  /// Brings the copy up to date: a child process writes it and waits for the disk. Removes it
  /// if nothing is pending, and the copy of an earlier console once its restored edits are
  /// committed. Returns true if it is to be called again soon: a child has yet to end, or has
  /// failed.
  bool update() noexcept;

  /// Brings it up to date at once, at the end of the program, and says on standard error and in the
  /// log where it is or that it could not be written. Without pending changes there is none, and
  /// nothing is said.
  void writeAtTheEnd() noexcept;

  /// Removes it without waiting for its writer: the edits are committed or given up.
  void remove() noexcept;

 private:
  /// A child process that writes a file and puts it into its place.
  struct Writer {
    EditsCopyFile file;
    pid_t child;
    Descriptor end;  ///< a pipe that ends with the child
  };

  void openFolders();
  std::optional<EditsCopyFile> beginFile(const Folder& folder) const;
  void recordOutcome(EditsCopyFile& file);
  void noteFailure();
  void beginWriting();
  void startWriter(EditsCopyFile file);
  [[noreturn]] void runWriter(EditsCopyFile file);
  void writeNow(EditsCopyFile file);
  bool finishWriters(int options);
  void dropWaiting();
  const EditsCopyFile& latest() const;
  bool isUpToDate() const;
  bool writeFinal(const Folder& folder);
  static void say(const EditsCopyFile& file, bool upToDate);

  const LineupEditor& editor_;
  const When when_;
  std::vector<Folder> folders_;
  std::size_t firstFolder_ = 0;  ///< index of the one to try first, after the last that failed
  std::size_t failures_ = 0;     ///< in a row
  std::chrono::steady_clock::time_point nextTry_{};
  EditsCopyFile copy_;
  std::optional<Writer> atWork_;
  std::optional<Writer> waiting_;  ///< has newer edits, and waits for the end of the other
  std::vector<pid_t> killed_;      ///< writers that have yet to end
  EditsCopyFile last_;             ///< the one that is written at the end of the program
  bool lastIsInPlace_ = false;     ///< only the disk has yet to take it
  uint64_t commitsSeen_ = 0;       ///< at the last call of removeEarlierCopy()
};

}  // namespace lineup
