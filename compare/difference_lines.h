// Differences as lines of text.

#pragma once

#include <thrift/TBase.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

namespace lineup {

/// "BEFORE -> NOW", "added NOW" or "removed BEFORE", and the end of the line. One of the two can be
/// missing.
std::string changeLine(const std::optional<std::string>& before,
                       const std::optional<std::string>& now);

/// The line for a difference at `place`: "PLACE: 1 -> 2", "PLACE: added 2" or
/// "PLACE: removed 1". Null stands for nothing.
std::string differenceLine(const std::string& place, const nlohmann::json* before,
                           const nlohmann::json* now);

/// A line for each field of two records of one type that differs: `where`, the path of the field,
/// and what differs.
std::string fieldDifferences(const std::string& where, const apache::thrift::TBase& from,
                             const apache::thrift::TBase& to);

/// The fields in which `record` differs from `expected`, and from `before` unless that is null:
/// ", /lcn 5" for each. Both must have no field or element that `record` lacks.
std::string otherFields(const apache::thrift::TBase& expected, const apache::thrift::TBase& record,
                        const apache::thrift::TBase* before = nullptr);

}  // namespace lineup
