#include "model/config_shape.h"

#include <thrift/protocol/TVirtualProtocol.h>
#include <thrift/transport/TTransportUtils.h>

#include <vector>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

namespace {

using apache::thrift::protocol::TType;
using hub_module::HeadendConfig;

/// Learns the shape of the record that is written to it. It writes nothing: its functions
/// return 0, the number of bytes written. A configuration has no sets: the library throws for one.
class ShapeBuilder : public apache::thrift::protocol::TVirtualProtocol<ShapeBuilder> {
 public:
  explicit ShapeBuilder(ValueShape& root)
      : TVirtualProtocol(std::make_shared<apache::thrift::transport::TNullTransport>()),
        next_(&root) {}

  uint32_t writeStructBegin(const char* /*name*/) {
    return open(apache::thrift::protocol::T_STRUCT);
  }
  uint32_t writeStructEnd() { return close(); }
  uint32_t writeFieldBegin(const char* name, TType type, int16_t id) {
    FieldShape& field = open_.back()->fields[id];
    field.id = id;
    field.name = name;
    field.value.type = type;
    next_ = &field.value;
    return 0;
  }
  uint32_t writeFieldEnd() { return 0; }
  uint32_t writeFieldStop() { return 0; }
  uint32_t writeMapBegin(TType key, TType value, uint32_t /*size*/) {
    next_->keyType = key;
    return openContainer(apache::thrift::protocol::T_MAP, value);
  }
  uint32_t writeMapEnd() { return close(); }
  uint32_t writeListBegin(TType element, uint32_t /*size*/) {
    return openContainer(apache::thrift::protocol::T_LIST, element);
  }
  uint32_t writeListEnd() { return close(); }

  // Of plain values the header of the field or the container has said everything.
  uint32_t writeBool(bool /*value*/) { return 0; }
  uint32_t writeI32(int32_t /*value*/) { return 0; }
  uint32_t writeDouble(double /*value*/) { return 0; }
  uint32_t writeString(const std::string& /*value*/) { return 0; }

 private:
  uint32_t open(TType type) {
    next_->type = type;
    open_.push_back(next_);
    return 0;
  }

  uint32_t openContainer(TType type, TType element) {
    open(type);
    next_->element = std::make_unique<ValueShape>();
    next_->element->type = element;
    next_ = next_->element.get();
    return 0;
  }

  uint32_t close() {
    open_.pop_back();
    return 0;
  }

  std::vector<ValueShape*> open_;  // records and containers that are being written
  ValueShape* next_;               // the value that is written next
};

/// A record with an element in each container.
HeadendConfig withElements() {
  HeadendConfig config;
  auto& lineup = config.lineupConfig;
  auto& drm = lineup.globalConfig.drmConfig;
  drm.simulCryptConfig.config.ecmGenerators.resize(1);
  drm.proIdiomConfig.serviceKeys.resize(1);
  lineup.globalConfig.preferredLanguages.resize(1);
  lineup.ipEntries.resize(1);
  lineup.rfConfig.carrierFrequencies[0];
  lineup.rfEntries.resize(1);
  auto& dvb = lineup.dvbInputServices[0];
  dvb.filteredPids.resize(1);
  dvb.service.lItems.resize(1);
  dvb.service.intItems.resize(1);
  lineup.encInputServices[0];
  lineup.encConfig.moduleSettings[0];
  lineup.emptyInputServices[0];
  config.ipInputs[""].muxes[""].services[0];
  return config;
}

/// The same with the optional fields set.
HeadendConfig withOptionalFields() {
  HeadendConfig config = withElements();
  config.headendGlobalConfig.__set_countryCode({});
  config.rfInputsScanConfig.__set_plsItemList({});
  config.rfInputsScanConfig.plsItemList.resize(1);
  auto& dvb = config.lineupConfig.dvbInputServices[0].service;
  dvb.__set_lineupSATMux({});
  dvb.__set_lineupTDTMux({});
  dvb.__set_lineupCableMux({});
  dvb.__set_ipMuxUUID({});
  auto& input = config.ipInputs[""];
  input.__set_slot({});
  input.__set_interfaceId({});
  return config;
}

ValueShape shapeOf(const HeadendConfig& config) {
  ValueShape shape;
  ShapeBuilder builder(shape);
  config.write(&builder);
  return shape;
}

/// Marks the fields that `always`, written without optional fields, does not have.
void markOptional(ValueShape& shape, const ValueShape& always) {
  for (auto& [id, field] : shape.fields) {
    const auto found = always.fields.find(id);
    field.isOptional = found == always.fields.end();
    if (!field.isOptional) {
      markOptional(field.value, found->second.value);
    }
  }
  if (shape.element != nullptr && always.element != nullptr) {
    markOptional(*shape.element, *always.element);
  }
}

}  // namespace

const FieldShape* ValueShape::findField(const std::string& name) const {
  for (const auto& [id, field] : fields) {
    if (field.name == name) {
      return &field;
    }
  }
  return nullptr;
}

const ValueShape& headendConfigShape() {
  static const ValueShape kShape = [] {
    ValueShape shape = shapeOf(withOptionalFields());
    markOptional(shape, shapeOf(withElements()));
    return shape;
  }();
  return kShape;
}

}  // namespace lineup
