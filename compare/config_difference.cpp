#include "compare/config_difference.h"

#include "compare/difference_lines.h"
#include "compare/input_difference.h"
#include "compare/json_difference.h"
#include "compare/lineup_difference.h"
#include "print/named_json_writer.h"
#include "print/setting_words.h"

namespace lineup {

namespace {

using hub_module::HeadendConfig;
using nlohmann::json;

/// Whether only `to` has a PLS list, and items in it, whose lines imply the list.
bool bringsPlsList(const HeadendConfig& from, const HeadendConfig& to) {
  const auto& scan = to.rfInputsScanConfig;
  return !from.rfInputsScanConfig.__isset.plsItemList && scan.__isset.plsItemList &&
         !scan.plsItemList.empty();
}

/// The named JSON of what the other lines leave out: everything but the settings, which get the
/// same values in every configuration, the lineups and their services, the IP muxes and the PLS
/// items. Without `withPlsList`, the PLS list is left out, too.
json remainder(HeadendConfig config, bool withPlsList) {
  for (const Setting& setting : kSettings) {
    setting.store(config, setting.choices[0].value);
  }
  config.rfInputsScanConfig.plsItemList.clear();
  if (!withPlsList) {
    config.rfInputsScanConfig.__isset.plsItemList = false;
  }
  for (auto& [key, input] : config.ipInputs) {
    input.muxes.clear();
  }
  config.lineupConfig.rfEntries.clear();
  config.lineupConfig.ipEntries.clear();
  config.lineupConfig.dvbInputServices.clear();
  config.lineupConfig.encInputServices.clear();
  config.lineupConfig.emptyInputServices.clear();
  return namedJson(config);
}

std::string settingDifferences(const HeadendConfig& from, const HeadendConfig& to) {
  std::string text;
  for (const Setting& setting : kSettings) {
    const std::string before = settingWord(setting, from);
    const std::string now = settingWord(setting, to);
    if (before != now) {
      text.append(setting.command).append(": ").append(changeLine(before, now));
    }
  }
  return text;
}

}  // namespace

std::string configDifference(const HeadendConfig& from, const HeadendConfig& to) {
  if (from == to) {
    return "";
  }
  std::string text =
      settingDifferences(from, to) + lineupDifferences(from, to) + inputDifferences(from, to);
  compareJson(remainder(from, true), remainder(to, !bringsPlsList(from, to)),
              [&](const std::string& path, const json* before, const json* now) {
                text += differenceLine(path, before, now);
              });
  return text;
}

}  // namespace lineup
