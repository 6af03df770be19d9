#include "ctl/commands.h"

#include <cstddef>
#include <span>
#include <string_view>

#include "ctl/files.h"
#include "ctl/usage.h"

namespace lineup::ctl {

namespace {

/// A command: its options, how many operands it takes, and what it does.
struct Command {
  std::string_view word;
  std::span<const Option> options;
  std::size_t leastOperands;
  std::size_t mostOperands;
  bool takesNames;  // its operands name files and folders
  Status (*run)(const Arguments&);
};

constexpr std::size_t kAny = static_cast<std::size_t>(-1);

constexpr Option kShowOptions[] = {{"section", true, true}, {"format"}};
constexpr Option kDiffOptions[] = {{"format"}};
constexpr Option kApplyOptions[] = {
    {"dry-run", false}, {"backup"}, {"keep"}, {"expect"}, {"patch", true, true}};
constexpr Option kBackupOptions[] = {{"keep"}};
constexpr Option kWaitOptions[] = {{"timeout"}};
constexpr Option kCatalogueOptions[] = {{"format"}};

constexpr Command kCommands[] = {
    {"show", kShowOptions, 0, 1, true, show},
    {"diff", kDiffOptions, 1, 2, true, diff},
    {"save", {}, 1, 1, true, save},
    {"apply", kApplyOptions, 1, 1, true, apply},
    {"backup", kBackupOptions, 1, 1, true, backup},
    {"wait", kWaitOptions, 0, 0, true, waitForController},
    {"catalogue", kCatalogueOptions, 0, kAny, false, catalogue},
};

/// Throws Failure(kUsage) for an empty operand, which names no file: most often that of a script
/// whose variable is not set.
void requireNames(const std::string& command, const Arguments& arguments) {
  for (const std::string& operand : arguments.operands()) {
    if (operand.empty()) {
      throw Failure(kUsage, command + ": an operand is empty");
    }
  }
}

Status printDone(const char* text) {
  print(text);
  return kDone;
}

}  // namespace

Status runCommand(const std::vector<std::string>& words) {
  if (words.empty()) {
    throw Failure(kUsage, "a command is missing; \"lineupctl --help\" lists them");
  }
  if (words[0] == "--help" || words[0] == "--version") {
    if (words.size() > 1) {
      throw Failure(kUsage, words[0] + ": \"" + words[1] + "\" is one operand too many");
    }
    return printDone(words[0] == "--help" ? kUsageText : kVersionText);
  }
  for (const Command& command : kCommands) {
    if (command.word == words[0]) {
      const Arguments arguments(words, command.options, command.leastOperands,
                                command.mostOperands);
      if (command.takesNames) {
        requireNames(words[0], arguments);
      }
      return arguments.has("help") ? printDone(kUsageText) : command.run(arguments);
    }
  }
  throw Failure(kUsage,
                "there is no command \"" + words[0] + "\"; \"lineupctl --help\" lists them");
}

}  // namespace lineup::ctl
