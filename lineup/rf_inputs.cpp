#include <chrono>
#include <iostream>
#include <map>
#include <string>

#include "lineup/rf_input_names.h"
#include "model/lineup_editor.h"
#include "support/ending_signals.h"
#include "support/log.h"

namespace lineup {

namespace {

using general::RFInputId;

/// How long the headend takes to show a switched input in its status.
constexpr std::chrono::microseconds kSwitchingTime{1'250'000};

/// The marks of inputs 0 to 8 are padded to the width of a name; the last of the ten needs no
/// padding, and whatever a controller might send beyond it gets none.
constexpr std::size_t kPaddedMarks = 9;

/// Switches the terrestrial input `id`, or both if it is the group. They are sent as a pair.
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

/// Switches the satellite input `id`.
void switchSatInput(LineupEditor& editor, bool enable, RFInputId::type id) {
  auto config = editor.status.satRFInputs.at(id).config;
  config.enabled = enable;
  editor.sendSATRFInputConfig(id, config);
}

/// The remote calls report every failure themselves; should one let this pass, it is no reason to
/// end the console.
void logNotReady(const char* operation) {
  log_function(LOG_LEVEL_DEBUG, nullptr, "%s: exception hub_module::ControllerTaskIsNotReady",
               operation);
}

/// Adds which of `inputs` are switched on; an input that is there already stays as it is.
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
    marks += enabled ? "✓" : "✕";
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
        // The headend is sent the pair once for each of the two inputs.
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
