#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "compare/config_difference.h"
#include "compare/json_difference.h"
#include "ctl/commands.h"
#include "ctl/files.h"
#include "ctl/sources.h"
#include "print/named_json_writer.h"
#include "print/printed_text.h"

namespace lineup::ctl {

namespace {

using hub_module::HeadendConfig;
using nlohmann::json;

bool isInUtf8(const json& value) {
  try {
    value.dump();
    return true;
  } catch (const json::type_error&) {
    return false;
  }
}

/// The path of a text that is not in UTF-8 in the value that `operation` sets, or of the operation
/// if it has none.
std::string pathNotInUtf8(const json& operation) {
  std::string path = operation["path"];
  const json leaves = operation.value("value", json()).flatten();
  for (const auto& [leaf, value] : leaves.items()) {
    if (!isInUtf8(leaf) || !isInUtf8(value)) {
      return path + leaf;
    }
  }
  return path;
}

/// The patch as text. A text that is not in UTF-8 would not be the same in JSON.
std::string patchText(const HeadendConfig& from, const HeadendConfig& to) {
  const json patch = patchBetween(namedJson(from), namedJson(to));
  for (const json& operation : patch) {
    if (!isInUtf8(operation)) {
      throw Failure(kFile, "diff: " + printable(pathNotInUtf8(operation)) +
                               ": is not in UTF-8 and cannot be said in JSON");
    }
  }
  return patch.empty() ? "" : patch.dump(2) + "\n";
}

}  // namespace

Status diff(const Arguments& arguments) {
  static constexpr const char* kFormats[] = {"text", "json"};
  const std::string format = arguments.choice("format", kFormats);
  const std::vector<std::string>& operands = arguments.operands();
  const std::string source = operands.size() == 1 ? kRunning : operands[0];
  const std::string& target = operands.back();
  if (source == "-" && target == "-") {
    throw Failure(kUsage, "diff: only one of the two can be standard input");
  }
  HeadendConfig from;
  HeadendConfig to;
  // A bad file is refused before the controller is asked.
  if (isController(source)) {
    to = configIn(target);
    from = configIn(source);
  } else {
    from = configIn(source);
    to = configIn(target);
  }
  const std::string text = format == "json" ? patchText(from, to) : configDifference(from, to);
  print(text);
  return text.empty() ? kDone : kDiffers;
}

}  // namespace lineup::ctl
