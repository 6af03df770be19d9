#include "ctl/patch.h"

#include <cstddef>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <stdexcept>
#include <vector>

#include "ctl/failure.h"
#include "ctl/files.h"
#include "print/named_json_reader.h"
#include "print/named_json_writer.h"
#include "print/printed_text.h"

namespace lineup::ctl {

namespace {

using hub_module::HeadendConfig;
using nlohmann::json;

/// The library's message, without the name of the exception, in brackets, that it begins with.
std::string reasonOf(const json::exception& error) {
  const std::string text = error.what();
  const std::size_t end = text.find("] ");
  return end == std::string::npos ? text : text.substr(end + 2);
}

/// The place that an operation of a patch names, if it names one.
std::optional<std::string> pathOf(const json& operation) {
  if (!operation.is_object() || !operation.contains("path") || !operation["path"].is_string()) {
    return std::nullopt;
  }
  return operation["path"].get<std::string>();
}

/// Throws std::domain_error if `operation` names a member of a value that has none, such as a
/// number: the library does not tell that from a place that can be changed.
void requirePlace(const json& record, const json& operation) {
  const json::json_pointer place(pathOf(operation).value_or(""));
  if (place.empty()) {
    return;  // the library checks operations without a path and those on the whole record
  }
  const json::json_pointer around = place.parent_pointer();
  if (record.contains(around) && !record.at(around).is_structured()) {
    throw std::domain_error(around.to_string() + " has no members");
  }
}

/// Applies one operation of a patch. Throws std::domain_error, with the reason.
void patchOnce(json& record, const json& operation) {
  try {
    requirePlace(record, operation);
    record.patch_inplace(json::array({operation}));
  } catch (const json::exception& error) {
    throw std::domain_error(reasonOf(error));
  }
}

/// Looks at a patch while it is parsed. Throws std::domain_error for one that is nested so deep
/// that the library's functions, which call themselves for each level, would overflow the stack,
/// and for a member that an object has twice, of which the library would keep the last.
class PatchChecker {
 public:
  bool operator()(int depth, json::parse_event_t event, const json& parsed) {
    if (depth > kDeepest) {
      throw std::domain_error("is nested deeper than " + std::to_string(kDeepest) + " levels");
    }
    if (event == json::parse_event_t::object_start) {
      open_.emplace_back();
    } else if (event == json::parse_event_t::object_end) {
      open_.pop_back();
    } else if (event == json::parse_event_t::key && !open_.back().insert(parsed).second) {
      throw std::domain_error("has an object with " + inQuotes(parsed.get<std::string>()) +
                              " twice");
    }
    return true;
  }

 private:
  static constexpr int kDeepest = 1000;  // a configuration has fourteen levels

  std::vector<std::set<std::string>> open_;  // the names in the objects that are being parsed
};

/// `record` with the patch of RFC 6902 in `text`. Throws std::domain_error, with the operation and
/// the reason.
json patchedJson(json record, const std::string& text) {
  PatchChecker checker;
  const json patch = json::parse(text, std::ref(checker));
  if (!patch.is_array()) {
    throw std::domain_error("is no array of operations");
  }
  for (std::size_t index = 0; index < patch.size(); ++index) {
    try {
      patchOnce(record, patch[index]);
    } catch (const std::domain_error& error) {
      const std::optional<std::string> path = pathOf(patch[index]);
      throw std::domain_error("operation " + std::to_string(index + 1) +
                              (path ? ", " + *path : "") + ": " + error.what());
    }
  }
  return record;
}

}  // namespace

HeadendConfig patched(const HeadendConfig& config, const std::string& path) {
  const std::string text = textInFile(path);
  const std::string name = fileName(path);
  try {
    return configFromJson(patchedJson(namedJson(config), text));
  } catch (const json::exception& error) {
    throw Failure(kFile, name + ": " + reasonOf(error));
  } catch (const std::domain_error& error) {
    throw Failure(kFile, name + ": " + error.what());
  } catch (const std::runtime_error& error) {
    throw Failure(kFile, name + ": leaves no complete configuration: " + error.what());
  }
}

}  // namespace lineup::ctl
