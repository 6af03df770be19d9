// Files that are replaced whole, so that a crash leaves the old one or the new one.

#pragma once

#include <string>

namespace lineup::simulator {

/// Owns a file descriptor: the destructor closes it. Movable, not copyable.
class FileDescriptor {
 public:
  explicit FileDescriptor(int number = -1) : number_(number) {}
  FileDescriptor(FileDescriptor&& other) noexcept : number_(other.release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept;
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() { reset(); }

  /// The descriptor, or -1 if there is none.
  int number() const { return number_; }
  void reset();

 private:
  int release();

  int number_;
};

/// Whether there is a file at `path`; false too if stat() fails. Throws
/// std::runtime_error naming the path if it is no regular file but a folder or a device.
bool fileExists(const std::string& path);

/// Puts a file with `contents` at `path`, making the folders above it, by way of a temporary file
/// beside it. It is on disk when the call returns. Returns the file, still open and with an
/// exclusive flock() taken before it had its name. Throws std::runtime_error naming the path;
/// an existing file is then unchanged.
FileDescriptor replaceFile(const std::string& path, const std::string& contents);

}  // namespace lineup::simulator
