// Reading a configuration from named JSON, which print/named_json_writer.h describes.

#pragma once

#include <nlohmann/json.hpp>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// The record whose namedJson() is `value`. Throws std::runtime_error, with the path of the place,
/// for a field that is missing, unknown or not of its type.
hub_module::HeadendConfig configFromJson(const nlohmann::json& value);

}  // namespace lineup
