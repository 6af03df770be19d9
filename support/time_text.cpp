#include "support/time_text.h"

#include <array>

namespace lineup {

std::string timeText(const char* format, std::time_t time) {
  std::tm local{};
  localtime_r(&time, &local);
  std::array<char, 32> text{};
  std::strftime(text.data(), text.size(), format, &local);
  return text.data();
}

}  // namespace lineup
