// An open descriptor that is closed in any case.

#pragma once

#include <unistd.h>

#include <utility>

namespace lineup {

/// Owns an open descriptor, or nothing (a negative number).
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() {
    if (isOpen()) {
      close(number_);
    }
  }

  bool isOpen() const { return number_ >= 0; }
  int number() const { return number_; }
  /// Whoever takes the number closes it from now on.
  int release() { return std::exchange(number_, -1); }

 private:
  int number_ = -1;
};

}  // namespace lineup
