// The JSON protocol of configuration files.

#pragma once

#include <thrift/protocol/TJSONProtocol.h>

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

#include "controller/bounded_protocol.h"
#include "controller/config_file_transport.h"

namespace lineup {

/// A TJSONProtocol that refuses, with TProtocolException, numbers without a digit: for those
/// the library returns an uninitialized value.
class CheckedJsonProtocol : public apache::thrift::protocol::TJSONProtocol {
 public:
  using TType = apache::thrift::protocol::TType;

  explicit CheckedJsonProtocol(const std::shared_ptr<ConfigFileTransport>& file)
      : TJSONProtocol(file), file_(*file) {}

  uint32_t readBool_virt(bool& value) override { return number(value, &TJSONProtocol::readBool); }
  /// Cuts the number to eight bits. The library's own function aborts if it is too large.
  uint32_t readByte_virt(int8_t& value) override {
    int16_t wide = 0;
    const uint32_t read = readI16_virt(wide);
    value = static_cast<int8_t>(wide);
    return read;
  }
  uint32_t readI16_virt(int16_t& value) override { return number(value, &TJSONProtocol::readI16); }
  uint32_t readI32_virt(int32_t& value) override { return number(value, &TJSONProtocol::readI32); }
  uint32_t readI64_virt(int64_t& value) override { return number(value, &TJSONProtocol::readI64); }
  uint32_t readDouble_virt(double& value) override {
    return number(value, &TJSONProtocol::readDouble);
  }

  /// Reads the text without decoding it. Used for skipped fields only; the library would decode
  /// them as base64, and reads beyond the end of the text "==".
  uint32_t readBinary_virt(std::string& value) override { return TJSONProtocol::readString(value); }

  // The headers of containers, which hold their counts; BoundedProtocol calls these.

  uint32_t readListBegin(TType& type, uint32_t& size) {
    const uint32_t read = TJSONProtocol::readListBegin(type, size);
    requireDigits(file_.digitsBeforeLast());
    return read;
  }

  uint32_t readSetBegin(TType& type, uint32_t& size) {
    const uint32_t read = TJSONProtocol::readSetBegin(type, size);
    requireDigits(file_.digitsBeforeLast());
    return read;
  }

  uint32_t readMapBegin(TType& keyType, TType& valueType, uint32_t& size) {
    const uint32_t read = TJSONProtocol::readMapBegin(keyType, valueType, size);
    requireDigits(file_.digitsBeforeLastButOne());  // a comma and a brace follow the count
    return read;
  }

 private:
  /// Reads with `readValue`, which ends at the character after the number, and leaves `value`
  /// alone if there was none.
  template <class Number>
  uint32_t number(Number& value, uint32_t (TJSONProtocol::*readValue)(Number&)) {
    Number readNumber{};
    const uint32_t read = (this->*readValue)(readNumber);
    const bool isWord = std::is_same_v<Number, double> && file_.last() == '"';  // such as "NaN"
    if (!isWord) {
      requireDigits(file_.digitsBeforeLast());
    }
    value = readNumber;
    return read;
  }

  static void requireDigits(uint32_t digits) {
    using apache::thrift::protocol::TProtocolException;
    if (digits == 0) {
      throw TProtocolException(TProtocolException::INVALID_DATA, "a number without digits");
    }
  }

  const ConfigFileTransport& file_;
};

/// What configuration files are read and written with.
using ConfigFileProtocol = BoundedProtocol<CheckedJsonProtocol>;

}  // namespace lineup
