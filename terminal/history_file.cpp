#include "terminal/history_file.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>

#include "support/descriptor.h"
#include "support/state_folder.h"

namespace lineup {

namespace {

constexpr char kFileName[] = "history";
constexpr char kNewName[] = "history.new";
constexpr mode_t kOwnerAlone = S_IRUSR | S_IWUSR;

std::optional<Folder> openFolder(IfMissing ifMissing) {
  const char* const wanted = std::getenv("LINEUP_HISTORY");
  const bool isOff = wanted != nullptr && *wanted == '\0';
  return isOff ? std::nullopt : openStateFolder(ifMissing);
}

/// Opens the file if it is the user's own, and closes it to others.
Descriptor openFile(const Folder& folder, int flags) {
  struct stat status {};
  Descriptor file = openOwnFile(folder, kFileName, flags, status);
  const auto isClosed = [&] {
    return (status.st_mode & ALLPERMS) == kOwnerAlone || fchmod(file.number(), kOwnerAlone) == 0;
  };
  return file.isOpen() && isClosed() ? std::move(file) : Descriptor();
}

/// Waits until no other console writes the file, but for a second at most: one may be stopped.
void lock(int file) {
  constexpr int kTries = 100;
  constexpr int kBetween = 10;  // ms
  for (int n = 0; n < kTries && flock(file, LOCK_EX | LOCK_NB) != 0; ++n) {
    poll(nullptr, 0, kBetween);
  }
}

/// The file, locked. Another console may have put a new one in its place before it was.
Descriptor openLocked(const Folder& folder) {
  Descriptor file;
  struct stat status {};
  do {
    file = openFile(folder, O_RDWR | O_APPEND | O_CREAT);
    if (file.isOpen()) {
      lock(file.number());
      fstat(file.number(), &status);
    }
  } while (file.isOpen() && status.st_nlink == 0);
  return file;
}

/// The lines at the end of a file.
struct Tail {
  std::string content{};
  bool isWhole = true;  ///< whether there is nothing before them
};

/// Reads at most the last 64 MiB: a thousand lines of 5,000 characters take 5 MB.
Tail tailOf(int file) {
  constexpr off_t kMost = off_t{64} << 20;
  const off_t size = lseek(file, 0, SEEK_END);
  const off_t begin = std::max<off_t>(size - kMost, 0);
  Tail tail{.isWhole = begin == 0};
  tail.content.reserve(static_cast<std::size_t>(std::max<off_t>(size - begin, 0)));
  lseek(file, begin, SEEK_SET);
  std::array<char, 4096> part;
  ssize_t count = 0;
  while ((count = read(file, part.data(), part.size())) > 0) {
    tail.content.append(part.data(), static_cast<std::size_t>(count));
  }
  if (!tail.isWhole) {
    const std::size_t firstEnd = tail.content.find('\n');
    tail.content.erase(0, firstEnd == std::string::npos ? firstEnd : firstEnd + 1);
  }
  return tail;
}

/// Writes all of `text`, or nothing.
bool append(int file, std::string_view text) {
  const off_t end = lseek(file, 0, SEEK_END);
  if (write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size())) {
    return true;
  }
  [[maybe_unused]] const int cut = ftruncate(file, end);
  return false;
}

/// Puts a new file in the place of the old one.
void replace(const Folder& folder, std::string_view content) {
  const int place = folder.descriptor.number();
  unlinkat(place, kNewName, 0);  // of a console that was killed
  const Descriptor file = createFile(folder, kNewName);
  if (file.isOpen() && append(file.number(), content)) {
    renameat(place, kNewName, place, kFileName);
  } else {
    unlinkat(place, kNewName, 0);
  }
}

/// Where the last `count` lines of `content` begin.
std::size_t beginOfLast(std::size_t count, std::string_view content) {
  std::size_t begin = content.size();
  for (; count > 0 && begin > 0; --count) {
    begin = content.substr(0, begin - 1).rfind('\n') + 1;
  }
  return begin;
}

}  // namespace

std::vector<std::string> readHistoryFile(std::size_t most) {
  std::vector<std::string> lines;
  const std::optional<Folder> folder = openFolder(IfMissing::Leave);
  const Descriptor file = folder ? openFile(*folder, O_RDONLY) : Descriptor();
  const std::string content = file.isOpen() ? tailOf(file.number()).content : "";
  for (std::size_t begin = beginOfLast(most, content); begin < content.size();) {
    const std::size_t end = std::min(content.find('\n', begin), content.size());
    lines.push_back(content.substr(begin, end - begin));
    begin = end + 1;
  }
  return lines;
}

void appendToHistoryFile(const std::string& line, std::size_t most) {
  const std::optional<Folder> folder = openFolder(IfMissing::Create);
  const Descriptor file = folder ? openLocked(*folder) : Descriptor();
  if (!file.isOpen()) {
    return;
  }
  const Tail tail = tailOf(file.number());
  const bool isCut = !tail.content.empty() && tail.content.back() != '\n';  // on a full disk
  const std::string added = (isCut ? "\n" : "") + line + '\n';
  const std::size_t begin = beginOfLast(most - 1, tail.content);
  if (tail.isWhole && begin == 0) {
    append(file.number(), added);
  } else {
    replace(*folder, tail.content.substr(begin) + added);
  }
}

}  // namespace lineup
