// Owning file descriptors, and reading and writing all that there is.

#pragma once

#include <unistd.h>

#include <optional>
#include <string>
#include <string_view>
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

/// Opens the file `path`, "-" for standard input, for reading. Not open, with the reason in errno,
/// if that fails.
Descriptor openForReading(const std::string& path);

/// All that `descriptor` has to be read from now on, waited for where it does not block. Nothing,
/// with the reason in errno, if it cannot be read.
std::optional<std::string> readAll(int descriptor);

/// Whether the file `path` can be read and holds `content` and nothing else.
bool fileHolds(const std::string& path, std::string_view content);

/// Writes some of `text`. Where `descriptor` takes no more for now, a non-blocking one as well,
/// waits until it does. Returns how much was written; 0 to try again; negative, with the reason in
/// errno, if it cannot be written.
ssize_t writeSome(int descriptor, std::string_view text);

/// Writes all of `text` so. Returns false, with the reason in errno, if it cannot be written.
bool writeAll(int descriptor, std::string_view text);

}  // namespace lineup
