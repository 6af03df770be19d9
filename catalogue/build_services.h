// Services of the catalogue as the lineup stores them.

#pragma once

#include <cstdint>

#include "hub_module_types.h"

namespace lineup {

/// Each builds a service from the first row of its table with the catalogue id `id`. Integer cells
/// that are NULL become 0, also where the record's default is another.
///
/// Raises std::runtime_error "Service not found on DB" if there is no such row or the table cannot
/// be read, and what std::stoi does (not a runtime error) if the row's integer list is malformed.
korvel::thrift::hub_module::DVBInputServiceConfig buildSatService(int32_t id);
korvel::thrift::hub_module::DVBInputServiceConfig buildTdtService(int32_t id);
korvel::thrift::hub_module::DVBInputServiceConfig buildCableService(int32_t id);
korvel::thrift::hub_module::DVBInputServiceConfig buildIPService(int32_t id);

}  // namespace lineup
