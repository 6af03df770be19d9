#include "terminal/letters.h"

#include <array>
#include <climits>
#include <cstddef>
#include <cwchar>

#include "support/utf8.h"

namespace lineup {

std::wstring charactersOf(const std::string& text) {
  std::wstring letters;
  std::mbstate_t state{};
  for (std::size_t begin = 0; begin < text.size();) {
    wchar_t letter = 0;
    std::size_t size = std::mbrtowc(&letter, text.data() + begin, text.size() - begin, &state);
    if (size == 0 || size > text.size() - begin || letter > kLastCodePoint) {
      state = {};
      size = 1;
    } else {
      letters += letter;
    }
    begin += size;
  }
  return letters;
}

std::string bytesOf(const std::wstring& letters) {
  std::string text;
  std::mbstate_t state{};
  for (const wchar_t letter : letters) {
    std::array<char, MB_LEN_MAX> bytes{};
    const std::size_t size = std::wcrtomb(bytes.data(), letter, &state);
    text.append(bytes.data(), size <= bytes.size() ? size : 0);
  }
  return text;
}

}  // namespace lineup
