#include "controller/complete_config_file.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "controller/config_file_protocol.h"
#include "controller/config_file_transport.h"
#include "controller/shape_follower.h"
#include "model/config_shape.h"
#include "support/descriptor.h"

namespace lineup {

namespace {

using hub_module::HeadendConfig;

/// What no complete configuration is, and why.
std::runtime_error incomplete(const std::string& reason) {
  return std::runtime_error("is no complete configuration: " + reason);
}

/// Whether a text is a number as JSON spells it: the library takes "+1" and "01" as well.
bool isJsonNumber(std::string_view text) {
  const auto skipDigits = [&text] {
    const std::size_t end = std::min(text.find_first_not_of("0123456789"), text.size());
    text.remove_prefix(end);
    return end;
  };
  const auto skip = [&text](std::string_view characters) {
    const bool found = !text.empty() && characters.find(text[0]) != std::string_view::npos;
    text.remove_prefix(found ? 1 : 0);
    return found;
  };
  skip("-");
  const bool isWhole = skip("0") || skipDigits() > 0;
  if (!isWhole || (skip(".") && skipDigits() == 0)) {
    return false;
  }
  if (skip("eE")) {
    skip("+-");
    return skipDigits() > 0 && text.empty();
  }
  return text.empty();
}

/// Looks at the tokens that are read, for what the library does not insist on. Throws
/// std::runtime_error for a number that JSON spells otherwise.
class TokenTransport : public ConfigFileTransport {
 public:
  explicit TokenTransport(Descriptor& descriptor) : ConfigFileTransport(descriptor) {}

  uint32_t readAll_virt(uint8_t* buffer, uint32_t length) override {
    ConfigFileTransport::readAll_virt(buffer, length);
    for (uint32_t index = 0; index < length; ++index) {
      follow(static_cast<char>(buffer[index]));
    }
    return length;
  }

  /// The last text that was read to its end, and the one before it. Of a long one its beginning.
  const std::string& lastText() const { return lastText_; }
  const std::string& lastTextButOne() const { return lastTextButOne_; }

 private:
  void follow(char character) {
    if (inText_) {
      followText(character);
    } else if (std::string_view("{}[],:\"").find(character) == std::string_view::npos) {
      token_ += character;
    } else {
      endNumber();
      inText_ = character == '"';
    }
  }

  void followText(char character) {
    constexpr std::size_t kLongEnough = 64;
    if (character == '"' && !escaped_) {
      inText_ = false;
      lastTextButOne_.swap(lastText_);
      lastText_.swap(token_);
      token_.clear();
    } else if (token_.size() < kLongEnough) {
      token_ += character;
    }
    escaped_ = character == '\\' && !escaped_;
  }

  void endNumber() {
    if (!token_.empty() && !isJsonNumber(token_)) {
      throw incomplete("has a number that is none of JSON, " + token_);
    }
    token_.clear();
  }

  bool inText_ = false;
  bool escaped_ = false;
  std::string token_;  // that is being read
  std::string lastText_;
  std::string lastTextButOne_;
};

/// The name of a type in the protocol. The library looks at a letter or two of it.
std::string_view typeName(apache::thrift::protocol::TType type) {
  switch (type) {
    case apache::thrift::protocol::T_BOOL:
      return "tf";
    case apache::thrift::protocol::T_BYTE:
      return "i8";
    case apache::thrift::protocol::T_I16:
      return "i16";
    case apache::thrift::protocol::T_I32:
      return "i32";
    case apache::thrift::protocol::T_I64:
      return "i64";
    case apache::thrift::protocol::T_DOUBLE:
      return "dbl";
    case apache::thrift::protocol::T_STRING:
      return "str";
    case apache::thrift::protocol::T_STRUCT:
      return "rec";
    case apache::thrift::protocol::T_MAP:
      return "map";
    case apache::thrift::protocol::T_LIST:
      return "lst";
    case apache::thrift::protocol::T_SET:
      return "set";
    default:
      return "";
  }
}

/// Follows the reading of a record in its shape and throws std::runtime_error for a field that is
/// missing, unknown, given twice or of another type, a key that a map has twice, and a number that
/// the field cannot hold: the library would keep one value of the two, and the nearest number.
class CompleteConfigProtocol : public ConfigFileProtocol {
 public:
  explicit CompleteConfigProtocol(const std::shared_ptr<TokenTransport>& file)
      : ConfigFileProtocol(file), file_(*file), follower_(headendConfigShape()) {}

  uint32_t readStructBegin_virt(std::string& name) override {
    follower_.openRecord();
    return ConfigFileProtocol::readStructBegin_virt(name);
  }

  uint32_t readStructEnd_virt() override {
    const std::string lacked = follower_.lackedField();
    if (!lacked.empty()) {
      throw incomplete(lacked);
    }
    close();
    return ConfigFileProtocol::readStructEnd_virt();
  }

