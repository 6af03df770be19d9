#include "app/edits_copy_names.h"

#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "support/time_text.h"

namespace lineup {

std::string newCopyName(std::time_t time) {
  return "lineup-console-" + timeText("%Y%m%d-%H%M%S", time) + "-" + std::to_string(getpid()) +
         ".json";
}

bool isCopyName(const std::string& name) {
  int end = 0;
  std::array<char, 9> date{};
  std::array<char, 7> time{};
  std::array<char, 11> process{};
  constexpr char kPattern[] = "lineup-console-%8[0-9]-%6[0-9]-%10[0-9].json%n";
  return std::sscanf(name.c_str(), kPattern, date.data(), time.data(), process.data(), &end) == 3 &&
         static_cast<std::size_t>(end) == name.size() &&
         std::strlen(date.data()) + 1 == date.size() && std::strlen(time.data()) + 1 == time.size();
}

std::string withoutSuffix(const std::string& name) {
  for (const std::string_view suffix : kUnfinishedSuffixes) {
    if (name.ends_with(suffix)) {
      return name.substr(0, name.size() - suffix.size());
    }
  }
  return name;
}

}  // namespace lineup
