// The services that the entries of lineups name, and the muxes that services name.

#pragma once

#include <cstdint>
#include <string>

#include "hub_module_types.h"
#include "model/input_types.h"
#include "model/namespaces.h"

namespace lineup {

/// The name that a new entry gets from the service that it names: the DVB service's own, "ENC
/// SLOT/INPUT" for an encoder's input, "EMPTY SLOT" for a reservation.
std::string serviceName(const hub_module::DVBInputServiceConfig& service);
std::string serviceName(const hub_module::ENCInputServiceConfig& service);
std::string serviceName(const hub_module::EmptyInputServiceConfig& service);

/// Its DVB service_type; 1 for an encoder's input.
int32_t serviceType(const hub_module::DVBInputServiceConfig& service);
int32_t serviceType(const hub_module::ENCInputServiceConfig& service);
int32_t serviceType(const hub_module::EmptyInputServiceConfig& service);

/// Calls `visit` with the service of `lineup` that an entry of this kind (LineupEntryKind) and key
/// names. Returns false if there is none.
template <class Visit>
bool visitService(const hub_module::LineupConfig& lineup, int32_t kind, int32_t key, Visit visit) {
  const auto visitIn = [&](const auto& services) {
    const auto found = services.find(key);
    if (found != services.end()) {
      visit(found->second);
    }
    return found != services.end();
  };
  switch (kind) {
    case hub_module::LineupEntryKind::DVB:
      return visitIn(lineup.dvbInputServices);
    case hub_module::LineupEntryKind::ENC:
      return visitIn(lineup.encInputServices);
    case hub_module::LineupEntryKind::EMPTY:
      return visitIn(lineup.emptyInputServices);
    default:
      return false;
  }
}

/// Calls `visit` with the input type, the member (a pointer to it) and the setter of each mux that
/// is set in `service`. There is one, but a record from elsewhere can have several.
template <class Visit>
void visitMuxes(const hub_module::DVBInputService& service, Visit visit) {
  using Service = hub_module::DVBInputService;
  const auto& has = service.__isset;
  if (has.lineupSATMux) {
    visit(kSatInput, &Service::lineupSATMux, &Service::__set_lineupSATMux);
  }
  if (has.lineupTDTMux) {
    visit(kTdtInput, &Service::lineupTDTMux, &Service::__set_lineupTDTMux);
  }
  if (has.lineupCableMux) {
    visit(kCableInput, &Service::lineupCableMux, &Service::__set_lineupCableMux);
  }
  if (has.ipMuxUUID) {
    visit(kIPInput, &Service::ipMuxUUID, &Service::__set_ipMuxUUID);
  }
}

}  // namespace lineup
