// The services of the catalogue at a glance, for completion.

#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace lineup {

struct ServiceName {
  std::string name;
  const char* kind;  ///< "SAT", "TDT", "Cable" or "IP"
};

/// Every service that addCatalogueService() can find, by its catalogue id. What cannot be read is
/// left out: at once, without a message and without another try.
std::map<int32_t, ServiceName> readServiceNames();

}  // namespace lineup
