#include "print/named_json_writer.h"

#include <thrift/protocol/TVirtualProtocol.h>
#include <thrift/transport/TTransportUtils.h>

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "print/printed_text.h"

namespace lineup {

namespace {

using apache::thrift::protocol::TType;
using nlohmann::json;

/// A write-only protocol that fills a `Sink`: JsonValue or JsonText. It uses no transport, so its
/// functions return 0 as the number of bytes written.
template <class Sink>
class JsonWriter : public apache::thrift::protocol::TVirtualProtocol<JsonWriter<Sink>> {
 public:
  explicit JsonWriter(Sink& sink)
      : apache::thrift::protocol::TVirtualProtocol<JsonWriter<Sink>>(
            std::make_shared<apache::thrift::transport::TNullTransport>()),
        sink_(sink) {}

  uint32_t writeStructBegin(const char* /*name*/) { return openObject(false); }
  uint32_t writeStructEnd() { return close(); }
  uint32_t writeFieldBegin(const char* name, TType /*type*/, int16_t /*id*/) {
    sink_.key(name);
    return 0;
  }
  uint32_t writeFieldEnd() { return 0; }
  uint32_t writeFieldStop() { return 0; }
  uint32_t writeMapBegin(TType /*key*/, TType /*value*/, uint32_t /*size*/) {
    return openObject(true);
  }
  uint32_t writeMapEnd() { return close(); }
  uint32_t writeListBegin(TType /*element*/, uint32_t size) {
    beginValue();
    sink_.openArray(size);
    open_.push_back({false, false});
    return 0;
  }
  uint32_t writeListEnd() { return close(); }

  uint32_t writeBool(bool value) { return put(value); }
  uint32_t writeI32(int32_t value) { return putNumber(value); }
  uint32_t writeDouble(double value) {
    if (std::isnan(value)) {
      return put(std::string("NaN"));
    }
    return std::isinf(value) ? put(std::string(value > 0 ? "Infinity" : "-Infinity")) : put(value);
  }
  uint32_t writeString(const std::string& value) {
    if (keyIsNext()) {
      return putKey(value);
    }
    return put(value);
  }

 private:
  /// A struct, list or map that is being written.
  struct Open {
    bool isMap;
    bool keyIsNext;
  };

  bool keyIsNext() const { return !open_.empty() && open_.back().keyIsNext; }

  /// After a value of a map comes a key.
  void beginValue() {
    if (!open_.empty()) {
      open_.back().keyIsNext = open_.back().isMap;
    }
  }

  uint32_t openObject(bool isMap) {
    beginValue();
    sink_.openObject();
    open_.push_back({isMap, isMap});
    return 0;
  }

  uint32_t close() {
    sink_.close();
    open_.pop_back();
    return 0;
  }

  template <class Value>
  uint32_t put(const Value& value) {
    beginValue();
    sink_.value(value);
    return 0;
  }

  uint32_t putKey(const std::string& key) {
    sink_.key(key);
    open_.back().keyIsNext = false;
    return 0;
  }

  uint32_t putNumber(int64_t value) {
    return keyIsNext() ? putKey(std::to_string(value)) : put(value);
  }

  Sink& sink_;
  std::vector<Open> open_;
};

/// Takes what is written as one JSON value.
class JsonValue {
 public:
  explicit JsonValue(json& result) : result_(result) {}

  void openObject() { open_.push_back(&place(json::object())); }
  void openArray(std::size_t size) {
    json list = json::array();
    list.get_ref<json::array_t&>().reserve(size);
    open_.push_back(&place(std::move(list)));
  }
  void close() { open_.pop_back(); }
  void key(std::string_view name) { key_ = name; }
  template <class Value>
  void value(const Value& value) {
    place(value);
  }

 private:
  /// Puts `value` where the next value belongs. The place does not move while it is written to.
  json& place(json value) {
    if (open_.empty()) {
      result_ = std::move(value);
      return result_;
    }
    json& around = *open_.back();
    return around.is_array() ? around.emplace_back(std::move(value))
                             : around[key_] = std::move(value);
  }

  json& result_;
  std::vector<json*> open_;
  std::string key_;
};

/// Takes what is written as text, a member or element a line, indented by two blanks.
class JsonText {
 public:
  explicit JsonText(std::string& text) : text_(text) {}

  void openObject() { open('{', '}'); }
  void openArray(std::size_t /*size*/) { open('[', ']'); }
  void close() {
    const Level level = open_.back();
    open_.pop_back();
    if (!level.isEmpty) {
      beginLine();
    }
    text_ += level.end;
  }
  void key(std::string_view name) {
    beginMember();
    add(name);
    text_ += ": ";
  }
  template <class Value>
  void value(const Value& value) {
    beginElement();
    add(value);
  }

 private:
  /// An object or array that is being written.
  struct Level {
    char end;  // what closes it
    bool isEmpty;
  };

  void open(char begin, char end) {
    beginElement();
    text_ += begin;
    open_.push_back({end, true});
  }

  void beginLine() {
    text_ += '\n';
    text_.append(2 * open_.size(), ' ');
  }

  void beginMember() {
    text_.append(open_.back().isEmpty ? 0 : 1, ',');
    open_.back().isEmpty = false;
    beginLine();
  }

  /// A member of an object has begun with its key.
  void beginElement() {
    if (!open_.empty() && open_.back().end == ']') {
      beginMember();
    }
  }

  void add(bool value) { text_ += value ? "true" : "false"; }
  void add(double value) { text_ += json(value).dump(); }
  void add(int64_t value) {
    char digits[24];
    const auto result = std::to_chars(std::begin(digits), std::end(digits), value);
    text_.append(digits, result.ptr);
  }
  void add(std::string_view value) {
    if (isPlain(value, '"')) {
      text_ += '"';
      text_ += value;
      text_ += '"';
    } else {
      text_ += json(value).dump(-1, ' ', false, json::error_handler_t::replace);
    }
  }

  std::string& text_;
  std::vector<Level> open_;
};

template <class Sink, class Result>
Result written(const apache::thrift::TBase& record) {
  Result result;
  Sink sink(result);
  JsonWriter<Sink> writer(sink);
  record.write(&writer);
  return result;
}

}  // namespace

json namedJson(const apache::thrift::TBase& record) {
  return written<JsonValue, json>(record);
}

std::string namedJsonText(const apache::thrift::TBase& record) {
  return written<JsonText, std::string>(record);
}

}  // namespace lineup
