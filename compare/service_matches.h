// Which services of one configuration are which of another.

#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <utility>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// What an entry of a lineup refers to: the LineupEntryKind and the key of a service.
using ServiceReference = std::pair<int32_t, int32_t>;

/// The services of a kind that both configurations have: their keys in each, by those in the other.
struct SameServices {
  std::map<int32_t, int32_t> nowByBefore;
  std::map<int32_t, int32_t> beforeByNow;

  void add(int32_t before, int32_t now) {
    nowByBefore.emplace(before, now);
    beforeByNow.emplace(now, before);
  }
};

/// By LineupEntryKind.
using ServiceMatches = std::map<int32_t, SameServices>;

/// Services are the same whatever their keys and other fields if they are received from the same
/// muxes with the same SID (DVB), have the same address (ENC) or the same type (EMPTY). Those under
/// the same key are matched first, then the others in the order of their keys.
ServiceMatches matchServices(const hub_module::LineupConfig& from,
                             const hub_module::LineupConfig& to);

/// The services that are the same as another one of their lineup.
std::set<ServiceReference> duplicatedServices(const hub_module::LineupConfig& lineup);

}  // namespace lineup
