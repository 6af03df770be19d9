#include "compare/difference_lines.h"

#include <set>

#include "compare/json_difference.h"
#include "print/named_json_writer.h"
#include "print/printed_text.h"

namespace lineup {

using apache::thrift::TBase;
using nlohmann::json;

std::string differenceLine(const std::string& place, const json* before, const json* now) {
  if (before == nullptr) {
    return printable(place) + ": added " + printedValue(*now) + "\n";
  }
  if (now == nullptr) {
    return printable(place) + ": removed " + printedValue(*before) + "\n";
  }
  return printable(place) + ": " + printedValue(*before) + " -> " + printedValue(*now) + "\n";
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
