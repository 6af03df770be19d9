// The editor's calls to ControllerTask, whose failures are printed.

#include <iostream>

#include "controller/controller_calls.h"
#include "controller/controller_client.h"
#include "model/lineup_editor.h"
#include "support/ending_signals.h"

namespace lineup {

namespace {

/// Makes one call over a connection of its own. Whatever goes wrong is printed as the line made of
/// `errorLine` and goes no further. Signals do not interrupt the call; they end the program around
/// it.
template <class Call, class... Texts>
void callController(Call call, Texts... errorLine) {
  throwIfSignalled();
  try {
    const RemoteCallUnderWay uninterrupted(kLongestCall);
    ControllerClient client = makeControllerClient();
    call(client);
  } catch (const EndedBySignal&) {
    throw;  // before it began
  } catch (...) {
    std::cout << (isInterrupted() ? "\n" : "");  // after the "^C" that the terminal shows
    (std::cout << ... << errorLine) << std::endl;
  }
  throwIfSignalled();
}

}  // namespace

void LineupEditor::fetchHeadendConfig() {
  callController(
      [this](ControllerClient& client) {
        fetchConfig(client, config);
        pendingChanges = false;
        ++fetches;
        restoredFile.clear();
      },
      "ERROR: Could not get current config from ControllerTask");
}

void LineupEditor::fetchHeadendStatus() {
  callController([this](ControllerClient& client) { fetchStatus(client, status); },
                 "ERROR: Could not get current status from ControllerTask");
}

void LineupEditor::commitHeadendConfig() {
  callController(
      [this](ControllerClient& client) {
        sendConfig(client, config);
        pendingChanges = false;
        ++commits;
      },
      "ERROR: Could not set LineupConfig to ControllerTask");
}

void LineupEditor::sendTDTRFInputConfig(const hub_module::TDTRFInputConfig& tdt1,
                                        const hub_module::TDTRFInputConfig& tdt2) {
  callController([&](ControllerClient& client) { client.setTDTRFInputConfig(tdt1, tdt2); },
                 "ERROR: Could not set TDTRFInputConfig to ControllerTask");
}

void LineupEditor::sendSATRFInputConfig(general::RFInputId::type id,
                                        const hub_module::SATRFInputConfig& satConfig) {
  callController([&](ControllerClient& client) { client.setSATRFInputConfig(id, satConfig); },
                 "ERROR: Could not set SATRFInputConfig for RFInput (", static_cast<int>(id),
                 ") to ControllerTask");
}

}  // namespace lineup
