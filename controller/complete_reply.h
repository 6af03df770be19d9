// Whether a reply holds a complete configuration.

#pragma once

#include <thrift/protocol/TProtocolDecorator.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "controller/shape_follower.h"
#include "model/config_shape.h"

namespace lineup {

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

}  // namespace lineup
