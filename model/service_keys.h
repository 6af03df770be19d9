// The keys under which the lineup's services are stored.

#pragma once

#include <cstdint>
#include <iterator>
#include <map>

namespace lineup {

/// The smallest integer of at least 1 that is no key of `services`. The map may hold any other
/// keys.
///
/// The search starts at the highest key, because the keys in use are almost always 1, 2, 3 and so
/// on without a gap: then one look is enough, however many services there are.
template <typename Service>
int32_t allocateServiceKey(const std::map<int32_t, Service>& services) {
  const auto notPositive = std::distance(services.begin(), services.lower_bound(1));
  // The n-th positive key is n exactly when every key from 1 to n is in use.
  auto n = static_cast<int32_t>(services.size()) - static_cast<int32_t>(notPositive);
  auto next = services.end();
  while (n > 0 && std::prev(next)->first != n) {
    --next;
    --n;
  }
  return n + 1;
}

}  // namespace lineup
