#include "controller/controller_calls.h"

#include <cstdint>
#include <utility>

#include "controller/complete_reply.h"
#include "rf_inputs_types.h"

namespace lineup {

namespace {

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

/// Takes a configuration that is complete out of a reply.
class CompleteConfigReply : public hub_module::HeadendConfig {
 public:
  uint32_t read(apache::thrift::protocol::TProtocol* protocol) override {
    CompleteReplyProtocol complete(*protocol);
    return HeadendConfig::read(&complete);
  }
};

/// Takes the RF inputs out of a reply with a status, and memory for nothing else.
class RFInputsReply : public hub_module::HeadendStatus {
 public:
  uint32_t read(apache::thrift::protocol::TProtocol* protocol) override {
    RFInputsOfStatus inputs;
    const uint32_t size = inputs.read(protocol);
    satRFInputs = std::move(inputs.satRFInputs);
    tdtRFInputs = std::move(inputs.tdtRFInputs);
    __isset.satRFInputs = inputs.__isset.satRFInputs;
    __isset.tdtRFInputs = inputs.__isset.tdtRFInputs;
    return size;
  }
};

}  // namespace

void fetchConfig(ControllerClient& client, hub_module::HeadendConfig& target) {
  FreshRecord reply(target);
  client.getHeadendConfig(reply);
}

void fetchCompleteConfig(ControllerClient& client, hub_module::HeadendConfig& target) {
  CompleteConfigReply reply;
  client.getHeadendConfig(reply);
  target = std::move(reply);
}

void fetchStatus(ControllerClient& client, hub_module::HeadendStatus& target) {
  FreshRecord reply(target);
  client.getHeadendStatus(reply);
}

void fetchRFInputs(ControllerClient& client, hub_module::HeadendStatus& target) {
  RFInputsReply reply;
  client.getHeadendStatus(reply);
  target = std::move(reply);
}

void sendConfig(ControllerClient& client, const hub_module::HeadendConfig& config) {
  RFInputsReply unused;
  client.setHeadendConfig(unused, config);
}

}  // namespace lineup
