// The difference of two JSON values.

#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>

namespace lineup {

/// One difference: the JSON pointer of the place, what was there and what is there now. Null stands
/// for nothing: a value that is added or removed.
using Differing = std::function<void(const std::string& path, const nlohmann::json* before,
                                     const nlohmann::json* now)>;

/// Calls `differing` for each difference. Of arrays, what they have in common at their beginning
/// and their end is left out; what is between is compared by position. The paths are those that
/// hold when the differences are applied one after the other, as RFC 6902 does.
void compareJson(const nlohmann::json& from, const nlohmann::json& to, const Differing& differing);

/// The patch of RFC 6902 that makes `to` out of `from`; an empty array if they are equal.
nlohmann::json patchBetween(const nlohmann::json& from, const nlohmann::json& to);

}  // namespace lineup
