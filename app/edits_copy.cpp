#include "app/edits_copy.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <system_error>
#include <utility>

#include "app/earlier_copies.h"
#include "app/edits_copy_names.h"
#include "controller/config_file.h"
#include "support/ending_signals.h"
#include "support/log.h"

namespace lineup {

namespace {

/// Whether the child has ended; `options` are those of waitpid().
bool hasEnded(pid_t child, int options) {
  pid_t ended = -1;
  do {
    ended = waitpid(child, nullptr, options);
  } while (ended < 0 && errno == EINTR && !isEndOverdue());
  return ended > 0 || (ended < 0 && errno != EINTR);
}

}  // namespace

void EditsCopy::openFolders() {
  if (folders_.empty()) {
    folders_ = openFoldersForFiles(IfMissing::Create);
  }
}

/// Creates a temporary file that is to be renamed to `name`.
std::optional<EditsCopy::File> EditsCopy::createTemporary(const Folder& folder,
                                                          const std::string& name,
                                                          const char* suffix) {
  File file{&folder, name, name + suffix};
  file.descriptor = createFile(folder, file.temporaryName);
  if (!file.descriptor.isOpen()) {
    return std::nullopt;
  }
  fchmod(file.descriptor.number(), S_IRUSR | S_IWUSR);  // whatever the umask
  flock(file.descriptor.number(), LOCK_EX | LOCK_NB);
  return file;
}

/// Creates a temporary file for a name that no other has. That of this second may be taken: process
/// numbers come again in containers, and seconds on a board whose clock is not set.
std::optional<EditsCopy::File> EditsCopy::openNew(const Folder& folder) {
  for (std::time_t time = std::time(nullptr);; ++time) {
    std::optional<File> file = createTemporary(folder, newCopyName(time), kUnfinishedSuffixes[0]);
    if (!file) {
      if (errno != EEXIST) {
        return file;
      }
      // The other order would miss one that is renamed in between.
    } else if (faccessat(folder.descriptor.number(), file->name.c_str(), F_OK,
                         AT_SYMLINK_NOFOLLOW) != 0) {
      return file;
    } else {
      unlinkTemporary(*file);
    }
  }
}

/// Creates a temporary file for the copy, or for a new one in `folder`.
std::optional<EditsCopy::File> EditsCopy::beginFile(const Folder& folder) const {
  const File& before = latest();
  if (before.folder != &folder) {
    return openNew(folder);
  }
  const bool isFirst = before.temporaryName.ends_with(kUnfinishedSuffixes[0]);
  return createTemporary(folder, before.name, kUnfinishedSuffixes[isFirst ? 1 : 0]);
}

/// Returns whether there was one: if not, it has been renamed.
bool EditsCopy::unlinkTemporary(const File& file) {
  return unlinkat(file.folder->descriptor.number(), file.temporaryName.c_str(), 0) == 0 ||
         errno != ENOENT;
}

/// Throws std::system_error.
void EditsCopy::renameIntoPlace(const File& file) {
  const int folder = file.folder->descriptor.number();
  if (renameat(folder, file.temporaryName.c_str(), folder, file.name.c_str()) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
}

/// Fills the file and has the disk take it. Throws std::exception.
void EditsCopy::fillFile(const File& file) const {
  writeConfig(file.descriptor.number(), editor_.config);
  if (fsync(file.descriptor.number()) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
}

/// Records whether the file was renamed into place. Two that fail in one folder are one failure.
void EditsCopy::finishFile(File& file) {
  if (unlinkTemporary(file)) {
    if (file.folder == &folders_[firstFolder_]) {
      noteFailure();
    }
    return;
  }
  if (copy_.folder != file.folder) {
    removeFile(copy_);
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
void EditsCopy::writeNow(File file) {
  try {
    fillFile(file);
    renameIntoPlace(file);
    fsync(file.folder->descriptor.number());
  } catch (...) {
    // No room, or no memory.
  }
  finishFile(file);
}

/// Writes in a child process, whose memory holds the edits as they are now.
void EditsCopy::startWriter(File file) {
  std::array<int, 2> ends{-1, -1};
  const bool piped = pipe2(ends.data(), O_CLOEXEC) == 0;
  Descriptor end(ends[0]);
  const Descriptor endOfChild(ends[1]);
  const pid_t child = piped || !atWork_ ? fork() : -1;
  if (child == 0) {
    runWriter(std::move(file));
  }
  if (child > 0) {
    (atWork_ ? waiting_ : atWork_) = Writer{std::move(file), child, std::move(end)};
  } else if (atWork_) {
    unlinkTemporary(file);
  } else {
    writeNow(std::move(file));
  }
}

/// The child process. It closes its duplicates of the locked descriptors, that of its own file
/// before the rename: a flock() lock lasts until the last duplicate is closed. If the console is
/// killed, its copies are then unlocked, and the next console announces them.
void EditsCopy::runWriter(File file) {
  ignoreEndingSignals();
  copy_ = File();
  if (atWork_) {
    atWork_->file = File();
    char none = 0;
    while (read(atWork_->end.number(), &none, 1) < 0 && errno == EINTR) {
    }
  }
  try {
    fillFile(file);
    file.descriptor = Descriptor();
    renameIntoPlace(file);
    fsync(file.folder->descriptor.number());
  } catch (...) {
    // The temporary file is left: finishFile() sees it.
  }
  _exit(EXIT_SUCCESS);
}

/// Reaps the children that have ended. Returns whether one still works.
bool EditsCopy::finishWriters(int options) {
  while (atWork_) {
    if (!hasEnded(atWork_->child, options)) {
      return true;
    }
    finishFile(atWork_->file);
    atWork_ = std::exchange(waiting_, std::nullopt);
  }
  return false;
}

/// Kills the child that waits.
void EditsCopy::dropWaiting() {
  kill(waiting_->child, SIGKILL);
  hasEnded(waiting_->child, 0);
  std::optional<Writer> dropped = std::exchange(waiting_, std::nullopt);
  if (!unlinkTemporary(dropped->file)) {  // the one before has ended just now
    finishWriters(0);
    finishFile(dropped->file);
  }
}

/// The file with the newest edits that were to be written.
const EditsCopy::File& EditsCopy::latest() const {
  if (waiting_) {
    return waiting_->file;
  }
  return atWork_ ? atWork_->file : copy_;
}

bool EditsCopy::isUpToDate() const {
  return isThere(latest()) && latest().content == editor_.config;
}

/// Whether the file still has a name: nobody has removed it.
bool EditsCopy::isThere(const File& file) {
  struct stat status {};
  return file.folder != nullptr && fstat(file.descriptor.number(), &status) == 0 &&
         status.st_nlink > 0;
}

bool EditsCopy::update() noexcept {
  try {
    const bool isWriting = finishWriters(WNOHANG);
    if (std::exchange(commitsSeen_, editor_.commits) != editor_.commits) {
      removeEarlierCopy(editor_.restoredFile);
    }
    if (!editor_.pendingChanges) {
      remove();
      return false;
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
  if (waiting_) {
    dropWaiting();
  }
  hub_module::HeadendConfig content = editor_.config;  // without memory no file is begun
  for (std::size_t n = 0; n < folders_.size(); ++n) {
    if (std::optional<File> file = beginFile(folders_[firstFolder_])) {
      file->content = std::move(content);
      startWriter(*std::move(file));
      return;
    }
    noteFailure();
  }
}

void EditsCopy::remove() noexcept {
  if (waiting_) {
    dropWaiting();
  }
  if (atWork_) {
    const std::size_t first = firstFolder_;
    kill(atWork_->child, SIGKILL);
    finishWriters(0);
    firstFolder_ = first;  // nothing went wrong there
    failures_ = 0;
    nextTry_ = {};
  }
  removeFile(copy_);
}

/// Unlinks the file and forgets it. If it is gone, its name may be another's, and stays.
void EditsCopy::removeFile(File& file) noexcept {
  if (isThere(file)) {
    unlinkat(file.folder->descriptor.number(), file.name.c_str(), 0);
  }
  file = File();
}

// ---- the end

void EditsCopy::leave() noexcept {
  try {
    if (!editor_.pendingChanges) {
      remove();
      return;
    }
    finishWriters(0);  // unless it blocks, and the end is overdue
    if (!atWork_ && isUpToDate()) {
      say(copy_, true);
      return;
    }
    // Set if an earlier leave() was interrupted.
    const File unfinished = std::exchange(last_, File());
    openFolders();
    for (const Folder& folder : folders_) {
      if (writeAtTheEnd(folder)) {
        removeUnfinished(unfinished);
        for (const std::optional<Writer>* writer : {&atWork_, &waiting_}) {
          if (*writer) {
            removeUnfinished((*writer)->file);
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
bool EditsCopy::writeAtTheEnd(const Folder& folder) {
  std::optional<File> file = openNew(folder);
  if (!file) {
    return false;
  }
  last_ = *std::move(file);
  try {
    writeConfig(last_.descriptor.number(), editor_.config);
    renameIntoPlace(last_);
  } catch (...) {
    unlinkTemporary(last_);
    last_ = File();
    return false;
  }
  say(last_, true);
  if (fsync(last_.descriptor.number()) != 0) {
    removeFile(last_);
    return false;
  }
  fsync(folder.descriptor.number());
  removeFile(copy_);
  copy_ = std::exchange(last_, File());
  return true;
}

/// A write that blocked was broken off before the rename or just after. Unlinks the temporary name
/// first: a child that still runs could otherwise rename it after `name` was unlinked.
void EditsCopy::removeUnfinished(const File& file) const {
  if (file.folder == nullptr || (file.folder == copy_.folder && file.name == copy_.name)) {
    return;
  }
  unlinkTemporary(file);
  unlinkat(file.folder->descriptor.number(), file.name.c_str(), 0);
}

void EditsCopy::say(const File& file, bool upToDate) {
  std::string line = "The uncommitted changes ";
  if (!upToDate) {
    line += "could not be written to a file";
    line += isThere(file) ? "; earlier ones " : "";
  }
  if (isThere(file)) {
    const std::string path = pathIn(file.folder->path, file.name);
    line += "are in " + path + ": " + restoreCommand(path) + " brings them back and commits them";
  }
  log_function(LOG_LEVEL_WARNING, nullptr, "%s", line.c_str());
  std::cerr << line + '\n';
}

}  // namespace lineup
