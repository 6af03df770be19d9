// Files that hold one HeadendConfig in the Thrift JSON protocol and nothing else.

#pragma once

#include <string>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// What the operations on a path return, which print nothing and throw nothing: the whole record is
/// read or written, the file could not be opened, or anything failed after that.
enum ConfigFileResult { CONFIG_FILE_OK = 0, CONFIG_FILE_NOT_OPENED = -1, CONFIG_FILE_FAILED = -2 };

/// Writes `config` to `path`. A new file is readable and writable by its owner alone; an existing
/// one is truncated and keeps its permissions. After CONFIG_FILE_FAILED the file holds a part at
/// most.
ConfigFileResult writeConfigFile(const std::string& path, const hub_module::HeadendConfig& config);

/// Writes `config` to the open file `descriptor`, as a file of writeConfigFile() holds it; syncs
/// nothing. Throws what the Thrift library does: the file then holds a part at most.
void writeConfig(int descriptor, const hub_module::HeadendConfig& config);

/// What such a file with `config` holds.
std::string configFileContent(const hub_module::HeadendConfig& config);

/// Reads `path` over `config`, whose fields keep their values where the file has none. After
/// CONFIG_FILE_FAILED `config` holds what had been read.
ConfigFileResult readConfigFile(const std::string& path, hub_module::HeadendConfig& config);

}  // namespace lineup
