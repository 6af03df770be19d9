#include "compare/record_json.h"

#include <thrift/protocol/TVirtualProtocol.h>
#include <thrift/transport/TTransportUtils.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace lineup {

namespace {

using apache::thrift::protocol::TType;
using nlohmann::json;

/// Writes a record into a JSON value. It has no bytes and no transport: what its functions return,
/// the number of bytes written, is 0.
class JsonBuilder : public apache::thrift::protocol::TVirtualProtocol<JsonBuilder> {
 public:
  JsonBuilder() : TVirtualProtocol(std::make_shared<apache::thrift::transport::TNullTransport>()) {}

  json take() { return std::move(result_); }

  uint32_t writeStructBegin(const char* /*name*/) { return open(json::object(), false); }
  uint32_t writeStructEnd() { return close(); }
  uint32_t writeFieldBegin(const char* name, TType /*type*/, int16_t /*id*/) {
    open_.back().key = name;
    return 0;
  }
  uint32_t writeFieldEnd() { return 0; }
  uint32_t writeFieldStop() { return 0; }
  uint32_t writeMapBegin(TType /*key*/, TType /*value*/, uint32_t /*size*/) {
    return open(json::object(), true);
  }
  uint32_t writeMapEnd() { return close(); }
  uint32_t writeListBegin(TType /*element*/, uint32_t size) {
    json list = json::array();
    list.get_ref<json::array_t&>().reserve(size);
    return open(std::move(list), false);
  }
  uint32_t writeListEnd() { return close(); }
  uint32_t writeSetBegin(TType element, uint32_t size) { return writeListBegin(element, size); }
  uint32_t writeSetEnd() { return close(); }

  uint32_t writeBool(bool value) { return put(value); }
  uint32_t writeByte(int8_t value) { return put(static_cast<int64_t>(value)); }
  uint32_t writeI16(int16_t value) { return put(static_cast<int64_t>(value)); }
  uint32_t writeI32(int32_t value) { return put(static_cast<int64_t>(value)); }
  uint32_t writeI64(int64_t value) { return put(value); }
  uint32_t writeDouble(double value) {
    if (std::isnan(value)) {
      return put("NaN");
    }
    return std::isinf(value) ? put(value > 0 ? "Infinity" : "-Infinity") : put(value);
  }
  uint32_t writeString(const std::string& value) { return put(value); }
  uint32_t writeBinary(const std::string& value) { return put(value); }

 private:
  /// A struct, list or map that is being written.
  struct Open {
    json* value;
    bool isMap;
    bool keyIsNext;
    std::string key;  // of the member that is written next
  };

  uint32_t open(json value, bool isMap) {
    json& placed = place(std::move(value));
    open_.push_back({&placed, isMap, isMap, {}});
    return 0;
  }

  uint32_t close() {
    open_.pop_back();
    return 0;
  }

  uint32_t put(json value) {
    if (!open_.empty() && open_.back().keyIsNext) {
      open_.back().key = value.is_string() ? value.get_ref<std::string&>() : value.dump();
      open_.back().keyIsNext = false;
    } else {
      place(std::move(value));
    }
    return 0;
  }

  /// Puts `value` where the next value belongs. The place does not move while it is written to.
  json& place(json value) {
    if (open_.empty()) {
      result_ = std::move(value);
      return result_;
    }
    Open& around = open_.back();
    around.keyIsNext = around.isMap;
    if (around.value->is_array()) {
      return around.value->emplace_back(std::move(value));
    }
    return (*around.value)[around.key] = std::move(value);
  }

  json result_;
  std::vector<Open> open_;
};

}  // namespace

json namedJson(const apache::thrift::TBase& record) {
  JsonBuilder builder;
  record.write(&builder);
  return builder.take();
}

}  // namespace lineup
