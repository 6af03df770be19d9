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
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include "controller/config_file.h"
#include "controller/whole_config_file.h"
#include "support/ending_signals.h"
#include "support/log.h"

namespace lineup {

namespace {

// Suffixes of a copy while it is written. Two, as a second writer may wait for the first.
constexpr const char* kBeing[] = {".new", ".newer"};

/// The name without that.
std::string nameInPlace(const std::string& name) {
  for (const std::string_view being : kBeing) {
    if (name.ends_with(being)) {
      return name.substr(0, name.size() - being.size());
    }
  }
  return name;
}

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
    struct stat status {};
    if (isNameOfCopy(nameInPlace(name)) && isLeft(folder.descriptor.number(), name, status)) {
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
  return nameInPlace(copy.name) != copy.name;
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

/// Whether it holds `content`, which is not empty, and nothing else.
bool holds(const LeftCopy& copy, const std::string& content) {
  if (content.empty() || static_cast<std::size_t>(copy.status.st_size) != content.size()) {
    return false;
  }
  std::ifstream file(pathOf(*copy.folder, copy.name), std::ios::binary);
  using Bytes = std::istreambuf_iterator<char>;
  return std::equal(Bytes(file), Bytes(), content.begin(), content.end());
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

/// Whether the child has ended; `options` are those of waitpid().
bool hasEnded(pid_t child, int options) {
  pid_t ended = -1;
  do {
    ended = waitpid(child, nullptr, options);
  } while (ended < 0 && errno == EINTR && !isEndOverdue());
  return ended > 0 || (ended < 0 && errno != EINTR);
}

}  // namespace

// ---- writing

void EditsCopy::openFolders() {
  if (folders_.empty()) {
    folders_ = openFoldersForFiles(IfMissing::Create);
  }
}

/// Opens a file beside the place that it will have.
std::optional<EditsCopy::File> EditsCopy::openBeside(const Folder& folder, const std::string& name,
                                                     const char* being) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  File file{&folder, name, name + being};
  file.descriptor = Descriptor(
      openat(folder.descriptor.number(), file.beside.c_str(), kFlags, S_IRUSR | S_IWUSR));
  if (!file.descriptor.isOpen()) {
    return std::nullopt;
  }
  fchmod(file.descriptor.number(), S_IRUSR | S_IWUSR);  // whatever the umask
  flock(file.descriptor.number(), LOCK_EX | LOCK_NB);
  return file;
}

/// Opens a file for a name that no other has. That of this second may be taken: process numbers
/// come again in containers, and seconds on a board whose clock is not set.
std::optional<EditsCopy::File> EditsCopy::openNew(const Folder& folder) {
  for (std::time_t time = std::time(nullptr);; ++time) {
    std::optional<File> file = openBeside(folder, nameOfCopy(time), kBeing[0]);
    if (!file) {
      if (errno != EEXIST) {
        return file;
      }
      // The other order would miss one that is put into its place in between.
    } else if (faccessat(folder.descriptor.number(), file->name.c_str(), F_OK,
                         AT_SYMLINK_NOFOLLOW) != 0) {
      return file;
    } else {
      removeUnplaced(*file);
    }
  }
}

/// Opens the file beside the copy, or beside the place that it will have in `folder`.
std::optional<EditsCopy::File> EditsCopy::beginFile(const Folder& folder) const {
  const File& before = latest();
  if (before.folder != &folder) {
    return openNew(folder);
  }
  return openBeside(folder, before.name, kBeing[before.beside.ends_with(kBeing[0]) ? 1 : 0]);
}

/// Returns whether there was one: if not, it is in its place.
bool EditsCopy::removeUnplaced(const File& file) {
  return unlinkat(file.folder->descriptor.number(), file.beside.c_str(), 0) == 0 || errno != ENOENT;
}

/// Puts the file into its place. Throws errno.
void EditsCopy::placeFile(const File& file) {
  const int folder = file.folder->descriptor.number();
  if (renameat(folder, file.beside.c_str(), folder, file.name.c_str()) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
}

/// Fills the file and puts it into its place. Throws what writeConfig() does, or errno.
void EditsCopy::writeFile(const File& file) const {
  writeConfig(file.descriptor.number(), editor_.config);
  if (fsync(file.descriptor.number()) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
  placeFile(file);
}

/// Records whether the file was placed. Two that fail in one folder are one failure.
void EditsCopy::finishFile(File& file) {
  if (removeUnplaced(file)) {
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

/// The next folder is to be tried; when none is left, all of them some time later.
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
    writeFile(file);
    fsync(file.folder->descriptor.number());
  } catch (...) {
    // No room, or no memory.
  }
  finishFile(file);
}

/// Writes in a child process, which has the edits as they are now.
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
    removeUnplaced(file);
  } else {
    writeNow(std::move(file));
  }
}

/// The child. It closes, and so unlocks, what is in its place: if the console is killed, the next
/// one announces that meanwhile.
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
    writeFile(file);
    file.descriptor = Descriptor();
    fsync(file.folder->descriptor.number());
  } catch (...) {
    _exit(EXIT_FAILURE);
  }
  _exit(EXIT_SUCCESS);
}

/// Looks after the children. Returns whether one is still at work.
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

/// Ends the child that waits.
void EditsCopy::dropWaiting() {
  kill(waiting_->child, SIGKILL);
  hasEnded(waiting_->child, 0);
  std::optional<Writer> dropped = std::exchange(waiting_, std::nullopt);
  if (!removeUnplaced(dropped->file)) {  // the one before has ended just now
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

/// Whether there is such a file, which whoever cleans up folders has not removed.
bool EditsCopy::isThere(const File& file) {
  struct stat status {};
  return file.folder != nullptr && fstat(file.descriptor.number(), &status) == 0 &&
         status.st_nlink > 0;
}

bool EditsCopy::update() noexcept {
  try {
    const bool isWriting = finishWriters(WNOHANG);
    removeRestored();
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

/// Has the copy written in the first folder in which a file can be made.
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

/// If the file is gone, its name may be another's: it is not unlinked.
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
    const File unfinished =
        std::exchange(last_, File());  // set if an earlier leave() was interrupted
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
    placeFile(last_);
  } catch (...) {
    removeUnplaced(last_);
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

/// A write that blocked was broken off before its file was in its place or just after. The file
/// itself goes last, as a child that is still at work may yet rename the other.
void EditsCopy::removeUnfinished(const File& file) const {
  if (file.folder == nullptr || (file.folder == copy_.folder && file.name == copy_.name)) {
    return;
  }
  removeUnplaced(file);
  unlinkat(file.folder->descriptor.number(), file.name.c_str(), 0);
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

void announceLeftEdits(const hub_module::HeadendConfig* running) noexcept {
  try {
    const std::vector<Folder> folders = openFoldersForFiles(IfMissing::Leave);
    std::vector<LeftCopy> copies = leftCopiesIn(folders);
    const bool comparable = running != nullptr && !copies.empty();
    const std::string unedited = comparable ? configFileContent(*running) : "";
    std::sort(copies.begin(), copies.end(), [](const LeftCopy& a, const LeftCopy& b) {
      return a.status.st_mtime > b.status.st_mtime;
    });
    for (const LeftCopy& copy : copies) {
      if (isOld(copy) || holds(copy, unedited)) {
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
