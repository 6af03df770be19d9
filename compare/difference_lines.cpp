#include "compare/difference_lines.h"

#include <set>

#include "compare/json_difference.h"
#include "print/named_json_writer.h"
#include "print/printed_text.h"

namespace lineup {

using apache::thrift::TBase;
using nlohmann::json;

namespace {

std::optional<std::string> valueText(const json* value) {
  return value == nullptr ? std::nullopt : std::optional(printedValue(*value));
}

}  // namespace

std::string changeLine(const std::optional<std::string>& before,
                       const std::optional<std::string>& now) {
  if (before && now) {
    return *before + " -> " + *now + "\n";
  }
  return (now ? "added " + *now : "removed " + *before) + "\n";
}

std::string differenceLine(const std::string& place, const json* before, const json* now) {
  return printable(place) + ": " + changeLine(valueText(before), valueText(now));
}

std::string fieldDifferences(const std::string& where, const TBase& from, const TBase& to) {
  std::string text;
  compareJson(namedJson(from), namedJson(to),
              [&](const std::string& path, const json* before, const json* now) {
                text += where + differenceLine(path, before, now);
              });
  return text;
}

std::string otherFields(const TBase& expected, const TBase& record, const TBase* before) {
  std::set<std::string> said;  // paths
  std::string text;
  const json now = namedJson(record);
  const auto compareWith = [&](const TBase& other) {
    compareJson(namedJson(other), now,
                [&](const std::string& path, const json* /*before*/, const json* value) {
                  if (said.insert(path).second) {
                    text += ", " + path + " " + printedValue(*value);
                  }
                });
  };
  compareWith(expected);
  if (before != nullptr) {
    compareWith(*before);
  }
  return text;
}

}  // namespace lineup
