// The characters of a text in UTF-8, in any locale.

#pragma once

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

}  // namespace lineup
