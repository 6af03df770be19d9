// The kinds of input that DVB services are received from, and the muxes that services name.

#pragma once

#include <array>
#include <cstdint>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

struct InputType {
  int32_t number;    ///< DVBInputService.inputType
  const char* name;  ///< as people read it
  const char* unit;  ///< of its muxes' frequency, after a blank; empty where a mux has a URL
};

inline constexpr InputType kTdtInput{1, "TDT", " kHz"};
inline constexpr InputType kSatInput{2, "SAT", " MHz"};
inline constexpr InputType kCableInput{3, "Cable", " kHz"};
inline constexpr InputType kIPInput{4, "IP", ""};

inline constexpr std::array kInputTypes{kTdtInput, kSatInput, kCableInput, kIPInput};

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
