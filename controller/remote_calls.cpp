#include <iostream>

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
  endIfSignalled();
  try {
    const EndingSignalsHeld uninterrupted;
    ControllerClient client = makeControllerClient();
    call(client);
  } catch (...) {
    (std::cout << ... << errorLine) << std::endl;
  }
  endIfSignalled();
}

/// Takes the place of `target` as the record of a reply. A record's own read() keeps the fields
/// that the reply leaves out, so `target` is emptied first - but only when the record begins to
/// arrive.
template <class Record>
class FreshRecord : public Record {
 public:
  explicit FreshRecord(Record& target) : target_(target) {}

  uint32_t read(apache::thrift::protocol::TProtocol* protocol) override {
    target_ = Record();
    return target_.read(protocol);
  }

 private:
  Record& target_;
};

}  // namespace

void LineupEditor::fetchHeadendConfig() {
  callController(
      [this](ControllerClient& client) {
        FreshRecord reply(config);
        client.getHeadendConfig(reply);
        pendingChanges = false;
      },
      "ERROR: Could not get current config from ControllerTask");
}

void LineupEditor::fetchHeadendStatus() {
  callController(
      [this](ControllerClient& client) {
        FreshRecord reply(status);
        client.getHeadendStatus(reply);
      },
      "ERROR: Could not get current status from ControllerTask");
}

void LineupEditor::commitHeadendConfig() {
  callController(
      [this](ControllerClient& client) {
        hub_module::HeadendStatus followingStatus;
        client.setHeadendConfig(followingStatus, config);
        pendingChanges = false;
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
