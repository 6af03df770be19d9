#include <algorithm>
#include <cstddef>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "compare/config_difference.h"
#include "compare/named_json_reader.h"
#include "compare/named_json_writer.h"
#include "compare/printed_text.h"
#include "controller/config_file.h"
#include "ctl/backups.h"
#include "ctl/commands.h"
#include "ctl/sources.h"
#include "support/signal_sets.h"

namespace lineup::ctl {

namespace {

using korvel::thrift::hub_module::HeadendConfig;
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
json patched(json record, const std::string& text) {
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

/// `config` with the patch in the file `path`.
HeadendConfig patched(const HeadendConfig& config, const std::string& path) {
  const std::string text = textInFile(path);
  const std::string name = fileName(path);
  try {
    return configFromJson(patched(namedJson(config), text));
  } catch (const json::exception& error) {
    throw Failure(kFile, name + ": " + reasonOf(error));
  } catch (const std::domain_error& error) {
    throw Failure(kFile, name + ": " + error.what());
  } catch (const std::runtime_error& error) {
    throw Failure(kFile, name + ": leaves no complete configuration: " + error.what());
  }
}

/// The configuration to send: the file's, patched.
HeadendConfig wantedConfig(const Arguments& arguments) {
  HeadendConfig wanted = configInFile(arguments.operands()[0]);
  for (const std::string& patch : arguments.values("patch")) {
    wanted = patched(wanted, patch);
  }
  return wanted;
}

/// Keeps a copy of the running configuration with --backup.
void backUpRunning(const Arguments& arguments, const HeadendConfig& running) {
  if (!arguments.has("backup")) {
    return;
  }
  const KeptCopy kept =
      keepCopy(arguments.value("backup", ""), configFileContent(running), arguments.count("keep"));
  print("kept what ran in " + kept.path + "\n");
}

/// Prints `text`. An output error is one line on standard error and does not change the status,
/// which has to say that something else runs.
void printIfPossible(const std::string& text) {
  try {
    print(text);
  } catch (const Failure& failure) {
    complain(failure.what());
  }
}

/// Sends `wanted`, which came from `file`, and reads back what then runs.
HeadendConfig sendAndReadBack(const HeadendConfig& wanted, const std::string& file,
                              const BlockedEndingSignals& uninterrupted) {
  try {
    send(wanted);
  } catch (const Refused& refused) {
    throw Failure(refused.status(), refused.what() + ("; " + file + " was not taken over"));
  } catch (const Failure& failure) {
    throw Failure(failure.status(),
                  failure.what() + ("; whether " + file + " was taken over is not known"));
  }
  if (uninterrupted.isAnyPending()) {
    throw Failure(kController, file +
                                   ": was sent and taken over; a signal ends this before it was "
                                   "read back");
  }
  try {
    return runningConfig();
  } catch (const Failure& failure) {
    throw Failure(failure.status(),
                  failure.what() + ("; " + file + " was sent, but could not be read back"));
  }
}

/// Likewise, and compares what then runs with `wanted`. Signals are blocked until the outcome has
/// been printed.
void sendAndCompare(const HeadendConfig& wanted, const std::string& file) {
  const BlockedEndingSignals uninterrupted;
  try {
    const std::string otherwise =
        configDifference(wanted, sendAndReadBack(wanted, file, uninterrupted));
    if (!otherwise.empty()) {
      printIfPossible(otherwise);
      throw Failure(kOtherConfig, file + ": was sent, but something else runs");
    }
    if (uninterrupted.isAnyPending()) {
      complain(file + ": was sent, and runs");
    }
  } catch (const Failure& failure) {
    if (uninterrupted.isAnyPending()) {
      complain(failure.what());
    }
    throw;
  }
}

void requireConsistentOptions(const Arguments& arguments) {
  if (arguments.has("keep") && !arguments.has("backup")) {
    throw Failure(kUsage, "apply: --keep goes with --backup");
  }
  arguments.count("keep");
  std::vector<std::string> files = arguments.values("patch");
  files.push_back(arguments.operands()[0]);
  files.push_back(arguments.value("expect", ""));
  if (std::count(files.begin(), files.end(), "-") > 1) {
    throw Failure(kUsage, "apply: only one file can be standard input");
  }
}

}  // namespace

Status apply(const Arguments& arguments) {
  requireConsistentOptions(arguments);
  const HeadendConfig wanted = wantedConfig(arguments);
  std::optional<HeadendConfig> expected;
  const std::string expectedSource = arguments.value("expect", "running");
  if (!isRunning(expectedSource)) {
    expected = configInFile(expectedSource);
  }
  const HeadendConfig running = runningConfig();
  if (expected && !configDifference(*expected, running).empty()) {
    throw Failure(kDiffers, fileName(expectedSource) + ": is not what runs");
  }
  const std::string difference = configDifference(running, wanted);
  print(difference);
  if (difference.empty()) {
    return kDone;
  }
  if (arguments.has("dry-run")) {
    return kDiffers;
  }
  backUpRunning(arguments, running);
  sendAndCompare(wanted, fileName(arguments.operands()[0]));
  return kDone;
}

}  // namespace lineup::ctl
