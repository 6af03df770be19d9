#include "print/named_json_reader.h"

#include <thrift/protocol/TVirtualProtocol.h>
#include <thrift/transport/TTransportUtils.h>

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "model/config_shape.h"
#include "print/printed_text.h"

namespace lineup {

namespace {

using apache::thrift::protocol::TType;
using nlohmann::json;

/// A read-only protocol over a JSON value. It uses no transport, so its functions return 0 as the
/// number of bytes read.
class JsonReader : public apache::thrift::protocol::TVirtualProtocol<JsonReader> {
 public:
  JsonReader(const json& value, const ValueShape& shape)
      : TVirtualProtocol(std::make_shared<apache::thrift::transport::TNullTransport>()),
        root_{&value, &shape} {}

  uint32_t readStructBegin(std::string& /*name*/) {
    const Value record = take();
    require(record.read->is_object(), "is no object");
    for (const auto& [id, field] : record.shape->fields) {
      require(field.isOptional || record.read->contains(field.name),
              "lacks \"" + field.name + "\"");
    }
    open(record);
    return 0;
  }
  uint32_t readStructEnd() { return close(); }

  uint32_t readFieldBegin(std::string& /*name*/, TType& type, int16_t& id) {
    Open& record = open_.back();
    type = apache::thrift::protocol::T_STOP;
    record.name.clear();
    if (record.next != record.value.read->end()) {
      const FieldShape* const field = record.value.shape->findField(record.next.key());
      require(field != nullptr, "has the unknown \"" + record.next.key() + "\"");
      type = field->value.type;
      id = field->id;
      record.name = field->name;
      record.field = {&*record.next, &field->value};
      ++record.next;
    }
    return 0;
  }
  uint32_t readFieldEnd() { return 0; }

  uint32_t readMapBegin(TType& key, TType& value, uint32_t& size) {
    const Value map = take();
    require(map.read->is_object(), "is no object");
    key = map.shape->keyType;
    openContainer(map, value, size);
    open_.back().keyIsNext = true;
    return 0;
  }
  uint32_t readMapEnd() { return close(); }
  uint32_t readListBegin(TType& element, uint32_t& size) {
    const Value list = take();
    require(list.read->is_array(), "is no array");
    openContainer(list, element, size);
    return 0;
  }
  uint32_t readListEnd() { return close(); }

  uint32_t readBool(bool& value) {
    const json& read = *take().read;
    require(read.is_boolean(), "is neither true nor false");
    value = read.get<bool>();
    return 0;
  }
  using TVirtualProtocol::readBool;  // of an element of a std::vector<bool>
  uint32_t readI32(int32_t& value) { return readNumber(value); }
  uint32_t readDouble(double& value) {
    const json& read = *take().read;
    if (read == "NaN") {
      value = std::numeric_limits<double>::quiet_NaN();
    } else if (read == "Infinity" || read == "-Infinity") {
      value = std::copysign(std::numeric_limits<double>::infinity(), read == "Infinity" ? 1 : -1);
    } else {
      require(read.is_number(), "is no number");
      value = read.get<double>();
    }
    return 0;
  }
  uint32_t readString(std::string& value) {
    if (keyIsNext()) {
      value = takeKey();
      return 0;
    }
    const json& read = *take().read;
    require(read.is_string(), "is no text");
    value = read.get_ref<const std::string&>();
    return 0;
  }

 private:
  struct Value {
    const json* read;
    const ValueShape* shape;
  };

  /// A record or container that is being read.
  struct Open {
    Value value;
    json::const_iterator next{};  // the member or element that has not been begun
    std::string name{};           // of the member or element that is being read
    Value field{};                // of a record, the one that is being read
    bool keyIsNext = false;       // of a map
    std::size_t index = 0;        // of a list, the element that comes next
  };

  void open(const Value& value) {
    open_.push_back({value});
    open_.back().next = value.read->begin();
  }

  uint32_t close() {
    open_.pop_back();
    return 0;
  }

  void openContainer(const Value& value, TType& element, uint32_t& size) {
    size = static_cast<uint32_t>(value.read->size());
    element = value.shape->element->type;
    open(value);
  }

  bool keyIsNext() const { return !open_.empty() && open_.back().keyIsNext; }

  /// The key of the member of a map that is read next.
  const std::string& takeKey() {
    Open& map = open_.back();
    map.keyIsNext = false;
    map.name = map.next.key();
    return map.name;
  }

  /// The value that is read next.
  Value take() {
    if (open_.empty()) {
      return root_;
    }
    Open& around = open_.back();
    if (around.value.shape->type == apache::thrift::protocol::T_STRUCT) {
      return around.field;
    }
    if (around.value.shape->type == apache::thrift::protocol::T_MAP) {
      around.keyIsNext = true;
    } else {
      around.name = std::to_string(around.index++);
    }
    const Value element{&*around.next, around.value.shape->element.get()};
    ++around.next;
    return element;
  }

  template <class Number>
  uint32_t readNumber(Number& value) {
    if (keyIsNext()) {
      const std::string& key = takeKey();
      const auto result = std::from_chars(key.data(), key.data() + key.size(), value);
      require(result.ec == std::errc() && result.ptr == key.data() + key.size(),
              "is named by no number");
      // "002" beside "2" would be the same member of the map.
      require(std::to_string(value) == key, "is not named as the number is written");
      return 0;
    }
    const json& read = *take().read;
    using Limits = std::numeric_limits<Number>;
    require(read.is_number_integer(), "is no whole number");
    require(!read.is_number_unsigned() ||
                read.get<uint64_t>() <= static_cast<uint64_t>(std::numeric_limits<int64_t>::max()),
            "is out of range");
    const auto number = read.get<int64_t>();
    require(number >= Limits::min() && number <= Limits::max(), "is out of range");
    value = static_cast<Number>(number);
    return 0;
  }

  void require(bool holds, const std::string& otherwise) const {
    if (!holds) {
      throw std::runtime_error((open_.empty() ? "the whole" : path()) + " " + otherwise);
    }
  }

  /// A JSON pointer (RFC 6901), which escapes the slash and the tilde of a name.
  std::string path() const {
    json::json_pointer path;
    for (const Open& open : open_) {
      if (!open.name.empty()) {
        path.push_back(open.name);
      }
    }
    return printable(path.to_string());
  }

  const Value root_;
  std::vector<Open> open_;
};

}  // namespace

hub_module::HeadendConfig configFromJson(const json& value) {
  hub_module::HeadendConfig config;
  JsonReader reader(value, headendConfigShape());
  config.read(&reader);
  return config;
}

}  // namespace lineup
