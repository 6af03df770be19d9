#include "support/utf8.h"

#include <algorithm>
#include <cstdint>
#include <cwchar>

namespace lineup {

namespace {

struct Character {
  uint32_t codePoint = 0;
  std::size_t length = 0;  ///< in bytes; 0 if it is none of UTF-8
};

/// The character that `text` begins with.
Character firstOf(std::string_view text) {
  const auto byteAt = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
  const unsigned first = byteAt(0);
  if (first < 0x80) {
    return {first, 1};
  }
  const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4 || length > text.size()) {
    return {};
  }
  uint32_t codePoint = first & (0x7fU >> length);
  for (std::size_t index = 1; index < length; ++index) {
    if ((byteAt(index) & 0xc0U) != 0x80U) {
      return {};
    }
    codePoint = (codePoint << 6U) | (byteAt(index) & 0x3fU);
  }
  constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};  // by length
  const bool isSurrogate = codePoint >= 0xd800 && codePoint < 0xe000;
  const bool isNone = codePoint < kLeast[length] || codePoint > 0x10ffff || isSurrogate;
  return isNone ? Character{} : Character{codePoint, length};
}

/// Opened once: reading it from its file takes longer than most texts.
locale_t utf8Locale() {
  static const locale_t kLocale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  return kLocale;
}

}  // namespace

std::size_t characterLength(std::string_view text) {
  return firstOf(text).length;
}

bool isControl(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  return character.size() == 1 ? first < 0x20 || first == 0x7f
                               : first == 0xc2 && static_cast<unsigned char>(character[1]) < 0xa0;
}

std::size_t columnsOf(std::string_view text) {
  const Utf8Locale utf8;
  std::size_t columns = 0;
  while (!text.empty()) {
    const Character character = firstOf(text);
    const int width =
        character.length == 0 ? 1 : wcwidth(static_cast<wchar_t>(character.codePoint));
    columns += width < 0 ? 1 : static_cast<std::size_t>(width);
    text.remove_prefix(std::max<std::size_t>(character.length, 1));
  }
  return columns;
}

Utf8Locale::Utf8Locale() : before_(uselocale(utf8Locale())) {}  // no change for null

Utf8Locale::~Utf8Locale() {
  uselocale(before_);
}

}  // namespace lineup
