// The standard streams of the test's own process.

#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>

namespace lineup::test {

/// What is captured from `begin` to `end` while `work` runs.
template <class Work>
std::string captured(void (*begin)(), std::string (*end)(), Work work) {
  begin();
  try {
    work();
  } catch (...) {
    end();
    throw;
  }
  return end();
}

/// What `work` prints on standard output.
template <class Work>
std::string printed(Work work) {
  using namespace testing::internal;
  return captured(CaptureStdout, GetCapturedStdout, work);
}

/// What `work` writes to standard error.
template <class Work>
std::string errorsOf(Work work) {
  using namespace testing::internal;
  return captured(CaptureStderr, GetCapturedStderr, work);
}

/// Replaces standard error for its lifetime.
class StandardErrorIs {
 public:
  explicit StandardErrorIs(int descriptor) : before_(dup(STDERR_FILENO)) {
    dup2(descriptor, STDERR_FILENO);
  }
  ~StandardErrorIs() {
    dup2(before_, STDERR_FILENO);
    close(before_);
  }
  StandardErrorIs(const StandardErrorIs&) = delete;
  StandardErrorIs& operator=(const StandardErrorIs&) = delete;

 private:
  int before_;
};

/// Replaces standard input by a pipe that never ends, on the first call, and writes `text` to it.
inline void type(const std::string& text) {
  static const int writeEnd = [] {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0 || dup2(ends[0], STDIN_FILENO) != STDIN_FILENO) {
      throw std::runtime_error("cannot replace standard input by a pipe");
    }
    close(ends[0]);
    return ends[1];
  }();
  if (write(writeEnd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    throw std::runtime_error("cannot write to the pipe");
  }
}

}  // namespace lineup::test
