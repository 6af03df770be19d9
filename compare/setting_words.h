// The settings of a configuration in the words of the prompt's commands.

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "hub_module_types.h"

namespace lineup {

/// A setting as a command of the prompt names it.
struct WordedSetting {
  const char* command;  ///< "rfmod", "tdtscan cofdm"
  /// The word for the value that a configuration holds: "qam"; "not set" where an optional field is
  /// not; "unknown (N)" for a value that no word stands for. Two values never have the same text.
  std::string (*word)(const korvel::thrift::hub_module::HeadendConfig&);
  /// The fields that it is made of, as JSON pointers into the named JSON.
  std::vector<std::string> fields;
};

/// Every setting, in the order in which they are shown.
std::span<const WordedSetting> wordedSettings();

/// The word for PLSItem::plsType: "Auto", "Gold", "Root", or "unknown (N)".
std::string plsTypeWord(int32_t type);

}  // namespace lineup
