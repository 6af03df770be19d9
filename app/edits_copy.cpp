#include "app/edits_copy.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <string>
#include <utility>

#include "app/earlier_copies.h"
#include "controller/config_file.h"
#include "support/ending_signals.h"
#include "support/log.h"

namespace lineup {

namespace {

/// Whether the child has ended; `options` are those of waitpid(). False where that cannot be known:
/// in the child of a forced end, whose siblings the writers are.
bool hasEnded(pid_t child, int options) {
  pid_t ended = -1;
  do {
    ended = waitpid(child, nullptr, options);
  } while (ended < 0 && errno == EINTR && !isEndOverdue());
  return ended > 0;
}

}  // namespace

void EditsCopy::openFolders() {
  if (folders_.empty()) {
    folders_ = openFoldersForFiles(IfMissing::Create);
  }
}

/// Creates a temporary file for the copy, or for a new one in `folder`.
std::optional<EditsCopyFile> EditsCopy::beginFile(const Folder& folder) const {
  const EditsCopyFile& before = latest();
  return before.folder == &folder ? before.createNext() : EditsCopyFile::createNew(folder);
}

/// Records whether the file was renamed into place. Two that fail in one folder are one failure.
void EditsCopy::recordOutcome(EditsCopyFile& file) {
  if (file.unlinkTemporary()) {
    if (file.folder == &folders_[firstFolder_]) {
      noteFailure();
    }
    return;
  }
  if (copy_.folder != file.folder) {
    copy_.remove();
  }
  copy_ = std::move(file);
  failures_ = 0;
}

/// Moves on to the next folder, and after a round of all of them waits for a while.
void EditsCopy::noteFailure() {
  constexpr std::chrono::seconds kUntilTheNextRound(2);
  firstFolder_ = (firstFolder_ + 1) % folders_.size();
  if (++failures_ % folders_.size() == 0) {
    nextTry_ = std::chrono::steady_clock::now() + kUntilTheNextRound;
  }
}

/// Writes in this process.
void EditsCopy::writeNow(EditsCopyFile file) {
  try {
    file.fill(editor_.config);
    file.renameIntoPlace();
    fsync(file.folder->descriptor.number());
  } catch (...) {
    // No room, or no memory.
  }
  recordOutcome(file);
}

/// Writes in a child process, whose memory holds the edits as they are now.
void EditsCopy::startWriter(EditsCopyFile file) {
  std::array<int, 2> ends{-1, -1};
  const bool piped = pipe2(ends.data(), O_CLOEXEC) == 0;
  Descriptor end(ends[0]);
  const Descriptor endOfChild(ends[1]);
  const pid_t child = piped ? fork() : -1;
  if (child == 0) {
    runWriter(std::move(file));
  }
  if (child > 0) {
    (atWork_ ? waiting_ : atWork_) = Writer{std::move(file), child, std::move(end)};
  } else if (atWork_) {
    file.unlinkTemporary();  // COVERAGE_EXCL_LINE: no process is left, and one writes already
  } else {
    writeNow(std::move(file));
  }
}

/// The child process. It closes its duplicates of the locked descriptors, that of its own file
/// before the rename: a flock() lock lasts until the last duplicate is closed. If the console is
/// killed, its copies are then unlocked, and the next console announces them.
void EditsCopy::runWriter(EditsCopyFile file) {
  ignoreEndingSignals();
  copy_ = EditsCopyFile();
  if (atWork_) {
    atWork_->file = EditsCopyFile();
    char none = 0;
    while (read(atWork_->end.number(), &none, 1) < 0 && errno == EINTR) {
    }
  }
  try {
    file.fill(editor_.config);
    file.descriptor = Descriptor();
    file.renameIntoPlace();
    fsync(file.folder->descriptor.number());
  } catch (...) {
    // The temporary file is left: recordOutcome() sees it.
  }
  _exit(EXIT_SUCCESS);
}

/// Reaps the children that have ended. Returns whether one still works.
bool EditsCopy::finishWriters(int options) {
  while (atWork_) {
    if (!hasEnded(atWork_->child, options)) {
      return true;
    }
    recordOutcome(atWork_->file);
    atWork_ = std::exchange(waiting_, std::nullopt);
  }
  return false;
}

/// Kills the child that waits, and reaps it: its temporary name is to be used again.
void EditsCopy::dropWaiting() {
  kill(waiting_->child, SIGKILL);
  hasEnded(waiting_->child, 0);
  std::optional<Writer> dropped = std::exchange(waiting_, std::nullopt);
  // COVERAGE_EXCL_START: the one before has ended just now
  if (!dropped->file.unlinkTemporary()) {
    finishWriters(0);
    recordOutcome(dropped->file);
  }
  // COVERAGE_EXCL_STOP
}

/// The file with the newest edits that were to be written.
const EditsCopyFile& EditsCopy::latest() const {
  if (waiting_) {
    return waiting_->file;
  }
  return atWork_ ? atWork_->file : copy_;
}

bool EditsCopy::isUpToDate() const {
  return latest().isThere() && latest().content == editor_.config;
}

bool EditsCopy::update() noexcept {
  try {
    std::erase_if(killed_, [](pid_t child) { return hasEnded(child, WNOHANG); });
    const bool isWriting = finishWriters(WNOHANG);
    if (std::exchange(commitsSeen_, editor_.commits) != editor_.commits) {
      removeEarlierCopy(editor_.restoredFile);
    }
    if (!editor_.pendingChanges) {
      remove();
      return !killed_.empty();
    }
    if (when_ == When::AtTheEnd || isUpToDate()) {
      return isWriting;
    }
    if (std::chrono::steady_clock::now() >= nextTry_) {
      beginWriting();
    }
  } catch (...) {
    // No memory: the next pause may find some.
  }
  return true;
}

/// Starts to write the copy in the first folder in which a file can be made.
void EditsCopy::beginWriting() {
  openFolders();
  hub_module::HeadendConfig content = editor_.config;  // without memory no file is begun
  killed_.reserve(killed_.size() + 2);                 // for remove(), which must not throw
  finishWriters(WNOHANG);
  if (waiting_) {
    dropWaiting();
  }
  for (std::size_t n = 0; n < folders_.size(); ++n) {
    if (std::optional<EditsCopyFile> file = beginFile(folders_[firstFolder_])) {
      file->content = std::move(content);
      startWriter(*std::move(file));
      return;
    }
    noteFailure();
  }
}

void EditsCopy::remove() noexcept {
  for (std::optional<Writer>* const writer : {&waiting_, &atWork_}) {
    if (*writer) {
      kill((*writer)->child, SIGKILL);
      killed_.push_back((*writer)->child);  // a sync of a slow disk is not interrupted
      (*writer)->file.discard();
      writer->reset();
    }
  }
  copy_.remove();
  failures_ = 0;
  nextTry_ = {};
}

// ---- the end

void EditsCopy::writeAtTheEnd() noexcept {
  try {
    if (!editor_.pendingChanges) {
      remove();
      return;
    }
    if (lastIsInPlace_) {
      return;  // the end was forced during its sync
    }
    finishWriters(0);  // unless it blocks, and the end is overdue
    if (!atWork_ && isUpToDate()) {
      say(copy_, true);
      return;
    }
    // Set if the end was forced while it was written.
    EditsCopyFile unfinished = std::exchange(last_, EditsCopyFile());
    openFolders();
    for (const Folder& folder : folders_) {
      if (writeFinal(folder)) {
        unfinished.discard();
        for (std::optional<Writer>* const writer : {&atWork_, &waiting_}) {
          if (*writer) {
            (*writer)->file.discard();
          }
        }
        return;
      }
    }
    say(copy_, false);
  } catch (...) {
    // Out of memory: there is nothing left to say it with.
  }
}

/// Writes a file that is there as soon as it is filled, whatever becomes of this process while the
/// disk takes it. The one before stays until the disk has.
bool EditsCopy::writeFinal(const Folder& folder) {
  std::optional<EditsCopyFile> file = EditsCopyFile::createNew(folder);
  if (!file) {
    return false;
  }
  last_ = *std::move(file);
  try {
    writeConfig(last_.descriptor.number(), editor_.config);
    last_.renameIntoPlace();
  } catch (...) {
    last_.unlinkTemporary();
    last_ = EditsCopyFile();
    return false;
  }
  lastIsInPlace_ = true;
  say(last_, true);
  if (fsync(last_.descriptor.number()) != 0) {
    lastIsInPlace_ = false;
    last_.remove();
    return false;
  }
  fsync(folder.descriptor.number());
  copy_.remove();
  copy_ = std::exchange(last_, EditsCopyFile());
  return true;
}

void EditsCopy::say(const EditsCopyFile& file, bool upToDate) {
  std::string line = "The uncommitted changes ";
  if (!upToDate) {
    line += "could not be written to a file";
    line += file.isThere() ? "; earlier ones " : "";
  }
  if (file.isThere()) {
    const std::string path = pathIn(file.folder->path, file.name);
    line += "are in " + path + ": " + restoreCommand(path) + " brings them back and commits them";
  }
  log_function(LOG_LEVEL_WARNING, nullptr, "%s", line.c_str());
  std::cerr << line + '\n';
}

}  // namespace lineup
