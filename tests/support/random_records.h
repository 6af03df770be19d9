// Records with every field filled with random values, for whoever copies, encodes or compares them.

#pragma once

#include <cstdint>

#include "hub_module_types.h"

namespace lineup::test {

/// The same record for the same `seed`. Every container has elements, every optional field is set,
/// numbers go over their whole range, and text holds accents, quotes, backslashes, control
/// characters, the signs ✓ and ✕ and characters of four bytes; not NUL, which the library's JSON
/// reader drops. Keys that the contract ties to other fields (a mux's uuid) are not tied here.
korvel::thrift::hub_module::HeadendConfig randomHeadendConfig(uint32_t seed);
korvel::thrift::hub_module::HeadendStatus randomHeadendStatus(uint32_t seed);

/// The seed, of the first fifty, of the configuration with the shortest file.
uint32_t shortConfigSeed();

}  // namespace lineup::test
