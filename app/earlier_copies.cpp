#include "app/earlier_copies.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <memory>
#include <utility>
#include <vector>

#include "app/edits_copy_names.h"
#include "controller/config_file.h"
#include "support/descriptor.h"
#include "support/state_folder.h"
#include "support/time_text.h"

namespace lineup {

namespace {

struct EarlierCopy {
  const Folder* folder;
  std::string name;
  struct stat status;
};

/// Whether it is the user's own file and not locked by a console that runs.
bool isOfEarlierConsole(const Folder& folder, const std::string& name, struct stat& status) {
  const Descriptor file = openOwnFile(folder, name, O_RDONLY, status);
  return file.isOpen() && flock(file.number(), LOCK_SH | LOCK_NB) == 0;
}

std::vector<EarlierCopy> earlierCopiesIn(const Folder& folder) {
  std::vector<EarlierCopy> copies;
  Descriptor own(openat(folder.descriptor.number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(fdopendir(own.number()), closedir);
  if (!entries) {
    return copies;
  }
  own.release();
  while (const dirent* const entry = readdir(entries.get())) {
    std::string name = entry->d_name;
    struct stat status {};
    if (isCopyName(withoutSuffix(name)) && isOfEarlierConsole(folder, name, status)) {
      copies.push_back({&folder, std::move(name), status});
    }
  }
  return copies;
}

bool isSameFile(const struct stat& one, const struct stat& other) {
  return one.st_ino == other.st_ino && one.st_dev == other.st_dev;
}

std::vector<EarlierCopy> earlierCopiesIn(const std::vector<Folder>& folders) {
  std::vector<EarlierCopy> copies;
  for (const Folder& folder : folders) {
    for (EarlierCopy& copy : earlierCopiesIn(folder)) {
      const bool known = std::any_of(copies.begin(), copies.end(), [&](const EarlierCopy& other) {
        return isSameFile(other.status, copy.status);  // $TMPDIR may be /tmp
      });
      if (!known) {
        copies.push_back(std::move(copy));
      }
    }
  }
  return copies;
}

void removeCopy(const EarlierCopy& copy) {
  unlinkat(copy.folder->descriptor.number(), copy.name.c_str(), 0);
}

bool isUnfinished(const EarlierCopy& copy) {
  return withoutSuffix(copy.name) != copy.name;
}

/// Before the clock is set it starts at 1970: an announcement dated then does not tell how long ago
/// it was.
bool wasAnnounced(const EarlierCopy& copy) {
  constexpr std::time_t kClockIsSet = 1'577'836'800;  // 2020-01-01
  return (copy.status.st_mode & S_IWUSR) == 0 && copy.status.st_atime >= kClockIsSet;
}

/// Whether it was announced for the first time more than 30 days ago. Its own date does not count,
/// as the clock may not have been set: nothing is removed before it was announced. A file that was
/// never finished is not announced, so there its own date counts.
bool isOld(const EarlierCopy& copy) {
  constexpr std::time_t kMonth = 30L * 24 * 60 * 60;
  const std::time_t since = isUnfinished(copy) ? copy.status.st_mtime : copy.status.st_atime;
  return (isUnfinished(copy) || wasAnnounced(copy)) && since < std::time(nullptr) - kMonth;
}

/// Notes when it was announced first: its access time is set, and then it is made read-only. If
/// either fails, it is announced for the first time once more.
void noteAnnounced(const EarlierCopy& copy) {
  const int folder = copy.folder->descriptor.number();
  const std::array<timespec, 2> now{{{0, UTIME_NOW}, {0, UTIME_OMIT}}};
  if (!wasAnnounced(copy) &&
      utimensat(folder, copy.name.c_str(), now.data(), AT_SYMLINK_NOFOLLOW) == 0) {
    [[maybe_unused]] const int noted = fchmodat(folder, copy.name.c_str(), S_IRUSR, 0);
  }
}

/// Whether it holds `content`, which is not empty, and nothing else.
bool holds(const EarlierCopy& copy, const std::string& content) {
  if (content.empty() || static_cast<std::size_t>(copy.status.st_size) != content.size()) {
    return false;
  }
  return fileHolds(pathIn(copy.folder->path, copy.name), content);
}

/// Whether a shell reaches the same headend, as it does not in the demo.
bool isLineupctlAtHand() {
  const char* const wanted = std::getenv("LINEUPCTL");
  return wanted == nullptr || *wanted != '\0';
}

void announce(const EarlierCopy& copy) {
  const std::string path = pathIn(copy.folder->path, copy.name);
  std::string line = "Changes of ";
  line += timeText("%Y-%m-%d %H:%M", copy.status.st_mtime);
  line += " that were not committed are in " + path + ": " + restoreCommand(path);
  line += " sends them at once";
  if (isLineupctlAtHand()) {
    line += ", \"lineupctl diff " + path + "\" in a shell shows them first";
  }
  std::cerr << line << "\n";
  noteAnnounced(copy);
}

}  // namespace

void announceEarlierCopies(const hub_module::HeadendConfig* running) noexcept {
  try {
    const std::vector<Folder> folders = openFoldersForFiles(IfMissing::Leave);
    std::vector<EarlierCopy> copies = earlierCopiesIn(folders);
    const bool comparable = running != nullptr && !copies.empty();
    const std::string unedited = comparable ? configFileContent(*running) : "";
    std::sort(copies.begin(), copies.end(), [](const EarlierCopy& a, const EarlierCopy& b) {
      return a.status.st_mtime > b.status.st_mtime;
    });
    for (const EarlierCopy& copy : copies) {
      if (isOld(copy) || holds(copy, unedited)) {
        removeCopy(copy);
      } else if (!isUnfinished(copy)) {
        announce(copy);
      }
    }
  } catch (...) {
    // Out of memory: they are announced another time.
  }
}

std::string restoreCommand(const std::string& path) {
  return "\"restore " + path + "\"";
}

void removeEarlierCopy(const std::string& path) {
  struct stat file {};
  if (stat(path.c_str(), &file) != 0) {
    return;
  }
  const std::vector<Folder> folders = openFoldersForFiles(IfMissing::Leave);
  for (const EarlierCopy& copy : earlierCopiesIn(folders)) {
    if (isSameFile(copy.status, file)) {
      removeCopy(copy);
    }
  }
}

}  // namespace lineup
