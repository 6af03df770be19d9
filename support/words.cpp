#include "support/words.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace lineup {

std::vector<std::string> splitWords(const std::string& text, char delimiter) {
  return readWords(text, delimiter, [](std::string word) { return word; });
}

int32_t readNumber(const std::string& word) {
  constexpr long kLeast = std::numeric_limits<int32_t>::min();
  constexpr long kMost = std::numeric_limits<int32_t>::max();
  return static_cast<int32_t>(std::clamp(std::strtol(word.c_str(), nullptr, 10), kLeast, kMost));
}

bool isOneWord(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte <= ' ' || byte == 0x7f;  // control characters, and the blank
  });
}

void upperCase(std::string& text) {
  constexpr int kDistance = 'a' - 'A';
  for (char& byte : text) {
    if (byte >= 'a' && byte <= 'z') {  // not std::toupper(), which depends on the locale
      byte = static_cast<char>(byte - kDistance);
    }
  }
}

}  // namespace lineup
