#include "support/memory_limit.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdint>
#include <new>
#include <vector>

namespace lineup::test {
namespace {

rlim_t limitOfData() {
  rlimit limit{};
  EXPECT_EQ(getrlimit(RLIMIT_DATA, &limit), 0);
  return limit.rlim_cur;
}

#ifdef SANITIZED

TEST(MemoryLimit, IsNotSetUnderASanitizer) {
  const rlim_t before = limitOfData();
  limitMemory();
  EXPECT_EQ(limitOfData(), before);
}

#else

uint64_t machineMemory() {
  return static_cast<uint64_t>(sysconf(_SC_PHYS_PAGES)) *
         static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
}

TEST(MemoryLimit, IsHalfOfTheMachines) {
  limitMemory();
  EXPECT_GT(limitOfData(), machineMemory() / 2 - 100'000);
  EXPECT_LE(limitOfData(), machineMemory() / 2);
}

TEST(MemoryLimit, KeepsALowerOne) {
  const rlimit low{100'000'000, RLIM_INFINITY};
  ASSERT_EQ(setrlimit(RLIMIT_DATA, &low), 0);
  limitMemory();
  EXPECT_EQ(limitOfData(), 100'000'000U);
}

TEST(MemoryLimit, LeavesRoomBelowItAndNoneBeyond) {
  limitMemory();
  EXPECT_NO_THROW(std::vector<char>().reserve(machineMemory() / 4));
  EXPECT_THROW(std::vector<char>().reserve(machineMemory() / 2), std::bad_alloc);
}

#endif

}  // namespace
}  // namespace lineup::test
