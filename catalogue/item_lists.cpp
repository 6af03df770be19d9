#include "catalogue/item_lists.h"

#include "support/words.h"

namespace lineup {

std::vector<std::string> parseTextList(const std::string& text) {
  return splitWords(text, ',');
}

std::vector<int32_t> parseIntegerList(const std::string& text) {
  std::vector<int32_t> numbers;
  for (const std::string& item : parseTextList(text)) {
    numbers.push_back(std::stoi(item));
  }
  return numbers;
}

}  // namespace lineup
