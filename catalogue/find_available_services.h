// Finding the catalogue's available services by their name: the find commands of
// model/lineup_editor.h, and completion.

#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>

namespace lineup {

struct AvailableServiceName {
  std::string name;
  const char* kind;  ///< "SAT", "TDT", "Cable" or "IP"
  int32_t type;      ///< the DVB service type
};

/// The time limit of readAvailableServiceNames(), for which the Tab key blocks at most.
inline constexpr std::chrono::seconds kTimeForNames{5};

/// Every service that addCatalogueService() can find, by its catalogue id. What cannot be read, at
/// once or within kTimeForNames, is left out without a message. A missing catalogue stays missing.
std::map<int32_t, AvailableServiceName> readAvailableServiceNames();

}  // namespace lineup
