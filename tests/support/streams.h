// The standard streams of the test's own process.

#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>

namespace lineup::test {

/// What `work` prints on standard output.
template <class Work>
std::string printed(Work work) {
  testing::internal::CaptureStdout();
  try {
    work();
  } catch (...) {
    testing::internal::GetCapturedStdout();
    throw;
  }
  return testing::internal::GetCapturedStdout();
}

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
