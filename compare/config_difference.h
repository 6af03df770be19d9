// What differs between two configurations, in the installer's words.

#pragma once

#include <string>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// A line for each difference, in this order; empty exactly if the records are equal.
///  - Settings by the words of the prompt's commands: "rfmod: cofdm -> qam".
///  - Entries: matched by the service they refer to. A line says "added at", "removed from", "moved
///    from 5 to 2" or "changed at": "RF lineup: added at 1: "News", SAT 11778 MHz, SID 4101, type
///    1". It implies that the service itself was added or removed, unless another line says it is
///    in no lineup. "added" also lists fields that differ from the defaults, or from the entry
///    removed at that position, and the service's key if another service is identical.
///  - Services: those in no lineup, and the fields that differ. Services are matched by the place
///    that they are received from and their SID (DVB), or by their address (ENC). A new service
///    adds the fields that its entries do not show and that are not at their defaults; a service
///    that replaces another under its key, the other fields that differ. The keys of other
///    services that are added or removed are left out.
///  - Muxes of the IP inputs, as "addipmux" names them: "IP input 4/0: added mux "udp://...", UUID
///    ...", and items of the PLS list, as "addpls" takes them: "PLS item 2: Gold 5 -> Root 5".
///  - Everything else by its path in the named JSON: "/installerInfo/name: "a" -> "b"".
/// Texts of the records are quoted, and control characters in them escaped.
std::string configDifference(const hub_module::HeadendConfig& from,
                             const hub_module::HeadendConfig& to);

}  // namespace lineup
