// Building DVB input services of the lineup from rows of the catalogue. addCatalogueService() of
// model/lineup_editor.h stores them.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// Each builds a service from the first row of its table with the catalogue id `id`. Integer cells
/// that are NULL become 0, also where the record's default is another.
///
/// Throws std::runtime_error "Service not found on DB" if there is no such row or the table cannot
/// be read, and what parseIntegerList() does (not a runtime error).
hub_module::DVBInputServiceConfig buildSatService(int32_t id);
hub_module::DVBInputServiceConfig buildTdtService(int32_t id);
hub_module::DVBInputServiceConfig buildCableService(int32_t id);
hub_module::DVBInputServiceConfig buildIPService(int32_t id);

/// The items of a list column, which have commas between them, as they stand, blanks and empty
/// items included. A trailing comma adds nothing, and an empty text has no items.
std::vector<std::string> parseTextList(const std::string& text);

/// The number that each item begins with. Throws std::invalid_argument for an item without one and
/// std::out_of_range for one beyond 32 bits, both with the text "stoi".
std::vector<int32_t> parseIntegerList(const std::string& text);

}  // namespace lineup
