#include "simulator/state_store.h"

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

#include "tests/support/temporary_folder.h"

namespace {

std::function<void()> beforeTheLock;  // done once

}  // namespace

/// Takes the place of the C library's.
extern "C" int flock(int file, int operation) noexcept {
  if (const auto work = std::exchange(beforeTheLock, nullptr)) {
    work();
  }
  return static_cast<int>(syscall(SYS_flock, file, operation));
}

namespace lineup::simulator {

namespace {

TEST(StateStore, RefusesAFileThatAnotherReplacesBetweenTheOpeningAndTheLock) {
  const test::TemporaryFolder folder;
  const std::string path = folder.file("state.json");
  StateStore other(path);
  beforeTheLock = [&other] { other.replace(other.state()); };
  try {
    const StateStore store(path);
    FAIL() << "the file belongs to two";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(error.what(), "the state file " + path + " is in use by another process");
  }
  EXPECT_FALSE(beforeTheLock);
}

}  // namespace

}  // namespace lineup::simulator
