#include "simulator/messages.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <iostream>

namespace lineup::simulator {

namespace {

bool stamped = false;

/// Local time, for example "2026-06-17 09:30:00.125 ".
std::string stamp() {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  const auto sinceEpoch = now.time_since_epoch();
  const auto milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count() % 1000;
  std::tm local{};
  localtime_r(&seconds, &local);
  std::array<char, 40> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), "%F %T", &local);
  std::snprintf(text.data() + length, text.size() - length, ".%03d ",
                static_cast<int>(milliseconds));
  return text.data();
}

}  // namespace

void stampLines() {
  stamped = true;
}

void say(const std::string& line) {
  std::cout << (stamped ? stamp() : "") + line + '\n' << std::flush;
}

}  // namespace lineup::simulator
