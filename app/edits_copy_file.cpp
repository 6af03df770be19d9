#include "app/edits_copy_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <system_error>

#include "app/edits_copy_names.h"
#include "controller/config_file.h"

namespace lineup {

namespace {

[[noreturn]] void throwErrno() {
  throw std::system_error(errno, std::generic_category());
}

/// Creates a temporary file that is to be renamed to `name`.
std::optional<EditsCopyFile> createTemporary(const Folder& folder, const std::string& name,
                                             const char* suffix) {
  EditsCopyFile file{&folder, name, name + suffix};
  file.descriptor = createFile(folder, file.temporaryName);
  if (!file.descriptor.isOpen()) {
    return std::nullopt;
  }
  fchmod(file.descriptor.number(), S_IRUSR | S_IWUSR);  // whatever the umask
  flock(file.descriptor.number(), LOCK_EX | LOCK_NB);
  return file;
}

}  // namespace

/// The name of this second may be taken: process numbers come again in containers, and seconds on a
/// board whose clock is not set.
std::optional<EditsCopyFile> EditsCopyFile::createNew(const Folder& folder) {
  for (std::time_t time = std::time(nullptr);; ++time) {
    std::optional<EditsCopyFile> file =
        createTemporary(folder, newCopyName(time), kUnfinishedSuffixes[0]);
    if (!file) {
      if (errno != EEXIST) {
        return file;
      }
      // The other order would miss one that is renamed in between.
    } else if (faccessat(folder.descriptor.number(), file->name.c_str(), F_OK,
                         AT_SYMLINK_NOFOLLOW) != 0) {
      return file;
    } else {
      file->unlinkTemporary();
    }
  }
}

std::optional<EditsCopyFile> EditsCopyFile::createNext() const {
  const bool isFirst = temporaryName.ends_with(kUnfinishedSuffixes[0]);
  return createTemporary(*folder, name, kUnfinishedSuffixes[isFirst ? 1 : 0]);
}

void EditsCopyFile::fill(const hub_module::HeadendConfig& config) const {
  writeConfig(descriptor.number(), config);
  if (fsync(descriptor.number()) != 0) {
    throwErrno();
  }
}

void EditsCopyFile::renameIntoPlace() const {
  const int place = folder->descriptor.number();
  if (renameat(place, temporaryName.c_str(), place, name.c_str()) != 0) {
    throwErrno();
  }
}

bool EditsCopyFile::unlinkTemporary() const {
  return unlinkat(folder->descriptor.number(), temporaryName.c_str(), 0) == 0 || errno != ENOENT;
}

bool EditsCopyFile::isThere() const {
  struct stat status {};
  return folder != nullptr && fstat(descriptor.number(), &status) == 0 && status.st_nlink > 0;
}

/// The temporary name first: a child that still runs could otherwise rename it after `name` was
/// unlinked.
void EditsCopyFile::discard() noexcept {
  if (folder != nullptr) {
    unlinkTemporary();
  }
  remove();
}

void EditsCopyFile::remove() noexcept {
  if (isThere()) {
    unlinkat(folder->descriptor.number(), name.c_str(), 0);
  }
  *this = EditsCopyFile();
}

}  // namespace lineup
