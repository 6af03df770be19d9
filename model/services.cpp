#include "model/services.h"

namespace lineup {

std::string serviceName(const hub_module::DVBInputServiceConfig& service) {
  return service.service.name;
}

std::string serviceName(const hub_module::ENCInputServiceConfig& service) {
  return "ENC " + std::to_string(service.address.slot) + "/" + std::to_string(service.address.port);
}

std::string serviceName(const hub_module::EmptyInputServiceConfig& /*service*/) {
  return "EMPTY SLOT";
}

int32_t serviceType(const hub_module::DVBInputServiceConfig& service) {
  return service.service.serviceType;
}

int32_t serviceType(const hub_module::ENCInputServiceConfig& /*service*/) {
  return 1;
}

int32_t serviceType(const hub_module::EmptyInputServiceConfig& service) {
  return service.service.serviceType;
}

}  // namespace lineup
