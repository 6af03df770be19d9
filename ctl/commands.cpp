#include "ctl/commands.h"

#include <cstddef>
#include <span>
#include <string_view>

#include "ctl/files.h"

namespace lineup::ctl {

namespace {

constexpr char kVersionText[] = "lineupctl " LINEUP_VERSION "\n";

constexpr char kUsageText[] =
    "usage: lineupctl COMMAND [OPTION]... [OPERAND]...\n"
    "\n"
    "  show [--section SECTION]... [--format text|json|csv] [SOURCE]\n"
    "      Show a configuration. SECTION is settings, rf, ip, slots, ipinputs, rfinputs or scan.\n"
    "  diff [--format text|json] [FROM] TO\n"
    "      Show what differs between two sources; FROM is running unless it is given.\n"
    "  save FILE\n"
    "      Save the running configuration.\n"
    "  apply [--dry-run] [--backup DIR [--keep N]] [--expect SOURCE] [--patch PATCH]... FILE\n"
    "      Send a configuration, and check that it runs.\n"
    "  backup [--keep N] DIR\n"
    "      Keep the running configuration, if it differs from the newest kept.\n"
    "  wait [--timeout SECONDS]\n"
    "      Wait until the controller answers.\n"
    "  catalogue [--format text|json|csv] [WORD]...\n"
    "      Find services whose names hold every word.\n"
    "\n"
    "  --help, --version\n"
    "\n"
    "SOURCE, FROM and TO are \"running\" (what the controller holds), a file, or - for standard\n"
    "input.\n"
    "\n"
    "Exit status: 0 done; 1 differs, or --expect does not hold, or wait ran out; 2 wrong usage;\n"
    "3 a file, the output or the catalogue; 4 the controller; 5 something else runs than was "
    "sent.\n";

/// A command: its options, how many operands it takes, and what it does.
struct Command {
  std::string_view word;
  std::span<const Option> options{};
  std::size_t leastOperands = 0;
  std::size_t mostOperands = 0;
  bool takesNames = true;  // its operands name files and folders
  Status (*run)(const Arguments&);
};

constexpr std::size_t kAny = static_cast<std::size_t>(-1);

constexpr Option kShowOptions[] = {{.name = "section", .isRepeatable = true}, {"format"}};
constexpr Option kDiffOptions[] = {{"format"}};
constexpr Option kApplyOptions[] = {{.name = "dry-run", .hasValue = false},
                                    {"backup"},
                                    {"keep"},
                                    {"expect"},
                                    {.name = "patch", .isRepeatable = true}};
constexpr Option kBackupOptions[] = {{"keep"}};
constexpr Option kWaitOptions[] = {{"timeout"}};
constexpr Option kCatalogueOptions[] = {{"format"}};

constexpr Command kCommands[] = {
    {.word = "show", .options = kShowOptions, .mostOperands = 1, .run = show},
    {.word = "diff", .options = kDiffOptions, .leastOperands = 1, .mostOperands = 2, .run = diff},
    {.word = "save", .leastOperands = 1, .mostOperands = 1, .run = save},
    {.word = "apply",
     .options = kApplyOptions,
     .leastOperands = 1,
     .mostOperands = 1,
     .run = apply},
    {.word = "backup",
     .options = kBackupOptions,
     .leastOperands = 1,
     .mostOperands = 1,
     .run = backup},
    {.word = "wait", .options = kWaitOptions, .run = waitForController},
    {.word = "catalogue",
     .options = kCatalogueOptions,
     .mostOperands = kAny,
     .takesNames = false,
     .run = catalogue},
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
