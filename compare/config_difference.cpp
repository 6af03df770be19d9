#include "compare/config_difference.h"

#include "compare/difference_lines.h"
#include "compare/input_difference.h"
#include "compare/json_difference.h"
#include "compare/lineup_difference.h"
#include "compare/named_json_writer.h"
#include "compare/setting_words.h"

namespace lineup {

namespace {

using korvel::thrift::hub_module::HeadendConfig;
using nlohmann::json;

/// Whether there is a PLS list in `to` only because it holds items, which are said.
bool bringsPlsList(const HeadendConfig& from, const HeadendConfig& to) {
  const auto& scan = to.rfInputsScanConfig;
  return !from.rfInputsScanConfig.__isset.plsItemList && scan.__isset.plsItemList &&
         !scan.plsItemList.empty();
}

/// The named JSON of everything but the settings, which are made the same in every configuration,
/// the lineups and their services, the IP muxes and the PLS items; of the PLS list itself as well
/// unless it is to be `withPlsList`.
json withoutWorded(HeadendConfig config, bool withPlsList) {
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
      text.append(setting.command).append(": ").append(before).append(" -> ").append(now);
      text += '\n';
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
  compareJson(withoutWorded(from, true), withoutWorded(to, !bringsPlsList(from, to)),
              [&](const std::string& path, const json* before, const json* now) {
                text += differenceLine(path, before, now);
              });
  return text;
}

}  // namespace lineup
