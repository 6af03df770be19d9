// What differs between two configurations, in the installer's words.

#pragma once

#include <string>

#include "hub_module_types.h"

namespace lineup {

/// A line for each difference, in this order; empty exactly if the records are equal.
///  - Settings by the words of the prompt's commands: "rfmod: cofdm -> qam".
///  - Entries of the lineups, matched by the service that they name, so that one entry put in front
///    is one line: "RF lineup: added at 1: "News", SAT 11778 MHz, SID 4101, type 1", and likewise
///    "removed from", "moved from 5 to 2", "changed at". Such a line implies that the service is
///    new, or gone, unless another line says that it is, or was, in no lineup. A
///    new entry's line ends with what it has besides the defaults, or besides what a removed one in
///    its place had, and names its service by number where another service is the same.
///  - Services: those in no lineup, and what differs in one. Services are matched by the place
///    that they are received from and their SID (DVB), or by their address (ENC). A new service
///    adds the fields that its entries do not show and that are not at their defaults; a service
///    that replaces another under its number, the other fields that differ. The numbers of other
///    services that are added or removed are left out.
///  - Muxes of the IP inputs, as "addipmux" names them: "IP input 4/0: added mux "udp://...", UUID
///    ...", and items of the PLS list, as "addpls" takes them: "PLS item 2: Gold 5 -> Root 5".
///  - Everything else by its path in the named JSON: "/installerInfo/name: "a" -> "b"".
/// Texts of the records are quoted, and control characters in them escaped.
std::string configDifference(const korvel::thrift::hub_module::HeadendConfig& from,
                             const korvel::thrift::hub_module::HeadendConfig& to);

}  // namespace lineup
