#include "print/setting_words.h"

#include <optional>
#include <span>

namespace lineup {

namespace {

constexpr Choice kPlsTypes[] = {{"Auto", 0}, {"Gold", 1}, {"Root", 2}};

std::string wordFor(std::span<const Choice> choices, int32_t value) {
  const Choice* const choice = findValue(choices, value);
  return choice == nullptr ? unknownWord(value) : std::string(choice->word);
}

}  // namespace

std::string settingWord(const Setting& setting, const hub_module::HeadendConfig& config) {
  const std::optional<int32_t> value = setting.value(config);
  return value ? wordFor(setting.choices, *value) : std::string(setting.withoutValue);
}

std::string unknownWord(int32_t number) {
  return "unknown (" + std::to_string(number) + ")";
}

std::string plsTypeWord(int32_t type) {
  return wordFor(kPlsTypes, type);
}

}  // namespace lineup
