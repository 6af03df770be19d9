#include "support/state_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "support/utf8.h"
#include "support/words.h"

namespace lineup {

namespace {

constexpr char kFolderName[] = "lineup-console";
constexpr int kFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
constexpr mode_t kModeOfFiles = S_IRUSR | S_IWUSR;

std::string variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

bool isAbsolute(const std::string& path) {
  return path.starts_with('/');
}

bool isFolder(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// The folder that holds the state folder; empty if the user has none. Without std::filesystem, as
/// every console comes here at its start and that library takes 64 KiB of memory.
std::string stateHome() {
  std::string state = variable("XDG_STATE_HOME");
  if (isAbsolute(state)) {
    return state;
  }
  const std::string home = variable("HOME");
  // A home that is not there, as that of "nobody", stays so.
  return isAbsolute(home) && isFolder(home) ? home + "/.local/state" : "";
}

/// Makes `path`, which is absolute, and what is missing above it, closed to others.
void createFolders(const std::string& path) {
  const mode_t before = umask(S_IRWXG | S_IRWXO);  // not one that shuts the user out
  for (std::size_t end = 0; end != std::string::npos;) {
    end = path.find('/', end + 1);
    mkdir(path.substr(0, end).c_str(), S_IRWXU);
  }
  umask(before);
}

bool isPrivate(int folder) {
  struct stat status {};
  if (fstat(folder, &status) != 0 || status.st_uid != geteuid()) {
    return false;
  }
  return (status.st_mode & ALLPERMS) == S_IRWXU || fchmod(folder, S_IRWXU) == 0;
}

/// Whether `text` is UTF-8 without control characters.
bool isPlainUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    if (length == 0 || isControl(text.substr(0, length))) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}

/// Whether a command can name it, on a terminal too, where line editing drops everything else.
bool canBeTyped(const std::string& path) {
  return isOneWord(path) && isPlainUtf8(path);
}

void addFolder(const std::string& path, std::vector<Folder>& folders) {
  Descriptor folder(open(path.c_str(), kFolder));
  if (folder.isOpen()) {
    folders.push_back({path, std::move(folder)});
  }
}

}  // namespace

std::optional<Folder> openStateFolder(IfMissing ifMissing) {
  const std::string home = stateHome();
  if (home.empty()) {
    return std::nullopt;
  }
  const std::string path = pathIn(home, kFolderName);
  if (ifMissing == IfMissing::Create) {
    createFolders(path);
  }
  const Descriptor parent(open(home.c_str(), kFolder));
  if (!parent.isOpen()) {
    return std::nullopt;
  }
  Descriptor folder(openat(parent.number(), kFolderName, kFolder | O_NOFOLLOW));
  if (!folder.isOpen() || !isPrivate(folder.number())) {
    return std::nullopt;
  }
  return Folder{path, std::move(folder)};
}

std::vector<Folder> openFoldersForFiles(IfMissing ifMissing) {
  std::vector<Folder> folders;
  if (std::optional<Folder> state = openStateFolder(ifMissing)) {
    folders.push_back(std::move(*state));
  }
  if (const std::string temporary = variable("TMPDIR"); !temporary.empty()) {
    std::error_code none;
    addFolder(std::filesystem::absolute(temporary, none).string(), folders);
  }
  addFolder("/tmp", folders);
  std::erase_if(folders, [](const Folder& folder) { return !canBeTyped(folder.path); });
  return folders;
}

std::string pathIn(const std::string& folder, const std::string& name) {
  return folder + (folder.ends_with('/') ? "" : "/") + name;
}

Descriptor openOwnFile(const Folder& folder, const std::string& name, int access,
                       struct stat& status) {
  const int flags = access | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  Descriptor file(openat(folder.descriptor.number(), name.c_str(), flags, kModeOfFiles));
  const bool isOwn = file.isOpen() && fstat(file.number(), &status) == 0 &&
                     S_ISREG(status.st_mode) && status.st_uid == geteuid();
  return isOwn ? std::move(file) : Descriptor();
}

Descriptor createFile(const Folder& folder, const std::string& name) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  return Descriptor(openat(folder.descriptor.number(), name.c_str(), kFlags, kModeOfFiles));
}

}  // namespace lineup
