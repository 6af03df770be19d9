// A service of each table of the catalogue: its row, and what the console makes of it.

#pragma once

#include <string>

#include "hub_module_types.h"
#include "tests/support/catalogue_file.h"

namespace lineup::test {

/// Rows with every column filled that the console uses.
extern const Cells kSatRow;
extern const Cells kTdtRow;
extern const Cells kCableRow;
extern const Cells kIPRow;

/// What the find commands print for them.
inline const std::string kSatLine = "1017\tChannel One FR: 11778 MHz SID: 4101 L: a,b\n";
inline const std::string kTdtLine = "17\tTélé Uno FR: 490000 kHz SID: 101 L: spa,,eng,\n";
inline const std::string kCableLine = "18\tKabel Eins FR: 306000 kHz SID: 201 L: \n";
inline const std::string kIPLine = "19\tIP Uno URL: udp://239.1.1.1:1234 kHz SID: 301 L: x\n";

/// The four lines in the order of "find".
inline const std::string kFoundLines = kTdtLine + kSatLine + kCableLine + kIPLine;
inline const std::string kNothingFound =
    "No TDT services found.\n"
    "No SAT services found.\n"
    "No Cable services found.\n"
    "No IP services found.\n";

/// What "adddvb" stores for them.
korvel::thrift::hub_module::DVBInputServiceConfig satService();
korvel::thrift::hub_module::DVBInputServiceConfig tdtService();
korvel::thrift::hub_module::DVBInputServiceConfig cableService();
korvel::thrift::hub_module::DVBInputServiceConfig ipService();

/// Adds the four rows.
void insertOneOfEach(CatalogueWriter& catalogue);

/// Adds `count` cable services: "Ch 1" with the id 1, and so on.
void fillCable(CatalogueWriter& catalogue, int count);

/// `row` with `cells` in place of its own.
Cells with(Cells row, const Cells& cells);

}  // namespace lineup::test
