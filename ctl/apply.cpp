#include <algorithm>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "compare/config_difference.h"
#include "controller/config_file.h"
#include "ctl/backups.h"
#include "ctl/commands.h"
#include "ctl/controller.h"
#include "ctl/files.h"
#include "ctl/patch.h"
#include "ctl/sources.h"
#include "support/signal_sets.h"

namespace lineup::ctl {

namespace {

using hub_module::HeadendConfig;

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
  const KeptCopy kept = keepCopy(arguments.value("backup", ""), configFileContent(running),
                                 arguments.wholeNumber("keep"));
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

/// The difference between `wanted` and what runs now. `unread` is added to the message of a
/// failure.
std::string differenceReadBack(const HeadendConfig& wanted, const std::string& unread) {
  try {
    return configDifference(wanted, runningConfig());
  } catch (const Failure& failure) {
    throw Failure(failure.status(), failure.what() + unread);
  } catch (const std::bad_alloc&) {
    throw Failure(kController, kOutOfMemory + unread);
  }
}

/// Sends `wanted`, which came from `file`. Returns its difference from what then runs.
std::string sendAndReadBack(const HeadendConfig& wanted, const std::string& file,
                            const BlockedEndingSignals& uninterrupted) {
  // Before it is sent, as there may be no memory for them later.
  const std::string unknown = "; whether " + file + " was taken over is not known";
  const std::string unread = "; " + file + " was sent, but could not be read back";
  try {
    send(wanted);
  } catch (const NotSent& notSent) {
    throw Failure(notSent.status(), notSent.what() + ("; " + file + " was not taken over"));
  } catch (const Failure& failure) {
    throw Failure(failure.status(), failure.what() + unknown);
  } catch (const std::bad_alloc&) {
    throw Failure(kController, kOutOfMemory + unknown);
  }
  if (uninterrupted.isAnyPending()) {
    throw Failure(kController, file +
                                   ": was sent and taken over; a signal ends this before it was "
                                   "read back");
  }
  return differenceReadBack(wanted, unread);
}

/// Sends `wanted` likewise, and compares it with what then runs. Signals are blocked until the
/// outcome has been printed.
void sendAndCompare(const HeadendConfig& wanted, const std::string& file) {
  const BlockedEndingSignals uninterrupted;
  try {
    const std::string otherwise = sendAndReadBack(wanted, file, uninterrupted);
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
  arguments.wholeNumber("keep");  // throws unless it is one
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
  const std::string expectedSource = arguments.value("expect", kRunning);
  if (!isController(expectedSource)) {
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
