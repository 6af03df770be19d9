#include "controller/controller_calls.h"

#include <thrift/protocol/TProtocolDecorator.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include "controller/shape_follower.h"
#include "model/config_shape.h"
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

/// Reads what another protocol reads, and throws std::runtime_error for a record that lacks a field
/// which each writer writes: the generated code would keep the default. Unknown fields are skipped,
/// as by the generated code.
class CompleteReplyProtocol : public apache::thrift::protocol::TProtocolDecorator {
 public:
  using TType = apache::thrift::protocol::TType;
  using TProtocol = apache::thrift::protocol::TProtocol;

  /// `reply`, which reads a HeadendConfig next, has to outlive this.
  explicit CompleteReplyProtocol(TProtocol& reply)
      : TProtocolDecorator(std::shared_ptr<TProtocol>(std::shared_ptr<void>(), &reply)),
        reply_(reply),
        follower_(headendConfigShape()) {}

  uint32_t readStructBegin_virt(std::string& name) override {
    follower_.openRecord();
    return reply_.readStructBegin(name);
  }
  uint32_t readStructEnd_virt() override {
    const std::string lacked = follower_.lackedField();
    if (!lacked.empty()) {
      throw std::runtime_error("the reply is no complete configuration: " + lacked);
    }
    follower_.close();
    return reply_.readStructEnd();
  }
  uint32_t readFieldBegin_virt(std::string& name, TType& type, int16_t& id) override {
    const uint32_t read = reply_.readFieldBegin(name, type, id);
    if (type == apache::thrift::protocol::T_STOP) {
      follower_.closeField();
    } else if (const FieldShape* const field = follower_.openField(id)) {
      if (field->value.type == type) {  // the generated code skips it otherwise
        follower_.noteField();
      }
    }
    return read;
  }

  uint32_t readMapBegin_virt(TType& key, TType& value, uint32_t& size) override {
    follower_.openContainer();
    return reply_.readMapBegin(key, value, size);
  }
  uint32_t readMapEnd_virt() override {
    follower_.close();
    return reply_.readMapEnd();
  }
  uint32_t readListBegin_virt(TType& element, uint32_t& size) override {
    follower_.openContainer();
    return reply_.readListBegin(element, size);
  }
  uint32_t readListEnd_virt() override {
    follower_.close();
    return reply_.readListEnd();
  }

  uint32_t skip_virt(TType type) override { return reply_.skip(type); }

 private:
  TProtocol& reply_;
  ShapeFollower follower_;
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
