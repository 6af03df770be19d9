#include "support/memory_limit.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>

namespace lineup {

namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

uint64_t halfOfTheMachine() {
  return static_cast<uint64_t>(sysconf(_SC_PHYS_PAGES)) / 2 *
         static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace

void limitMemory() {
  rlimit limit{};
  if (!kSanitized && getrlimit(RLIMIT_DATA, &limit) == 0) {
    limit.rlim_cur = static_cast<rlim_t>(std::min<uint64_t>(limit.rlim_cur, halfOfTheMachine()));
    setrlimit(RLIMIT_DATA, &limit);
  }
}

}  // namespace lineup
