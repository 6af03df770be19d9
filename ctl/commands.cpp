#include "ctl/commands.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <span>
#include <string_view>
#include <utility>

#include "compare/config_difference.h"
#include "compare/config_tables.h"
#include "compare/json_difference.h"
#include "compare/named_json_writer.h"
#include "compare/printed_text.h"
#include "controller/whole_config_file.h"
#include "ctl/apply.h"
#include "ctl/arguments.h"
#include "ctl/backups.h"
#include "ctl/show_catalogue.h"
#include "ctl/sources.h"
#include "ctl/usage.h"
#include "ctl/wait.h"

namespace lineup::ctl {

namespace {

using korvel::thrift::hub_module::HeadendConfig;
using nlohmann::json;

// ---- show

/// A part of a configuration as people read it.
struct Section {
  const char* name;
  const char* title;
  TextTable (*table)(const HeadendConfig&);  // null: of the status, for what runs
};

constexpr Section kSections[] = {
    {"settings", "Settings", settingsTable},  {"rf", "RF lineup", rfLineupTable},
    {"ip", "IP lineup", ipLineupTable},       {"slots", "Reserved slots", reservedSlotsTable},
    {"ipinputs", "IP inputs", ipInputsTable}, {"rfinputs", "RF inputs", nullptr},
    {"scan", "Satellite scan", scanTable},
};

const Section& sectionNamed(const std::string& name) {
  std::string known;
  for (const Section& section : kSections) {
    if (section.name == name) {
      return section;
    }
    known += known.empty() ? section.name : std::string(", ") + section.name;
  }
  throw Failure(kUsage, "--section: \"" + name + "\" is none of " + known);
}

/// The sections that are asked for, all that the source has if none is.
std::vector<Section> chosenSections(const Arguments& arguments, const std::string& source) {
  const auto isThere = [&](const Section& section) {
    return section.table != nullptr || isRunning(source);
  };
  std::vector<Section> sections;
  for (const std::string& name : arguments.values("section")) {
    sections.push_back(sectionNamed(name));
    if (!isThere(sections.back())) {
      throw Failure(kUsage, "--section: \"" + name + "\" is only of what runs");
    }
  }
  if (sections.empty()) {
    std::copy_if(std::begin(kSections), std::end(kSections), std::back_inserter(sections), isThere);
  }
  return sections;
}

std::string sectionsText(const std::vector<Section>& sections, const HeadendConfig& config) {
  std::string text;
  for (const Section& section : sections) {
    TextTable table =
        section.table == nullptr ? rfInputsTable(runningRFInputs()) : section.table(config);
    text += text.empty() ? "" : "\n";
    text += titledText(section.title, std::move(table));
  }
  return text;
}

/// The lineup that is asked for: the RF lineup unless it is the IP lineup.
const Section& csvSection(const Arguments& arguments) {
  const std::vector<std::string> names = arguments.values("section");
  const std::string name = names.empty() ? "rf" : names.front();
  const Section& section = sectionNamed(name);
  if (names.size() > 1 || (section.table != rfLineupTable && section.table != ipLineupTable)) {
    throw Failure(kUsage, "show: csv is of one lineup, --section rf or --section ip");
  }
  return section;
}

/// The configuration in `source`, which is kept until the process ends: freeing the records of ten
/// thousand services one by one would take a tenth of the time of showing them.
const HeadendConfig& keptConfigIn(const std::string& source) {
  static const HeadendConfig* const kKept = new HeadendConfig(configIn(source));
  return *kKept;
}

Status show(const Arguments& arguments) {
  static constexpr const char* kFormats[] = {"text", "json", "csv"};
  const std::string format = arguments.choice("format", kFormats);
  const std::string source = arguments.operands().empty() ? "running" : arguments.operands()[0];
  if (format == "json") {
    if (arguments.has("section")) {
      throw Failure(kUsage, "show: json is of the whole configuration, without --section");
    }
    std::string text = namedJsonText(keptConfigIn(source));
    text += '\n';
    print(text);
  } else if (format == "csv") {
    const Section& section = csvSection(arguments);
    print(tableCsv(section.table(keptConfigIn(source))));
  } else {
    const std::vector<Section> sections = chosenSections(arguments, source);
    print(sectionsText(sections, keptConfigIn(source)));
  }
  return kDone;
}

// ---- diff

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
  const std::string path = operation["path"];
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

Status diff(const Arguments& arguments) {
  static constexpr const char* kFormats[] = {"text", "json"};
  const std::string format = arguments.choice("format", kFormats);
  const std::vector<std::string>& operands = arguments.operands();
  const std::string source = operands.size() == 1 ? "running" : operands[0];
  const std::string& target = operands.back();
  if (source == "-" && target == "-") {
    throw Failure(kUsage, "diff: only one of the two can be standard input");
  }
  HeadendConfig from;
  HeadendConfig to;
  // A file that is not good is refused before the controller is asked.
  if (isRunning(source)) {
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

// ---- save, backup

Status save(const Arguments& arguments) {
  writeFile(arguments.operands()[0], configFileContent(runningConfig()));
  return kDone;
}

Status backup(const Arguments& arguments) {
  const std::size_t keep = arguments.count("keep");
  const std::string added =
      keepCopy(arguments.operands()[0], configFileContent(runningConfig()), keep);
  print(added.empty() ? "" : added + "\n");
  return kDone;
}

// ---- which command is which

/// A command: its options, how many operands it takes, and what it does.
struct Command {
  std::string_view word;
  std::span<const Option> options;
  std::size_t leastOperands;
  std::size_t mostOperands;
  Status (*run)(const Arguments&);
};

constexpr std::size_t kAny = static_cast<std::size_t>(-1);

constexpr Option kShowOptions[] = {{"section"}, {"format"}};
constexpr Option kDiffOptions[] = {{"format"}};
constexpr Option kApplyOptions[] = {
    {"dry-run", false}, {"backup"}, {"keep"}, {"expect"}, {"patch"}};
constexpr Option kBackupOptions[] = {{"keep"}};
constexpr Option kWaitOptions[] = {{"timeout"}};
constexpr Option kCatalogueOptions[] = {{"format"}};

constexpr Command kCommands[] = {
    {"show", kShowOptions, 0, 1, show},
    {"diff", kDiffOptions, 1, 2, diff},
    {"save", {}, 1, 1, save},
    {"apply", kApplyOptions, 1, 1, apply},
    {"backup", kBackupOptions, 1, 1, backup},
    {"wait", kWaitOptions, 0, 0, waitForController},
    {"catalogue", kCatalogueOptions, 0, kAny, showCatalogue},
};

Status printDone(const char* text) {
  print(text);
  return kDone;
}

}  // namespace

Status runCommand(const std::vector<std::string>& words) {
  if (words.empty()) {
    throw Failure(kUsage, "a command is missing; \"lineupctl --help\" lists them");
  }
  if (words[0] == "--help") {
    return printDone(kUsageText);
  }
  if (words[0] == "--version") {
    return printDone(kVersionText);
  }
  for (const Command& command : kCommands) {
    if (command.word == words[0]) {
      const Arguments arguments(words, command.options, command.leastOperands,
                                command.mostOperands);
      return arguments.has("help") ? printDone(kUsageText) : command.run(arguments);
    }
  }
  throw Failure(kUsage,
                "there is no command \"" + words[0] + "\"; \"lineupctl --help\" lists them");
}

}  // namespace lineup::ctl
