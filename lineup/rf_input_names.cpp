#include "lineup/rf_input_names.h"

#include <map>

#include "support/words.h"

namespace lineup {

using general::RFInputId;

namespace {

/// By their ids, the inputs before the groups.
const std::map<int, const char*>& kNames = general::_RFInputId_VALUES_TO_NAMES;

}  // namespace

std::string rfInputName(RFInputId::type id) {
  const auto input = kNames.find(id);
  return input != kNames.end() && id <= RFInputId::SAT8 ? input->second : "UNKNOWN";
}

bool parseRFInputName(std::string& name, RFInputId::type& id) {
  upperCase(name);
  for (const auto& [value, known] : kNames) {
    if (name == known) {
      id = static_cast<RFInputId::type>(value);
      return true;
    }
  }
  return false;
}

std::vector<std::string> rfInputNames() {
  std::vector<std::string> result;
  result.reserve(kNames.size());
  for (const auto& [value, name] : kNames) {
    result.emplace_back(name);
  }
  return result;
}

}  // namespace lineup
