#include "tests/fuzz/memory_limit.h"

#include <cstdio>
#include <cstdlib>

#if defined(SANITIZED)
#define LINEUP_COUNTS_MEMORY
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LINEUP_COUNTS_MEMORY
#endif
#endif

#ifdef LINEUP_COUNTS_MEMORY
// The sanitizer's own declarations, whose header does not come with every compiler.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
std::size_t __sanitizer_get_allocated_size(const volatile void* block);
int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                              void (*freed)(const volatile void*));
}
// NOLINTEND(bugprone-reserved-identifier)
#endif

namespace lineup::fuzz {

#ifdef LINEUP_COUNTS_MEMORY

namespace {

constexpr long long kLimit = 64LL << 20;

bool counting = false;
long long inUse = 0;

/// The bytes that the system's allocator takes for a block: sixteen at a time, its header included.
long long taken(std::size_t size) {
  constexpr std::size_t kHeader = 8;
  constexpr std::size_t kUnit = 16;
  constexpr std::size_t kSmallest = 32;
  const std::size_t block = (size + kHeader + kUnit - 1) / kUnit * kUnit;
  return static_cast<long long>(block < kSmallest ? kSmallest : block);
}

void countAllocated(const volatile void* /*block*/, std::size_t size) {
  if (!counting) {
    return;
  }
  inUse += taken(size);
  if (inUse > kLimit) {
    counting = false;
    std::fprintf(stderr, "an input takes more than 64 MiB: %lld bytes, the last %zu of them\n",
                 inUse, size);
    std::abort();
  }
}

void countFreed(const volatile void* block) {
  if (counting && block != nullptr) {
    inUse -= taken(__sanitizer_get_allocated_size(block));
  }
}

}  // namespace

MemoryLimit::MemoryLimit() {
  static const int installed =
      __sanitizer_install_malloc_and_free_hooks(countAllocated, countFreed);
  if (installed == 0) {
    std::abort();
  }
  inUse = 0;
  counting = true;
}

MemoryLimit::~MemoryLimit() {
  counting = false;
}

#else

MemoryLimit::MemoryLimit() = default;
MemoryLimit::~MemoryLimit() = default;

#endif

}  // namespace lineup::fuzz
