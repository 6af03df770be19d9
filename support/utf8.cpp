#include "support/utf8.h"

#include <cstdint>

namespace lineup {

std::size_t characterLength(std::string_view text) {
  const auto byteAt = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
  const unsigned first = byteAt(0);
  if (first < 0x80) {
    return 1;
  }
  const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4 || length > text.size()) {
    return 0;
  }
  uint32_t character = first & (0x7fU >> length);
  for (std::size_t index = 1; index < length; ++index) {
    if ((byteAt(index) & 0xc0U) != 0x80U) {
      return 0;
    }
    character = (character << 6U) | (byteAt(index) & 0x3fU);
  }
  constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};  // by length
  const bool isSurrogate = character >= 0xd800 && character < 0xe000;
  return character < kLeast[length] || character > 0x10ffff || isSurrogate ? 0 : length;
}

bool isControl(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  return character.size() == 1 ? first < 0x20 || first == 0x7f
                               : first == 0xc2 && static_cast<unsigned char>(character[1]) < 0xa0;
}

}  // namespace lineup
