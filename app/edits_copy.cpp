#include "app/edits_copy.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <memory>
#include <system_error>
#include <utility>

#include "controller/config_file.h"
#include "support/ending_signals.h"
#include "support/log.h"

namespace lineup {

namespace {

constexpr char kBeing[] = ".new";  // behind the name of a copy that is being written

std::string timeText(const char* format, std::time_t time) {
  std::tm local{};
  localtime_r(&time, &local);
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), format, &local);
  return text.data();
}

std::string nameOfCopy(std::time_t time) {
  return "lineup-console-" + timeText("%Y%m%d-%H%M%S", time) + "-" + std::to_string(getpid()) +
         ".json";
}

/// Whether nameOfCopy() makes such names. Nothing else in a shared folder is ours to touch.
bool isNameOfCopy(const std::string& name) {
  int end = 0;
  std::array<char, 9> date{};
  std::array<char, 7> time{};
  std::array<char, 11> process{};
  constexpr char kPattern[] = "lineup-console-%8[0-9]-%6[0-9]-%10[0-9].json%n";
  return std::sscanf(name.c_str(), kPattern, date.data(), time.data(), process.data(), &end) == 3 &&
         static_cast<std::size_t>(end) == name.size();
}

std::string pathOf(const Folder& folder, const std::string& name) {
  return folder.path + (folder.path.ends_with('/') ? "" : "/") + name;
}

std::string howToRestore(const std::string& path) {
  return "\"restore " + path + "\"";
}

// ---- copies that others left

struct LeftCopy {
  const Folder* folder;
  std::string name;
  struct stat status;
};

/// Whether it is the user's own file and its console does not run any more.
bool isLeft(int folder, const std::string& name, struct stat& status) {
  constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const Descriptor file(openat(folder, name.c_str(), kFlags));
  return file.isOpen() && fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode) &&
         status.st_uid == geteuid() && flock(file.number(), LOCK_SH | LOCK_NB) == 0;
}

std::vector<LeftCopy> leftCopiesIn(const Folder& folder) {
  std::vector<LeftCopy> copies;
  Descriptor own(openat(folder.descriptor.number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(fdopendir(own.number()), closedir);
  if (!entries) {
    return copies;
  }
  own.release();
  while (const dirent* const entry = readdir(entries.get())) {
    std::string name = entry->d_name;
    const bool isBeing = name.ends_with(kBeing);
    struct stat status {};
    if (isNameOfCopy(isBeing ? name.substr(0, name.size() - std::size(kBeing) + 1) : name) &&
        isLeft(folder.descriptor.number(), name, status)) {
      copies.push_back({&folder, std::move(name), status});
    }
  }
  return copies;
}

std::vector<LeftCopy> leftCopiesIn(const std::vector<Folder>& folders) {
  std::vector<LeftCopy> copies;
  for (const Folder& folder : folders) {
    for (LeftCopy& copy : leftCopiesIn(folder)) {
      const bool known = std::any_of(copies.begin(), copies.end(), [&](const LeftCopy& other) {
        return other.status.st_ino == copy.status.st_ino &&
               other.status.st_dev == copy.status.st_dev;  // $TMPDIR may be /tmp
      });
      if (!known) {
        copies.push_back(std::move(copy));
      }
    }
  }
  return copies;
}

void removeLeft(const LeftCopy& copy) {
  unlinkat(copy.folder->descriptor.number(), copy.name.c_str(), 0);
}

bool isUnfinished(const LeftCopy& copy) {
  return copy.name.ends_with(kBeing);
}

bool wasAnnounced(const LeftCopy& copy) {
  return (copy.status.st_mode & S_IWUSR) == 0;
}

/// Whether it was announced for the first time more than 30 days ago: whatever its own date, which
/// a clock that was not set yet may have given it, nothing goes that nobody has been told of. A
/// file that was never finished is not announced: its own date counts.
bool isOld(const LeftCopy& copy) {
  constexpr std::time_t kMonth = 30L * 24 * 60 * 60;
  const std::time_t since = isUnfinished(copy) ? copy.status.st_mtime : copy.status.st_atime;
  return (isUnfinished(copy) || wasAnnounced(copy)) && since < std::time(nullptr) - kMonth;
}

/// Notes when it was announced first: its access time is set, and then it is made read-only.
/// Returns whether that could be done; if not, it is announced for the first time once more.
bool noteAnnounced(const LeftCopy& copy) {
  const int folder = copy.folder->descriptor.number();
  const std::array<timespec, 2> now{{{0, UTIME_NOW}, {0, UTIME_OMIT}}};
  return wasAnnounced(copy) ||
         (utimensat(folder, copy.name.c_str(), now.data(), AT_SYMLINK_NOFOLLOW) == 0 &&
          fchmodat(folder, copy.name.c_str(), S_IRUSR, 0) == 0);
}

void announce(const LeftCopy& copy) {
  const std::string path = pathOf(*copy.folder, copy.name);
  std::string line = "Changes of ";
  line += timeText("%Y-%m-%d %H:%M", copy.status.st_mtime);
  line += " that were not committed are in " + path + ": " + howToRestore(path);
  line += " sends them at once, \"lineupctl diff " + path;
  line += "\" in a shell shows them first\n";
  std::cerr << line;
  noteAnnounced(copy);
}

}  // namespace

// ---- writing

void EditsCopy::openFolders() {
  if (folders_.empty()) {
    folders_ = openFoldersForFiles(IfMissing::Create);
  }
}

/// Opens the file beside its place.
bool EditsCopy::openBeside(const Folder& folder, const std::string& name) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  const int descriptor =
      openat(folder.descriptor.number(), (name + kBeing).c_str(), kFlags, S_IRUSR | S_IWUSR);
  if (descriptor < 0) {
    return false;
  }
  new_ = File{&folder, name, Descriptor(descriptor)};
  fchmod(descriptor, S_IRUSR | S_IWUSR);  // whatever the umask
  flock(descriptor, LOCK_EX | LOCK_NB);
  return true;
}

