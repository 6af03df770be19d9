#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <map>
#include <string>

#include "lineup/check_mark.h"
#include "lineup/rf_input_names.h"
#include "model/lineup_editor.h"
#include "support/ending_signals.h"
#include "support/log.h"

namespace lineup {

namespace {

using general::RFInputId;

/// The time after which the headend's status shows that an input was switched.
constexpr std::chrono::microseconds kSwitchingTime{1'250'000};

/// Only the first nine marks are padded to the column width; the tenth ends the row.
constexpr std::size_t kPaddedMarks = 9;

/// Sends the pair of terrestrial inputs, with the input `id` switched, or both for TDTALL.
void switchTdtInputs(LineupEditor& editor, bool enable, RFInputId::type id) {
  auto tdt1 = editor.status.tdtRFInputs.at(RFInputId::TDT1).config;
  auto tdt2 = editor.status.tdtRFInputs.at(RFInputId::TDT2).config;
  if (id != RFInputId::TDT2) {
    tdt1.enabled = enable;
  }
  if (id != RFInputId::TDT1) {
    tdt2.enabled = enable;
  }
  editor.sendTDTRFInputConfig(tdt1, tdt2);
}

/// Sends the satellite input `id`, switched.
void switchSatInput(LineupEditor& editor, bool enable, RFInputId::type id) {
  auto config = editor.status.satRFInputs.at(id).config;
  config.enabled = enable;
  editor.sendSATRFInputConfig(id, config);
}

/// The remote calls catch this exception themselves; should one throw it, the console goes on.
void logNotReady(const char* operation) {
  log_function(LOG_LEVEL_DEBUG, nullptr, "%s: exception hub_module::ControllerTaskIsNotReady",
               operation);
}

/// Adds the states of `inputs`. An input that `states` has already is not replaced.
template <class Inputs>
void gatherStates(const Inputs& inputs, std::map<RFInputId::type, bool>& states) {
  for (const auto& [id, input] : inputs) {
    states.emplace(id, input.config.enabled);
  }
}

void printStates(const std::map<RFInputId::type, bool>& states) {
  std::string names;
  std::string marks;
  std::size_t position = 0;
  for (const auto& [id, enabled] : states) {
    names += rfInputName(id) + "   ";
    marks += checkMark(enabled);
    marks += position < kPaddedMarks ? "      " : "";
    ++position;
  }
  std::cout << "\n\n   " << names << "\n    " << marks << "\n\n\n" << std::flush;
}

}  // namespace

void LineupEditor::getRFInputState() {
  std::map<RFInputId::type, bool> states;
  try {
    fetchHeadendStatus();
    gatherStates(status.tdtRFInputs, states);
    gatherStates(status.satRFInputs, states);
  } catch (const hub_module::ControllerTaskIsNotReady&) {
    logNotReady("getRFInputState");
  }
  printStates(states);
}

void LineupEditor::setRFInputState(bool enable, const std::string& name) {
  try {
    RFInputId::type id{};
    std::string upperCaseName = name;
    if (!parseRFInputName(upperCaseName, id)) {
      std::cout << "Error RF Input value. " << std::endl;
      return;
    }
    fetchHeadendStatus();
    switch (id) {
      case RFInputId::TDT1:
      case RFInputId::TDT2:
        switchTdtInputs(*this, enable, id);
        break;
      case RFInputId::TDTALL:
        // The pair is sent once for each of the two inputs.
        for ([[maybe_unused]] const int32_t input : tdtInputIds) {
          switchTdtInputs(*this, enable, id);
        }
        break;
      case RFInputId::SATALL:
        for (const int32_t input : satInputIds) {
          switchSatInput(*this, enable, static_cast<RFInputId::type>(input));
        }
        break;
      default:
        switchSatInput(*this, enable, id);
        break;
    }
    waitFor(kSwitchingTime);
    getRFInputState();
  } catch (const hub_module::ControllerTaskIsNotReady&) {
    logNotReady("setRFInputState");
  }
}

}  // namespace lineup
