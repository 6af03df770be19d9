#include "simulator/state_store.h"

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <functional>
#include <set>
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

namespace lineup::test {
namespace {

using simulator::StateStore;

TEST(StateStore, RefusesAFileThatAnotherReplacesBetweenTheOpeningAndTheLock) {
  const TemporaryFolder folder;
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

TEST(StateStore, WritesThroughTemporaryFilesWhoseNamesNobodyCanForesee) {
  const test::TemporaryFolder folder;
  StateStore store(folder.file("state.json"));
  const Descriptor watch(inotify_init1(IN_CLOEXEC));
  ASSERT_GE(inotify_add_watch(watch.number(), folder.path().c_str(), IN_CREATE), 0);
  std::set<std::string> names;
  for (int count = 0; count < 2; ++count) {
    store.replace(store.state());
    alignas(inotify_event) char room[1000];
    ASSERT_GT(read(watch.number(), room, sizeof room), 0);
    names.insert(reinterpret_cast<const inotify_event*>(room)->name);
  }
  EXPECT_EQ(names.size(), 2U);
}

}  // namespace
}  // namespace lineup::test