/// Opens a file for a name that no other has. That of this second may be taken: process numbers
/// come again in containers, and seconds on a board whose clock is not set.
bool EditsCopy::openNew(const Folder& folder) {
  for (std::time_t time = std::time(nullptr);; ++time) {
    const std::string name = nameOfCopy(time);
    if (openBeside(folder, name)) {
      // The other order would miss one that is put into its place in between.
      if (faccessat(folder.descriptor.number(), name.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) != 0) {
        return true;
      }
      dropFile();
    } else if (errno != EEXIST) {
      return false;
    }
  }
}

void EditsCopy::dropFile() {
  unlinkat(new_.folder->descriptor.number(), (new_.name + kBeing).c_str(), 0);
  new_ = File();
}

/// Opens the file beside the copy, or beside the place that it will have in `folder`.
bool EditsCopy::beginFile(const Folder& folder) {
  return copy_.folder == &folder ? openBeside(folder, copy_.name) : openNew(folder);
}

/// Puts the file into its place. Throws errno.
void EditsCopy::placeFile() const {
  const int folder = new_.folder->descriptor.number();
  if (renameat(folder, (new_.name + kBeing).c_str(), folder, new_.name.c_str()) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
}

/// Fills the file and puts it into its place. Throws what writeConfig() does, or errno.
void EditsCopy::writeFile() const {
  writeConfig(new_.descriptor.number(), editor_.config);
  if (fsync(new_.descriptor.number()) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
  placeFile();
  fsync(new_.folder->descriptor.number());
}

/// Takes note of what came of that: a file that is not there any more is in its place.
void EditsCopy::finishFile() {
  const int folder = new_.folder->descriptor.number();
  if (unlinkat(folder, (new_.name + kBeing).c_str(), 0) != 0 && errno == ENOENT) {
    if (copy_.folder != new_.folder) {
      removeFile(copy_);
    }
    copy_ = std::move(new_);
    failures_ = 0;
  } else {
    noteFailure();
  }
  new_ = File();
}

/// The next folder is to be tried; when none is left, all of them some time later.
void EditsCopy::noteFailure() {
  constexpr std::chrono::seconds kUntilTheNextRound(2);
  firstFolder_ = (firstFolder_ + 1) % folders_.size();
  if (++failures_ % folders_.size() == 0) {
    nextTry_ = std::chrono::steady_clock::now() + kUntilTheNextRound;
  }
}

/// Writes in this process.
void EditsCopy::writeNow() {
  try {
    writeFile();
  } catch (...) {
    // No room, or no memory.
  }
  finishFile();
}

/// Writes in a child process, which has the edits as they are now.
void EditsCopy::startWriter() {
  writer_ = fork();
  if (writer_ == 0) {
    // GCOVR_EXCL_START: the counts of this process get lost
    ignoreEndingSignals();
    try {
      writeFile();
    } catch (...) {
      _exit(EXIT_FAILURE);
    }
    _exit(EXIT_SUCCESS);
    // GCOVR_EXCL_STOP
  }
  if (writer_ < 0) {
    writer_ = 0;
    writeNow();
  }
}

/// Looks after the child, if there is one; `options` are those of waitpid(). Returns whether it is
/// still at work.
bool EditsCopy::finishWriter(int options) {
  if (writer_ == 0) {
    return false;
  }
  pid_t ended = -1;
  do {
    ended = waitpid(writer_, nullptr, options);
  } while (ended < 0 && errno == EINTR && !isEndOverdue());
  if (ended == 0 || (ended < 0 && errno == EINTR)) {
    return true;
  }
  writer_ = 0;
  finishFile();
  return false;
}

bool EditsCopy::isUpToDate() const {
  return isThere(copy_) && copy_.content == editor_.config;
}

/// Whether there is such a file, which whoever cleans up folders has not removed.
bool EditsCopy::isThere(const File& file) {
  struct stat status {};
  return file.folder != nullptr && fstat(file.descriptor.number(), &status) == 0 &&
         status.st_nlink > 0;
}

bool EditsCopy::update() noexcept {
  try {
    if (finishWriter(WNOHANG) && editor_.pendingChanges) {
      return true;
    }
    removeRestored();
    if (!editor_.pendingChanges) {
      remove();
      return false;
    }
    if (when_ == When::AtTheEnd || isUpToDate()) {
      return false;
    }
    if (std::chrono::steady_clock::now() >= nextTry_) {
      beginWriting();
    }
  } catch (...) {
    // No memory: the next pause may find some.
  }
  return true;
}

/// Has the copy written in the first folder in which a file can be made.
void EditsCopy::beginWriting() {
  openFolders();
  hub_module::HeadendConfig content = editor_.config;  // without memory no file is begun
  for (std::size_t n = 0; n < folders_.size(); ++n) {
    if (beginFile(folders_[firstFolder_])) {
      new_.content = std::move(content);
      startWriter();
      return;
    }
    noteFailure();
  }
}

void EditsCopy::remove() noexcept {
  if (writer_ != 0) {
    const std::size_t first = firstFolder_;
    kill(writer_, SIGKILL);
    finishWriter(0);
    firstFolder_ = first;  // nothing went wrong there
    failures_ = 0;
    nextTry_ = {};
  }
  removeFile(copy_);
}

/// One that is gone has left its name to others.
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
    const bool isWriting = finishWriter(0);  // it blocks, and the end is overdue
    const File unfinished = std::exchange(new_, File());
    if (!isWriting && isUpToDate()) {
      say(copy_, true);
      return;
    }
    openFolders();
    for (const Folder& folder : folders_) {
      if (writeAtTheEnd(folder)) {
        removeUnfinished(unfinished);
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
  if (!openNew(folder)) {
    return false;
  }
  try {
    writeConfig(new_.descriptor.number(), editor_.config);
    placeFile();
  } catch (...) {
    dropFile();
    return false;
  }
  say(new_, true);
  if (fsync(new_.descriptor.number()) != 0) {
    removeFile(new_);
    return false;
  }
  fsync(folder.descriptor.number());
  removeFile(copy_);
  copy_ = std::exchange(new_, File());
  return true;
}

/// A write that blocked was broken off before its file was in its place or just after. The file
/// itself goes last, as a child that is still at work may yet rename the other.
void EditsCopy::removeUnfinished(const File& file) const {
  if (file.folder == nullptr || (file.folder == copy_.folder && file.name == copy_.name)) {
    return;
  }
  const int folder = file.folder->descriptor.number();
  unlinkat(folder, (file.name + kBeing).c_str(), 0);
  unlinkat(folder, file.name.c_str(), 0);
}

void EditsCopy::say(const File& file, bool upToDate) {
  std::string line = "The uncommitted changes ";
  if (!upToDate) {
    line += "could not be written to a file";
    line += isThere(file) ? "; earlier ones " : "";
  }
  if (isThere(file)) {
    const std::string path = pathOf(*file.folder, file.name);
    line += "are in " + path + ": " + howToRestore(path) + " brings them back and commits them";
  }
  log_function(LOG_LEVEL_WARNING, nullptr, "%s", line.c_str());
  std::cerr << line + '\n';
}

// ---- what others left

void EditsCopy::removeRestored() {
  if (std::exchange(commitsSeen_, editor_.commits) == editor_.commits) {
    return;
  }
  struct stat restored {};
  if (stat(editor_.restoredFile.c_str(), &restored) != 0) {
    return;
  }
  const std::vector<Folder> folders = openFoldersForFiles(IfMissing::Leave);
  for (const LeftCopy& copy : leftCopiesIn(folders)) {
    if (copy.status.st_ino == restored.st_ino && copy.status.st_dev == restored.st_dev) {
      removeLeft(copy);
    }
  }
}

void announceLeftEdits() noexcept {
  try {
    const std::vector<Folder> folders = openFoldersForFiles(IfMissing::Leave);
    std::vector<LeftCopy> copies = leftCopiesIn(folders);
    std::sort(copies.begin(), copies.end(), [](const LeftCopy& a, const LeftCopy& b) {
      return a.status.st_mtime > b.status.st_mtime;
    });
    for (const LeftCopy& copy : copies) {
      if (isOld(copy)) {
        removeLeft(copy);
      } else if (!isUnfinished(copy)) {
        announce(copy);
      }
    }
  } catch (...) {
    // Out of memory: they are announced another time.
  }
}

}  // namespace lineup
