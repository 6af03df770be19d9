// Records with what many tests set.

#pragma once

#include <cstdint>

#include "hub_module_types.h"

namespace lineup::test {

inline korvel::thrift::hub_module::HeadendConfig withId(int32_t id) {
  korvel::thrift::hub_module::HeadendConfig config;
  config.headendGlobalConfig.headendId = id;
  return config;
}

inline korvel::thrift::hub_module::PLSItem plsItem(int32_t type, int32_t code) {
  korvel::thrift::hub_module::PLSItem item;
  item.plsType = type;
  item.plsCode = code;
  return item;
}

}  // namespace lineup::test
