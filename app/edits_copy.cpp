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

std::string nameOfNewCopy() {
  return "lineup-console-" + timeText("%Y%m%d-%H%M%S", std::time(nullptr)) + "-" +
         std::to_string(getpid()) + ".json";
}

/// Whether nameOfNewCopy() makes such names. Nothing else in a shared folder is ours to touch.
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

/// Whether it was announced for the first time more than 30 days ago: whatever its own date, which
/// a clock that was not set yet may have given it, nothing goes that nobody has been told of.
bool isOld(const LeftCopy& copy) {
  constexpr std::time_t kMonth = 30L * 24 * 60 * 60;
  const bool announced = (copy.status.st_mode & S_IWUSR) == 0;
  return announced && copy.status.st_atime < std::time(nullptr) - kMonth;
}

/// Notes when it is announced first: it is read-only from then on, and was read then.
void noteAnnounced(const LeftCopy& copy) {
  if ((copy.status.st_mode & S_IWUSR) == 0) {
    return;
  }
  const int folder = copy.folder->descriptor.number();
  const std::array<timespec, 2> now{{{0, UTIME_NOW}, {0, UTIME_OMIT}}};
  utimensat(folder, copy.name.c_str(), now.data(), AT_SYMLINK_NOFOLLOW);
  fchmodat(folder, copy.name.c_str(), S_IRUSR, 0);
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
bool EditsCopy::beginFile(const Folder& folder) {
  new_.folder = &folder;
  new_.name = copy_.folder == &folder ? copy_.name : nameOfNewCopy();
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  const int descriptor =
      openat(folder.descriptor.number(), (new_.name + kBeing).c_str(), kFlags, S_IRUSR | S_IWUSR);
  if (descriptor < 0) {
    return false;
  }
  new_.descriptor = Descriptor(descriptor);
  fchmod(descriptor, S_IRUSR | S_IWUSR);  // whatever the umask
  flock(descriptor, LOCK_EX | LOCK_NB);
  return true;
}

/// Fills the file and puts it into its place. Throws what writeConfig() does, or errno.
void EditsCopy::writeFile() const {
  writeConfig(new_.descriptor.number(), editor_.config);
  const int folder = new_.folder->descriptor.number();
  if (fsync(new_.descriptor.number()) != 0 ||
      renameat(folder, (new_.name + kBeing).c_str(), folder, new_.name.c_str()) != 0) {
    throw std::system_error(errno, std::generic_category());
  }
  fsync(folder);
}

/// Takes note of what came of that: a file that is not there any more is in its place. Returns
/// whether it is.
bool EditsCopy::finishFile() {
  const int folder = new_.folder->descriptor.number();
  const bool written = unlinkat(folder, (new_.name + kBeing).c_str(), 0) != 0 && errno == ENOENT;
  if (written) {
    if (copy_.folder != new_.folder) {
      removeFile(copy_);
    }
    copy_ = std::move(new_);
  } else {
    written_.reset();
    firstFolder_ = (firstFolder_ + 1) % folders_.size();
  }
  new_ = File();
  return written;
}

/// Writes in this process.
bool EditsCopy::writeNow() {
  try {
    writeFile();
  } catch (...) {
    // No room, or no memory.
  }
  return finishFile();
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
  return isThere() && written_ == editor_.config;
}

/// Whether there is a copy, which whoever cleans up folders has not removed.
bool EditsCopy::isThere() const {
  struct stat status {};
  return copy_.folder != nullptr && fstat(copy_.descriptor.number(), &status) == 0 &&
         status.st_nlink > 0;
}

bool EditsCopy::update() noexcept {
  try {
    const bool began = writer_ != 0;
    if (finishWriter(WNOHANG) && editor_.pendingChanges) {
      return true;
    }
    const bool failed = began && !written_;  // not again before something else is typed
    removeRestored();
    if (!editor_.pendingChanges) {
      remove();
    } else if (when_ == When::WhileEditing && !failed && !isUpToDate()) {
      openFolders();
      written_ = editor_.config;
      for (std::size_t n = 0; n < folders_.size() && writer_ == 0; ++n) {
        if (beginFile(folders_[(firstFolder_ + n) % folders_.size()])) {
          startWriter();
          break;
        }
      }
    }
  } catch (...) {
    return false;  // no memory: the next pause may find some
  }
  return writer_ != 0;
}

void EditsCopy::remove() noexcept {
  if (writer_ != 0) {
    kill(writer_, SIGKILL);
    finishWriter(0);
  }
  removeFile(copy_);
}

void EditsCopy::removeFile(File& file) noexcept {
  if (file.folder != nullptr) {
    unlinkat(file.folder->descriptor.number(), file.name.c_str(), 0);
    file = File();
  }
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
    bool upToDate = !isWriting && isUpToDate();
    openFolders();
    for (std::size_t n = 0; n < folders_.size() && !upToDate; ++n) {
      upToDate = beginFile(folders_[n]) && writeNow();
    }
    if (upToDate) {
      removeUnfinished(unfinished);
    }
    say(upToDate);
  } catch (...) {
    // Out of memory: there is nothing left to say it with.
  }
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

void EditsCopy::say(bool upToDate) const {
  std::string line = "The uncommitted changes ";
  if (!upToDate) {
    line += "could not be written to a file";
    line += isThere() ? "; earlier ones " : "";
  }
  if (isThere()) {
    const std::string path = pathOf(*copy_.folder, copy_.name);
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
      } else if (!copy.name.ends_with(kBeing)) {
        announce(copy);
      }
    }
  } catch (...) {
    // Out of memory: they are announced another time.
  }
}

}  // namespace lineup
