// A configuration as tables.

#pragma once

#include "hub_module_types.h"
#include "model/namespaces.h"
#include "print/text_table.h"

namespace lineup {

/// The settings by the words of the prompt's commands: setting, value.
TextTable settingsTable(const hub_module::HeadendConfig& config);

/// The lineups in output order: position from 1, name, kind, source (frequency, URL or encoder
/// input), SID, type (DVB service_type).
TextTable rfLineupTable(const hub_module::HeadendConfig& config);
TextTable ipLineupTable(const hub_module::HeadendConfig& config);

/// The reservations: key, type (DVB service_type), position in the RF lineup or nothing.
TextTable reservedSlotsTable(const hub_module::HeadendConfig& config);

/// The muxes of the IP inputs, a row each, and a row for an input without any: input, slot,
/// interface, address, mux (UUID), URL, name.
TextTable ipInputsTable(const hub_module::HeadendConfig& config);

/// The RF inputs of a status: input, state ("enabled" or "disabled"), locked ("yes" or "no").
TextTable rfInputsTable(const hub_module::HeadendStatus& status);

/// The items of the satellite scan's PLS list: item from 1, PLS type, PLS code.
TextTable scanTable(const hub_module::HeadendConfig& config);

}  // namespace lineup
