// Finding the catalogue's available services by their name: the find commands of
// model/lineup_editor.h, and completion.

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
  const char* kind;  ///< "SAT", "TDT", "Cable" or "IP"
  int32_t type;      ///< the DVB service type
};

/// The time limit of each of the functions below, for which the Tab key blocks at most.
inline constexpr std::chrono::seconds kTimeForNames{5};

/// Calls `visit` for every service of `kind`, or of every kind if it is empty: first those of the
/// table in which an id is looked up first. What cannot be read, at once or within kTimeForNames,
/// is left out without a message. A missing catalogue stays missing.
void visitAvailableServiceNames(std::string_view kind,
                                const std::function<void(const AvailableServiceName&)>& visit);

/// Likewise every service that addCatalogueService() can find, by its catalogue id.
std::map<int32_t, AvailableServiceName> readAvailableServiceNames();

}  // namespace lineup
