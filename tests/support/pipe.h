// Pipes.

#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace lineup::test {

/// Closes the file, unless that was done, and notes that.
inline void closeFile(int& file) {
  if (file >= 0) {
    close(std::exchange(file, -1));
  }
}

struct Pipe {
  int readEnd = -1;
  int writeEnd = -1;

  Pipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
      throw std::system_error(errno, std::generic_category(), "pipe");
    }
    readEnd = ends[0];
    writeEnd = ends[1];
  }
  ~Pipe() {
    closeFile(readEnd);
    closeFile(writeEnd);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
};

}  // namespace lineup::test
