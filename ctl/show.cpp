#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "ctl/commands.h"
#include "ctl/controller.h"
#include "ctl/files.h"
#include "ctl/sources.h"
#include "print/config_tables.h"
#include "print/named_json_writer.h"

namespace lineup::ctl {

namespace {

using hub_module::HeadendConfig;

/// A part of a configuration as people read it.
struct Section {
  const char* name;
  const char* title;
  TextTable (*table)(const HeadendConfig&);  // null: made of the controller's status
};

constexpr Section kSections[] = {
    {"settings", "Settings", settingsTable},  {"rf", "RF lineup", rfLineupTable},
    {"ip", "IP lineup", ipLineupTable},       {"slots", "Reserved slots", reservedSlotsTable},
    {"ipinputs", "IP inputs", ipInputsTable}, {"rfinputs", "RF inputs", nullptr},
    {"scan", "Satellite scan", scanTable},
};

const Section& sectionNamed(const std::string& name) {
  std::vector<const char*> names;
  for (const Section& section : kSections) {
    names.push_back(section.name);
  }
  return kSections[requireOneOf("section", name, names)];
}

/// The sections that the options name, or all that the source has.
std::vector<Section> chosenSections(const Arguments& arguments, const std::string& source) {
  const auto isThere = [&](const Section& section) {
    return section.table != nullptr || isController(source);
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

}  // namespace

Status show(const Arguments& arguments) {
  const std::string format = arguments.choice("format", kTableFormats);
  const std::string source = arguments.operands().empty() ? kRunning : arguments.operands()[0];
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

}  // namespace lineup::ctl
