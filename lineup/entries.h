// Encoder services as typed at the prompt.

#pragma once

#include <string>
#include <vector>

#include "hub_module_types.h"

namespace lineup {

/// The encoder service that a command line describes: the address of parseEncAddress() and the
/// console's fixed encoder settings. Raises what parseEncAddress() raises.
korvel::thrift::hub_module::ENCInputServiceConfig makeEncService(
    const std::vector<std::string>& words);

/// The HDMI input that a command line names: words[0] is the command, words[1] the slot of the
/// encoder module (3 to 12), words[2] its HDMI input (0 to 3). Raises std::runtime_error with the
/// text for the user if a word is missing or out of range.
korvel::thrift::module::ModuleChainAddress parseEncAddress(const std::vector<std::string>& words);

}  // namespace lineup
