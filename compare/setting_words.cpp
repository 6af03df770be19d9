#include "compare/setting_words.h"

#include "model/setting_choices.h"

namespace lineup {

namespace {

using Config = korvel::thrift::hub_module::HeadendConfig;

constexpr Choice kSwitch[] = {{"disabled", 0}, {"enabled", 1}};
constexpr Choice kPlsTypes[] = {{"Auto", 0}, {"Gold", 1}, {"Root", 2}};

std::string wordFor(std::span<const Choice> choices, int32_t value) {
  const Choice* const choice = findValue(choices, value);
  return choice == nullptr ? "unknown (" + std::to_string(value) + ")" : std::string(choice->word);
}

std::string countryWord(const Config& config) {
  const auto& global = config.headendGlobalConfig;
  return global.__isset.countryCode ? wordFor(kCountries, global.countryCode) : "not set";
}

std::string drmWord(const Config& config) {
  const auto& drm = config.lineupConfig.globalConfig.drmConfig;
  if (drm.lynkConfig.enabled && drm.vsecureConfig.enabled) {
    return "lynk and vsecure";
  }
  return wordFor(kDrmStates, drm.lynkConfig.enabled      ? kDrmLynk
                             : drm.vsecureConfig.enabled ? kDrmVSecure
                                                         : kDrmOff);
}

/// The word for the value of one field.
template <const auto& kChoices, auto field>
std::string word(const Config& config) {
  return wordFor(kChoices, field(config));
}

const std::vector<WordedSetting>& table() {
  static const std::vector<WordedSetting> kTable = {
      {"type",
       word<kHeadendTypes, [](const Config& c) { return c.headendGlobalConfig.headendType; }>,
       {"/headendGlobalConfig/headendType"}},
      {"id",
       word<kHeadendIds, [](const Config& c) { return c.headendGlobalConfig.headendId; }>,
       {"/headendGlobalConfig/headendId"}},
      {"country", countryWord, {"/headendGlobalConfig/countryCode"}},
      {"rfmod",
       word<kModulations, [](const Config& c) { return c.lineupConfig.rfConfig.modulation; }>,
       {"/lineupConfig/rfConfig/modulation"}},
      {"rfnum",
       word<kCarrierCounts,
            [](const Config& c) { return c.lineupConfig.rfConfig.carriersPerModule; }>,
       {"/lineupConfig/rfConfig/carriersPerModule"}},
      {"drm",
       drmWord,
       {"/lineupConfig/globalConfig/drmConfig/lynkConfig/enabled",
        "/lineupConfig/globalConfig/drmConfig/vsecureConfig/enabled"}},
      {"eit",
       word<kEitModes, [](const Config& c) { return c.lineupConfig.globalConfig.eitMode; }>,
       {"/lineupConfig/globalConfig/eitMode"}},
      {"stdp",
       word<kDecryptPolicies,
            [](const Config& c) { return c.lineupConfig.globalConfig.decryptPolicy; }>,
       {"/lineupConfig/globalConfig/decryptPolicy"}},
      {"vlan",
       word<kOutputVlans, [](const Config& c) { return c.lineupConfig.ipConfig.outputVlan; }>,
       {"/lineupConfig/ipConfig/outputVlan"}},
      {"tdtscan cofdm",
       word<kSwitch, [](const Config& c) { return c.lineupConfig.globalConfig.cofdmScanEnabled; }>,
       {"/lineupConfig/globalConfig/cofdmScanEnabled"}},
      {"tdtscan qams",
       word<kSwitch, [](const Config& c) { return c.lineupConfig.globalConfig.qamsScanEnabled; }>,
       {"/lineupConfig/globalConfig/qamsScanEnabled"}},
  };
  return kTable;
}

}  // namespace

std::span<const WordedSetting> wordedSettings() {
  return table();
}

std::string plsTypeWord(int32_t type) {
  return wordFor(kPlsTypes, type);
}

}  // namespace lineup
