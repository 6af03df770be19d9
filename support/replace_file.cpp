#include "support/replace_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "support/descriptor.h"

namespace lineup {

namespace {

namespace fs = std::filesystem;

int checked(int result) {
  if (result < 0) {
    throw std::runtime_error(std::strerror(errno));
  }
  return result;
}

/// An open file that the destructor removes if it has its name still.
class NewFile {
 public:
  explicit NewFile(const fs::path& folder) : name_(folder / ".lineup-XXXXXX") {
    file_ = Descriptor(checked(mkostemp(name_.data(), O_CLOEXEC)));
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile() {
    if (!name_.empty()) {
      unlink(name_.c_str());
    }
  }

  void write(std::string_view content) {
    checked(writeAll(file_.number(), content) ? 0 : -1);
    checked(fsync(file_.number()));
    checked(close(file_.release()));
  }

  void renameTo(const fs::path& path) {
    checked(std::rename(name_.c_str(), path.c_str()));
    name_.clear();
  }

 private:
  std::string name_;
  Descriptor file_;
};

/// A folder whose names are to be on the disk. Opened before any is changed, as that may be
/// refused.
class SyncedFolder {
 public:
  explicit SyncedFolder(const fs::path& path)
      : folder_(checked(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))) {}

  void sync() const {
    // Some file systems have nothing to sync there.
    if (fsync(folder_.number()) < 0 && errno != EINVAL && errno != EROFS) {
      checked(-1);
    }
  }

 private:
  const Descriptor folder_;
};

/// The file that `path` names when links are followed, whether it is there or not. A pipe or a
/// device, which /dev/stdout may lead to, has no place that a file can take.
fs::path targetOf(const std::string& path) {
  std::error_code reason;
  const fs::file_type type = fs::status(path, reason).type();
  if (type == fs::file_type::none) {
    throw std::runtime_error(reason.message());
  }
  if (type != fs::file_type::not_found && type != fs::file_type::regular) {
    throw std::runtime_error("is no regular file");
  }
  fs::path target = path;
  while (fs::is_symlink(target)) {
    target = target.parent_path() / fs::read_symlink(target);
  }
  return target;
}

fs::path folderOf(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

}  // namespace

void replaceFile(const std::string& path, std::string_view content) {
  const fs::path target = targetOf(path);
  const fs::path place = folderOf(target);
  const SyncedFolder folder(place);
  NewFile file(place);
  file.write(content);
  file.renameTo(target);
  folder.sync();
}

}  // namespace lineup
