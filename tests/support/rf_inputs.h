// The RF inputs of a headend, as a controller has them and as the console shows them. Each
// character of a text of states is '+' for an input that is switched on; the inputs are TDT1, TDT2,
// SAT1 to SAT8 in this order.

#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "hub_module_types.h"
#include "tests/support/console_texts.h"
#include "tests/support/fake_controller.h"

namespace lineup::test {

/// What the console waits after it has switched an input.
inline constexpr std::chrono::microseconds kSwitchingTime{1'250'000};

inline const char* const kBadInput = "Error RF Input value. \n";

/// What is printed if the satellite input `id` cannot be sent.
inline std::string satFailed(int id) {
  return "ERROR: Could not set SATRFInputConfig for RFInput (" + std::to_string(id) +
         ") to ControllerTask\n";
}

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

/// A status with ten inputs, switched as `states` says. Voltages tell the inputs apart.
inline korvel::thrift::hub_module::HeadendStatus tenInputs(const std::string& states) {
  using korvel::thrift::general::RFInputId;
  korvel::thrift::hub_module::HeadendStatus status;
  for (int id = RFInputId::TDT1; id <= RFInputId::TDT2; ++id) {
    status.tdtRFInputs[static_cast<RFInputId::type>(id)].config.antennaVoltage = id * 11;
  }
  for (int id = RFInputId::SAT1; id <= RFInputId::SAT8; ++id) {
    status.satRFInputs[static_cast<RFInputId::type>(id)].config.lnb.voltage = 100 + id;
  }
  switchInputs(status, states);
  return status;
}

/// Each call as a text: "status", "TDT 11 on, 22 off" or "SAT 3 103 on" with the voltage and the
/// state that were sent, or else its method.
inline std::vector<std::string> describe(const std::vector<ReceivedCall>& calls) {
  std::vector<std::string> result;
  const auto sent = [](int32_t voltage, bool enabled) {
    return std::to_string(voltage) + (enabled ? " on" : " off");
  };
  for (const ReceivedCall& call : calls) {
    if (call.method == "getHeadendStatus") {
      result.emplace_back("status");
    } else if (call.method == "setTDTRFInputConfig") {
      result.push_back("TDT " + sent(call.tdt1.antennaVoltage, call.tdt1.enabled) + ", " +
                       sent(call.tdt2.antennaVoltage, call.tdt2.enabled));
    } else if (call.method == "setSATRFInputConfig") {
      result.push_back("SAT " + std::to_string(call.satId) + " " +
                       sent(call.satConfig.lnb.voltage, call.satConfig.enabled));
    } else {
      result.push_back(call.method);
    }
  }
  return result;
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
