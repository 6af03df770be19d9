// What a new configuration changes, in a few words.

#pragma once

#include <string>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup::simulator {

/// "on" or "off".
std::string onOff(bool on);

/// For example "3 RF entries, 2 IP entries, modulation QAM".
std::string summary(const hub_module::HeadendConfig& config);

/// The summary of `next`, then what else is different in it from `previous`, for example
/// "...; headend id 4, country ITALY", "...; other changes" or "...; no change".
std::string summaryOfChange(const hub_module::HeadendConfig& previous,
                            const hub_module::HeadendConfig& next);

}  // namespace lineup::simulator
