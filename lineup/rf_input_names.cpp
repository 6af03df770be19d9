#include "lineup/rf_input_names.h"

#include <span>

#include "support/words.h"

namespace lineup {

namespace {

using general::RFInputId;

struct InputName {
  const char* name;
  RFInputId::type id;
};

constexpr InputName kInputs[] = {
    {"SAT1", RFInputId::SAT1}, {"SAT2", RFInputId::SAT2}, {"SAT3", RFInputId::SAT3},
    {"SAT4", RFInputId::SAT4}, {"SAT5", RFInputId::SAT5}, {"SAT6", RFInputId::SAT6},
    {"SAT7", RFInputId::SAT7}, {"SAT8", RFInputId::SAT8}, {"TDT1", RFInputId::TDT1},
    {"TDT2", RFInputId::TDT2},
};

constexpr InputName kGroups[] = {{"TDTALL", RFInputId::TDTALL}, {"SATALL", RFInputId::SATALL}};

constexpr std::span<const InputName> kInputsAndGroups[] = {kInputs, kGroups};

}  // namespace

std::string rfInputName(RFInputId::type id) {
  for (const InputName& input : kInputs) {
    if (input.id == id) {
      return input.name;
    }
  }
  return "UNKNOWN";
}

bool parseRFInputName(std::string& name, RFInputId::type& id) {
  upperCase(name);
  for (const std::span<const InputName> names : kInputsAndGroups) {
    for (const InputName& input : names) {
      if (name == input.name) {
        id = input.id;
        return true;
      }
    }
  }
  return false;
}

std::vector<std::string> rfInputNames() {
  std::vector<std::string> result;
  for (const std::span<const InputName> names : kInputsAndGroups) {
    for (const InputName& input : names) {
      result.emplace_back(input.name);
    }
  }
  return result;
}

}  // namespace lineup
