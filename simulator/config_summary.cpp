#include "simulator/config_summary.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace lineup::simulator {

using hub_module::HeadendConfig;

namespace {

/// `names[value]`, or the number itself if it has no name.
template <std::size_t count>
std::string named(int32_t value, const std::array<const char*, count>& names) {
  const auto index = static_cast<std::size_t>(value);
  return value >= 0 && index < count ? names[index] : std::to_string(value);
}

std::string counted(std::size_t count, const char* singular, const char* plural) {
  return std::to_string(count) + (count == 1 ? singular : plural);
}

/// A text of the configuration's own, fit to stand in one short line.
std::string plain(const std::string& text) {
  constexpr std::size_t kLongest = 60;
  std::string result = text.substr(0, kLongest);
  for (char& character : result) {
    if (static_cast<unsigned char>(character) < ' ') {
      character = '?';
    }
  }
  return result;
}

std::string country(const HeadendConfig& config) {
  const hub_module::HeadendGlobalConfig& global = config.headendGlobalConfig;
  if (!global.__isset.countryCode) {
    return "not set";
  }
  const auto name = general::_CountryCode_VALUES_TO_NAMES.find(global.countryCode);
  return name != general::_CountryCode_VALUES_TO_NAMES.end() ? name->second
                                                             : std::to_string(global.countryCode);
}

std::string drm(const HeadendConfig& config) {
  const hub_module::LineupDRMConfig& drm = config.lineupConfig.globalConfig.drmConfig;
  return "Lynk " + onOff(drm.lynkConfig.enabled) + " VSecure " + onOff(drm.vsecureConfig.enabled);
}

std::string ipMuxCount(const HeadendConfig& config) {
  std::size_t count = 0;
  for (const auto& [key, input] : config.ipInputs) {
    count += input.muxes.size();
  }
  return std::to_string(count);
}

// The settings that are told when they change. Their words are the simulator's own, so that it
// shows what the console sent even if the console's words for it are wrong.
struct SettingRow {
  const char* label;
  std::string (*value)(const HeadendConfig& config);
};

const SettingRow kSettings[] = {
    {"carriers per module",
     [](const HeadendConfig& c) {
       return named<2>(c.lineupConfig.rfConfig.carriersPerModule, {"4", "6"});
     }},
    {"DRM", drm},
    {"EIT",
     [](const HeadendConfig& c) {
       return named<3>(c.lineupConfig.globalConfig.eitMode, {"off", "actual", "others"});
     }},
    {"decrypt policy",
     [](const HeadendConfig& c) {
       return named<4>(c.lineupConfig.globalConfig.decryptPolicy, {"0", "video", "sub", "ttx"});
     }},
    {"headend id",
     [](const HeadendConfig& c) { return std::to_string(c.headendGlobalConfig.headendId); }},
    {"type",
     [](const HeadendConfig& c) {
       return named<2>(c.headendGlobalConfig.headendType, {"standard", "skyit"});
     }},
    {"country", country},
    {"time zone", [](const HeadendConfig& c) { return plain(c.headendGlobalConfig.timeZone); }},
    {"output VLAN",
     [](const HeadendConfig& c) {
       return named<2>(c.lineupConfig.ipConfig.outputVlan, {"TV1 and TV2", "only TV1"});
     }},
    {"multicast range",
     [](const HeadendConfig& c) {
       const hub_module::LineupIPConfig& ip = c.lineupConfig.ipConfig;
       return plain(ip.mcastRangeStart) + "-" + plain(ip.mcastRangeEnd);
     }},
    {"port", [](const HeadendConfig& c) { return std::to_string(c.lineupConfig.ipConfig.port); }},
    {"COFDM scan",
     [](const HeadendConfig& c) { return onOff(c.lineupConfig.globalConfig.cofdmScanEnabled); }},
    {"QAMS scan",
     [](const HeadendConfig& c) { return onOff(c.lineupConfig.globalConfig.qamsScanEnabled); }},
    {"PLS items",
     [](const HeadendConfig& c) {
       return std::to_string(c.rfInputsScanConfig.plsItemList.size());
     }},
    {"IP muxes", ipMuxCount},
    {"DVB services",
     [](const HeadendConfig& c) { return std::to_string(c.lineupConfig.dvbInputServices.size()); }},
    {"ENC services",
     [](const HeadendConfig& c) { return std::to_string(c.lineupConfig.encInputServices.size()); }},
    {"reserved slots",
     [](const HeadendConfig& c) {
       return std::to_string(c.lineupConfig.emptyInputServices.size());
     }},
};

}  // namespace

std::string onOff(bool on) {
  return on ? "on" : "off";
}

std::string summary(const HeadendConfig& config) {
  const hub_module::LineupConfig& lineup = config.lineupConfig;
  return counted(lineup.rfEntries.size(), " RF entry, ", " RF entries, ") +
         counted(lineup.ipEntries.size(), " IP entry, ", " IP entries, ") + "modulation " +
         named<3>(lineup.rfConfig.modulation, {"COFDM", "QAM", "QAM B"});
}

std::string summaryOfChange(const HeadendConfig& previous, const HeadendConfig& next) {
  if (next == previous) {
    return summary(next) + "; no change";
  }
  std::string changes;
  for (const SettingRow& row : kSettings) {
    const std::string value = row.value(next);
    if (value == row.value(previous)) {
      continue;
    }
    changes += (changes.empty() ? "; " : ", ") + std::string(row.label) + " " + value;
  }
  if (changes.empty() && summary(next) == summary(previous)) {
    changes = "; other changes";
  }
  return summary(next) + changes;
}

}  // namespace lineup::simulator
