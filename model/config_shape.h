// The ids, names and types of the fields of HeadendConfig and of the records in it.

#pragma once

#include <thrift/protocol/TProtocol.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace lineup {

struct FieldShape;

/// What a value is made of.
struct ValueShape {
  apache::thrift::protocol::TType type = apache::thrift::protocol::T_STOP;
  std::map<int16_t, FieldShape> fields{};  ///< of a record, by their ids
  apache::thrift::protocol::TType keyType = apache::thrift::protocol::T_STOP;  ///< of a map's keys
  std::unique_ptr<ValueShape> element{};  ///< of a list's elements or a map's values

  /// The field of this name, or null.
  const FieldShape* findField(const std::string& name) const;
};

struct FieldShape {
  int16_t id = 0;
  std::string name{};
  bool isOptional = false;  ///< a writer may leave it out
  ValueShape value{};
};

/// The shape of HeadendConfig with all that it holds. The same object at every call.
const ValueShape& headendConfigShape();

}  // namespace lineup
