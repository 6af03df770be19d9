// The settings of a configuration in the words of the prompt's commands.

#pragma once

#include <cstdint>
#include <string>

#include "model/settings.h"

namespace lineup {

/// The word for the value that `config` holds: "qam"; "not set" where an optional field is not;
/// "unknown (N)" for a value that no word stands for. Two values never have the same text.
std::string settingWord(const Setting& setting, const hub_module::HeadendConfig& config);

/// "unknown (N)", for a number that no word stands for.
std::string unknownWord(int32_t number);

/// The word for PLSItem::plsType: "Auto", "Gold", "Root", or "unknown (N)".
std::string plsTypeWord(int32_t type);

}  // namespace lineup
