// Waiting for what nobody reports.

#pragma once

#include <chrono>
#include <stdexcept>
#include <thread>

namespace lineup::test {

/// Waits until `condition` holds, which is asked again and again. Fails after a minute.
template <class Condition>
void waitUntil(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= deadline) {
      throw std::runtime_error("waited for a minute in vain");
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

}  // namespace lineup::test
