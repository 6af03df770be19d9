#include "controller/whole_config_file.h"

#include <fcntl.h>
#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/transport/TBufferTransports.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <set>
#include <stdexcept>
#include <vector>

#include "controller/config_file_protocol.h"
#include "controller/config_file_transport.h"
#include "model/config_shape.h"
#include "model/no_size_limits.h"

namespace lineup {

namespace {

using korvel::thrift::hub_module::HeadendConfig;

/// Follows the reading of a record in its shape and throws std::runtime_error for a field that is
/// missing, unknown, given twice or of another type, a key that a map has twice, and a number that
/// the field cannot hold: the library would keep one value of the two, and the nearest number.
class WholeConfigProtocol : public ConfigFileProtocol {
 public:
  explicit WholeConfigProtocol(const std::shared_ptr<ConfigFileTransport>& file)
      : ConfigFileProtocol(file), next_(&headendConfigShape()) {}

  uint32_t readStructBegin_virt(std::string& name) override {
    open_.push_back({next_});
    return ConfigFileProtocol::readStructBegin_virt(name);
  }

  uint32_t readStructEnd_virt() override {
    const Open& record = open_.back();
    for (const auto& [id, field] : record.shape->fields) {
      require(field.isOptional || record.seen.contains(id),
              "lacks the field \"" + field.name + "\"");
    }
    close();
    return ConfigFileProtocol::readStructEnd_virt();
  }

  uint32_t readFieldBegin_virt(std::string& name, TType& type, int16_t& id) override {
    const uint32_t read = ConfigFileProtocol::readFieldBegin_virt(name, type, id);
    Open& record = open_.back();
    record.field = nullptr;
    if (type == apache::thrift::protocol::T_STOP) {
      return read;
    }
    const auto field = record.shape->fields.find(id);
    require(field != record.shape->fields.end(), "has an unknown field " + std::to_string(id));
    record.field = &field->second;
    require(field->second.value.type == type, "has another type");
    require(record.seen.insert(id).second, "is given twice");
    next_ = &field->second.value;
    return read;
  }

  uint32_t readMapBegin_virt(TType& key, TType& value, uint32_t& size) override {
    const uint32_t read = ConfigFileProtocol::readMapBegin_virt(key, value, size);
    require(size == 0 || key == next_->keyType, "has keys of another type");
    openContainer(value, size);
    open_.back().keyIsNext = true;
    return read;
  }
  uint32_t readMapEnd_virt() override {
    close();
    return ConfigFileProtocol::readMapEnd_virt();
  }
  uint32_t readListBegin_virt(TType& element, uint32_t& size) override {
    const uint32_t read = ConfigFileProtocol::readListBegin_virt(element, size);
    openContainer(element, size);
    return read;
  }
  uint32_t readListEnd_virt() override {
    close();
    return ConfigFileProtocol::readListEnd_virt();
  }

  uint32_t readBool_virt(bool& value) override { return readNumber(value); }
  uint32_t readByte_virt(int8_t& value) override { return readNumber(value); }
  uint32_t readI16_virt(int16_t& value) override { return readNumber(value); }
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
  /// A record or container that is being read.
  struct Open {
    const ValueShape* shape;
    const FieldShape* field = nullptr;  // of a record, the one that is being read
    std::set<int16_t> seen{};
    bool keyIsNext = false;  // of a map
    std::set<std::string> keys{};
  };

  template <class Number>
  uint32_t readNumber(Number& value) {
    int64_t wide = 0;
    const uint32_t read = ConfigFileProtocol::readI64_virt(wide);
    using Limits = std::numeric_limits<Number>;
    require(wide >= int64_t{Limits::min()} && wide <= int64_t{Limits::max()},
            "has a number that is out of range");
    value = static_cast<Number>(wide);
    finishScalar(std::to_string(wide));
    return read;
  }

  /// Notes the end of a value, which was `text` if it was a key.
  void finishScalar(const std::string& text) {
    Open& around = open_.back();
    if (around.keyIsNext) {
      require(around.keys.insert(text).second, "has the key \"" + text + "\" twice");
      around.keyIsNext = false;
    } else {
      around.keyIsNext = around.shape->type == apache::thrift::protocol::T_MAP;
    }
  }

  void openContainer(TType element, uint32_t size) {
    require(size == 0 || element == next_->element->type, "has elements of another type");
    open_.push_back({next_});
    next_ = next_->element.get();
  }

  void close() {
    open_.pop_back();
    if (!open_.empty() && open_.back().shape->element != nullptr) {
      next_ = open_.back().shape->element.get();
      open_.back().keyIsNext = open_.back().shape->type == apache::thrift::protocol::T_MAP;
    }
  }

  void require(bool holds, const std::string& otherwise) const {
    if (!holds) {
      throw std::runtime_error("is no complete configuration: " + path() + otherwise);
    }
  }

  std::string path() const {
    std::string path;
    for (const Open& open : open_) {
      path += open.field == nullptr ? "" : "/" + open.field->name;
    }
    return path.empty() ? path : path + " ";
  }

  std::vector<Open> open_;
  const ValueShape* next_;  // of the value that is read next
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
  throw std::runtime_error("is no complete configuration: something follows it");
}

}  // namespace

std::string configFileContent(const HeadendConfig& config) {
  const auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>(noSizeLimits());
  apache::thrift::protocol::TJSONProtocol protocol(buffer);
  config.write(&protocol);
  return buffer->getBufferAsString();
}

HeadendConfig readWholeConfigFile(const std::string& path) {
  Descriptor descriptor(path == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                    : open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!descriptor.isOpen()) {
    throw std::runtime_error(std::strerror(errno));
  }
  const auto file = std::make_shared<ConfigFileTransport>(descriptor);
  HeadendConfig config;
  try {
    WholeConfigProtocol protocol(file);
    config.read(&protocol);
    requireEnd(*file);
  } catch (const apache::thrift::TException& error) {
    throw std::runtime_error(std::string("is no complete configuration: ") + error.what());
  }
  return config;
}

}  // namespace lineup
