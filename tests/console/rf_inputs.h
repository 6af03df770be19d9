// The RF inputs of a headend, as a controller has them and as the console shows them. Each
// character of a text of states is '+' for an input that is switched on; the inputs are TDT1, TDT2,
// SAT1 to SAT8 in this order.

#pragma once

#include <string>

#include "hub_module_types.h"

namespace lineup::test {

/// Switches the inputs of `status`, those that it lacks included.
inline void switchInputs(korvel::thrift::hub_module::HeadendStatus& status,
                         const std::string& states) {
  int number = 0;
  for (const char state : states) {
    const auto id = static_cast<korvel::thrift::general::RFInputId::type>(++number);
    if (number <= 2) {
      status.tdtRFInputs[id].config.enabled = state == '+';
    } else {
      status.satRFInputs[id].config.enabled = state == '+';
    }
  }
}

/// The text of states of a status with all ten inputs.
inline std::string inputStates(const korvel::thrift::hub_module::HeadendStatus& status) {
  std::string states;
  for (const auto& [id, input] : status.tdtRFInputs) {
    states += input.config.enabled ? '+' : '-';
  }
  for (const auto& [id, input] : status.satRFInputs) {
    states += input.config.enabled ? '+' : '-';
  }
  return states;
}

/// The table that the console prints of ten inputs.
inline std::string inputTable(const std::string& states) {
  std::string text =
      "\n\n   TDT1   TDT2   SAT1   SAT2   SAT3   SAT4   SAT5   SAT6   SAT7   SAT8   \n   ";
  for (const char state : states) {
    text += text.back() == ' ' ? " " : "      ";
    text += state == '+' ? "✓" : "✕";
  }
  return text + "\n\n\n";
}

}  // namespace lineup::test
