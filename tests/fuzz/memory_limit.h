// How much memory one input may take.

#pragma once

namespace lineup::fuzz {

/// For its lifetime, ends the process with a message as soon as the memory allocated since its
/// construction exceeds 64 MiB: no input of up to 100 kB may need more. Counted as the system's
/// allocator would hand it out. Needs AddressSanitizer, and watches nothing without.
class MemoryLimit {
 public:
  MemoryLimit();
  ~MemoryLimit();
  MemoryLimit(const MemoryLimit&) = delete;
  MemoryLimit& operator=(const MemoryLimit&) = delete;
};

}  // namespace lineup::fuzz