  uint32_t readFieldBegin_virt(std::string& name, TType& type, int16_t& id) override {
    const uint32_t read = ConfigFileProtocol::readFieldBegin_virt(name, type, id);
    follower_.closeField();
    if (type == apache::thrift::protocol::T_STOP) {
      return read;
    }
    require(file_.lastTextButOne() == std::to_string(id),
            "has the field id \"" + file_.lastTextButOne() + "\"");
    requireType(type, file_.lastText());
    const FieldShape* const field = follower_.openField(id);
    require(field != nullptr, "has an unknown field " + std::to_string(id));
    require(field->value.type == type, "has another type");
    require(follower_.noteField(), "is given twice");
    return read;
  }

  uint32_t readMapBegin_virt(TType& key, TType& value, uint32_t& size) override {
    const uint32_t read = ConfigFileProtocol::readMapBegin_virt(key, value, size);
    requireType(key, file_.lastTextButOne());
    requireType(value, file_.lastText());
    require(size == 0 || key == follower_.next().keyType, "has keys of another type");
    openContainer(value, size);
    follower_.innermost().keyIsNext = true;
    return read;
  }
  uint32_t readMapEnd_virt() override {
    close();
    return ConfigFileProtocol::readMapEnd_virt();
  }
  uint32_t readListBegin_virt(TType& element, uint32_t& size) override {
    const uint32_t read = ConfigFileProtocol::readListBegin_virt(element, size);
    requireType(element, file_.lastText());
    openContainer(element, size);
    return read;
  }
  uint32_t readListEnd_virt() override {
    close();
    return ConfigFileProtocol::readListEnd_virt();
  }

  uint32_t readBool_virt(bool& value) override { return readNumber(value); }
  uint32_t readI32_virt(int32_t& value) override { return readNumber(value); }
  uint32_t readDouble_virt(double& value) override {
    const uint32_t read = ConfigFileProtocol::readDouble_virt(value);
    finishScalar("");
    return read;
  }
  uint32_t readString_virt(std::string& value) override {
    const uint32_t read = ConfigFileProtocol::readString_virt(value);
    finishScalar(value);
    return read;
  }

 private:
  template <class Number>
  uint32_t readNumber(Number& value) {
    int64_t wide = 0;
    const uint32_t read = ConfigFileProtocol::readI64_virt(wide);
    using Limits = std::numeric_limits<Number>;
    require(wide >= int64_t{Limits::min()} && wide <= int64_t{Limits::max()},
            "has a number that is out of range");
    require(!follower_.innermost().keyIsNext || file_.lastText() == std::to_string(wide),
            "has the key \"" + file_.lastText() + "\"");
    value = static_cast<Number>(wide);
    finishScalar(std::to_string(wide));
    return read;
  }

  /// Notes the end of a value, which was `text` if it was a key.
  void finishScalar(const std::string& text) {
    ShapeFollower::Open& around = follower_.innermost();
    if (around.keyIsNext) {
      require(around.keys.insert(text).second, "has the key \"" + text + "\" twice");
      around.keyIsNext = false;
    } else {
      around.keyIsNext = around.shape->type == apache::thrift::protocol::T_MAP;
    }
  }

  void openContainer(TType element, uint32_t size) {
    require(size == 0 || element == follower_.next().element->type, "has elements of another type");
    follower_.openContainer();
  }

  void close() {
    follower_.close();
    if (!follower_.isAtEnd() &&
        follower_.innermost().shape->type == apache::thrift::protocol::T_MAP) {
      follower_.innermost().keyIsNext = true;
    }
  }

  void require(bool holds, const std::string& otherwise) const {
    if (!holds) {
      throw incomplete(follower_.place() + otherwise);
    }
  }

  void requireType(TType type, const std::string& name) const {
    require(typeName(type) == name, "has the unknown type \"" + name + "\"");
  }

  const TokenTransport& file_;
  ShapeFollower follower_;
};

/// The transport leaves white space out.
void requireEnd(ConfigFileTransport& file) {
  using apache::thrift::transport::TTransportException;
  try {
    uint8_t byte = 0;
    file.readAll_virt(&byte, 1);
  } catch (const TTransportException& end) {
    if (end.getType() == TTransportException::END_OF_FILE) {
      return;
    }
    throw;
  }
  throw incomplete("something follows it");
}

/// The reason in the library's message for a file that cannot be read, "TFDTransport::read(): Is a
/// directory".
std::string systemReason(const std::string& message) {
  const std::string_view end = "(): ";
  const std::size_t at = message.find(end);
  return at == std::string::npos ? message : message.substr(at + end.size());
}

}  // namespace

HeadendConfig readCompleteConfigFile(const std::string& path) {
  Descriptor descriptor = openForReading(path);
  if (!descriptor.isOpen()) {
    throw std::runtime_error(std::strerror(errno));
  }
  const auto file = std::make_shared<TokenTransport>(descriptor);
  HeadendConfig config;
  try {
    CompleteConfigProtocol protocol(file);
    config.read(&protocol);
    requireEnd(*file);
  } catch (const apache::thrift::transport::TTransportException& error) {
    if (error.getType() == apache::thrift::transport::TTransportException::UNKNOWN) {
      throw std::runtime_error(systemReason(error.what()));
    }
    throw incomplete(error.what());
  } catch (const apache::thrift::TException& error) {
    throw incomplete(error.what());
  }
  return config;
}

}  // namespace lineup
