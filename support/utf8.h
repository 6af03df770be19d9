// The characters of a text in UTF-8, in any locale.

#pragma once

#include <locale.h>

#include <cstddef>
#include <string_view>

namespace lineup {

/// Unicode's last code point. glibc's C.UTF-8 also takes sequences of four to six bytes beyond it,
/// on the longest of which libedit aborts.
inline constexpr wchar_t kLastCodePoint = 0x10FFFF;

/// How many bytes the character that `text` begins with has; 0 if it is none of UTF-8.
std::size_t characterLength(std::string_view text);

/// Whether a character would do something to a terminal: the control characters of ASCII and those
/// beyond it (U+0080 to U+009F).
bool isControl(std::string_view character);

/// How many columns of a terminal `text` takes, as wcwidth() has it: two for a wide letter, none
/// for a combining mark. A character that cannot be printed, and a byte that is not UTF-8, counts
/// as one.
std::size_t columnsOf(std::string_view text);

/// For its lifetime, the characters of this thread are those of the locale C.UTF-8, whatever the
/// locale of the process; no change on a system without C.UTF-8.
class Utf8Locale {
 public:
  Utf8Locale();
  ~Utf8Locale();
  Utf8Locale(const Utf8Locale&) = delete;
  Utf8Locale& operator=(const Utf8Locale&) = delete;

 private:
  const locale_t before_;
};

}  // namespace lineup
