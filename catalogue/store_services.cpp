// Putting services of the catalogue into the configuration.

#include <array>
#include <stdexcept>
#include <utility>

#include "catalogue/build_services.h"
#include "model/lineup_editor.h"

namespace lineup {

int32_t LineupEditor::storeDVBService(hub_module::DVBInputServiceConfig service) {
  auto& services = config.lineupConfig.dvbInputServices;
  const int32_t key = allocateServiceKey(services);
  services[key] = std::move(service);  // its lists can be long
  pendingChanges = true;
  return key;
}

int32_t LineupEditor::addCatalogueService(int32_t id) {
  // The first table that has the id wins.
  constexpr std::array kBuilders{buildSatService, buildTdtService, buildCableService,
                                 buildIPService};
  for (const auto build : kBuilders) {
    try {
      return storeDVBService(build(id));
    } catch (const std::runtime_error&) {
      continue;
    }
  }
  throw std::runtime_error("Service not found");
}

}  // namespace lineup
