#include "catalogue/item_lists.h"

#include "support/words.h"

namespace lineup {

std::vector<std::string> parseTextList(const std::string& text) {
  return splitWords(text, ',');
}

std::vector<int32_t> parseIntegerList(const std::string& text) {
  return readWords(text, ',', [](const std::string& item) -> int32_t { return std::stoi(item); });
}

}  // namespace lineup
