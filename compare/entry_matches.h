// Which entries of a lineup are which of the same lineup in another configuration.

#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "compare/service_matches.h"
#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// What becomes of the entries of the older lineup, by their index.
struct EntryMatches {
  std::vector<std::optional<std::size_t>> places;  ///< the index in the newer lineup
  std::vector<bool> stays;                         ///< false for one that is removed or moved
};

/// Matches entries by the services that they refer to, which are `from` and `to` in the order of
/// the entries; those that refer to the same service in their order. As few as possible are moved.
EntryMatches matchEntries(const std::vector<ServiceReference>& from,
                          const hub_module::LineupConfig& fromLineup,
                          const std::vector<ServiceReference>& to,
                          const hub_module::LineupConfig& toLineup, const ServiceMatches& services);

}  // namespace lineup
