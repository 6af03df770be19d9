#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>

#include "compare/config_difference.h"
#include "compare/named_json_reader.h"
#include "compare/named_json_writer.h"
#include "controller/whole_config_file.h"
#include "ctl/backups.h"
#include "ctl/commands.h"
#include "ctl/sources.h"
#include "support/blocked_signals.h"

namespace lineup::ctl {

namespace {

using korvel::thrift::hub_module::HeadendConfig;
using nlohmann::json;

std::string contentOf(const std::string& path) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::string content;
  std::array<char, 4096> part{};
  while (file.read(part.data(), part.size()), file.gcount() > 0) {
    content.append(part.data(), static_cast<std::size_t>(file.gcount()));
  }
  if (!file.is_open() || file.bad()) {
    throw Failure(kFile, path + ": " + std::strerror(errno == 0 ? EIO : errno));
  }
  return content;
}

/// Throws Failure if `operation`, of the patch in the file `path`, names a member of a value that
/// has none, such as a number: the library does not tell that from a place that can be changed.
void requirePlace(const json& record, const json& operation, const std::string& path) {
  if (!operation.is_object() || !operation.contains("path") || !operation["path"].is_string()) {
    return;  // the library says so
  }
  const json::json_pointer place(operation["path"].get<std::string>());
  if (place.empty()) {
    return;
  }
  const json::json_pointer around = place.parent_pointer();
  if (record.contains(around) && !record.at(around).is_structured()) {
    throw Failure(kFile, path + ": " + around.to_string() + " has no members");
  }
}

/// `record` with the patch of RFC 6902 in the file `path`.
json patched(json record, const std::string& path) {
  const json patch = json::parse(contentOf(path));
  if (!patch.is_array()) {
    record.patch_inplace(patch);  // which says why it is none
  }
  for (const json& operation : patch) {
    requirePlace(record, operation, path);
    record.patch_inplace(json::array({operation}));
  }
  return record;
}

/// `config` with the patch in the file `path`.
HeadendConfig patched(const HeadendConfig& config, const std::string& path) {
  try {
    return configFromJson(patched(namedJson(config), path));
  } catch (const json::exception& error) {
    throw Failure(kFile, path + ": " + error.what());
  } catch (const Failure&) {
    throw;
  } catch (const std::runtime_error& error) {
    throw Failure(kFile, path + ": leaves no complete configuration: " + error.what());
  }
}

/// What is to run.
HeadendConfig wantedConfig(const Arguments& arguments) {
  HeadendConfig wanted = configInFile(arguments.operands()[0]);
  for (const std::string& patch : arguments.values("patch")) {
    wanted = patched(wanted, patch);
  }
  return wanted;
}

/// Keeps a copy of what runs, if a folder for it is given.
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
  if (arguments.operands()[0] == "-" && arguments.value("expect", "") == "-") {
    throw Failure(kUsage, "apply: only one of the two can be standard input");
  }
}

}  // namespace

Status apply(const Arguments& arguments) {
  requireConsistentOptions(arguments);
  const std::string file = arguments.operands()[0];
  const HeadendConfig wanted = wantedConfig(arguments);
  std::optional<HeadendConfig> expected;
  const std::string expectedSource = arguments.value("expect", "running");
  if (!isRunning(expectedSource)) {
    expected = configInFile(expectedSource);
  }
  const HeadendConfig running = runningConfig();
  if (expected && !configDifference(*expected, running).empty()) {
    throw Failure(kDiffers, expectedSource + ": is not what runs");
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
  sendAndCompare(wanted, file);
  return kDone;
}

}  // namespace lineup::ctl
