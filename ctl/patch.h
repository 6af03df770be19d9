// Patches of configurations (RFC 6902).

#pragma once

#include <string>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup::ctl {

/// `config` with the patch in the file `path`, "-" for standard input. Throws Failure, with the
/// operation and the reason.
hub_module::HeadendConfig patched(const hub_module::HeadendConfig& config, const std::string& path);

}  // namespace lineup::ctl
