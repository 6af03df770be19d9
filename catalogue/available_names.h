// The names of the services that the headend's inputs can receive, for completion.

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace lineup {

struct AvailableServiceName {
  std::string id;  ///< as the catalogue has it, perhaps not a number
  std::string name;
  const char* input;  ///< "SAT", "TDT", "Cable" or "IP"
  int32_t type;       ///< the DVB service type
};

/// Upper bound on the time that each function below takes; Tab blocks for as long.
inline constexpr std::chrono::seconds kTimeForNames{5};

/// Calls `visit` for every service of `input`, or, if that is empty, of all inputs, table by table
/// in the order of kTables. Rows that cannot be read within kTimeForNames are left out without a
/// message. Does not create a missing catalogue.
void visitAvailableServiceNames(std::string_view input,
                                const std::function<void(const AvailableServiceName&)>& visit);

/// Likewise every service that addCatalogueService() can find, by its catalogue id.
std::map<int32_t, AvailableServiceName> readAvailableServiceNames();

}  // namespace lineup
