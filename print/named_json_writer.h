// Writing records as named JSON, in which every field has its name.

#pragma once

#include <thrift/TBase.h>

#include <nlohmann/json.hpp>
#include <string>

namespace lineup {

/// `record` as an object with a member for each field, by the field's name. A field that is not set
/// has no member. Lists are arrays; maps are objects, whose members are named by the keys,
/// numbers in decimal. Enumerators are numbers. A double that JSON has no number for is the text
/// "NaN", "Infinity" or "-Infinity". Texts hold the bytes that the record holds, UTF-8 or not.
/// Throws TProtocolException for a field of a type that no configuration has: a set, binary, a
/// byte, an integer of 16 or 64 bits.
nlohmann::json namedJson(const apache::thrift::TBase& record);

/// The same as text, indented by two blanks, the members in the order of the fields. Bytes that are
/// no UTF-8 have no place in JSON and become U+FFFD.
std::string namedJsonText(const apache::thrift::TBase& record);

}  // namespace lineup
