#include "app/settings.h"

#include <iostream>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "support/words.h"

namespace lineup {

namespace {

using general::CountryCode;
using hub_module::HeadendConfig;

/// Stores `value`; returns whether it differs from what `field` held.
bool change(int32_t& field, int32_t value) {
  return std::exchange(field, value) != value;
}

std::string showModulation(const HeadendConfig& config) {
  static constexpr const char* kNames[] = {"COFDM", "QAM", "QAM B"};
  const int32_t modulation = config.lineupConfig.rfConfig.modulation;
  const bool named = modulation >= 0 && modulation < static_cast<int32_t>(std::size(kNames));
  return std::string("Current RF modulation is: ") + (named ? kNames[modulation] : "");
}

bool storeDrm(HeadendConfig& config, int32_t state) {
  hub_module::LineupDRMConfig& drm = config.lineupConfig.globalConfig.drmConfig;
  const bool lynk = state == kDrmLynk;
  const bool vsecure = state == kDrmVSecure;
  if (drm.lynkConfig.enabled == lynk && drm.vsecureConfig.enabled == vsecure) {
    return false;
  }
  drm.lynkConfig.enabled = lynk;
  drm.vsecureConfig.enabled = vsecure;
  // Always false: no choice enables both systems.
  drm.combinedFlag = lynk && vsecure;
  return true;
}

std::string showDrm(const HeadendConfig& config) {
  const hub_module::LineupDRMConfig& drm = config.lineupConfig.globalConfig.drmConfig;
  int32_t state = kDrmOff;
  if (drm.lynkConfig.enabled) {
    state = kDrmLynk;
  } else if (drm.vsecureConfig.enabled) {
    state = kDrmVSecure;
  }
  return std::string("DRM is currently: ").append(findValue(kDrmStates, state)->word);
}

bool storeCountry(HeadendConfig& config, int32_t country) {
  hub_module::HeadendGlobalConfig& global = config.headendGlobalConfig;
  if (global.__isset.countryCode && global.countryCode == country) {
    return false;
  }
  global.__set_countryCode(static_cast<CountryCode::type>(country));
  return true;
}

bool storeHeadendType(HeadendConfig& config, int32_t type) {
  if (!change(config.headendGlobalConfig.headendType, type)) {
    return false;
  }
  // "skyit" implies Italy and COFDM; "standard" changes nothing else.
  if (type == kSkyitHeadend) {
    storeCountry(config, CountryCode::ITALY);
    config.headendGlobalConfig.timeZone = "Europe/Rome";
    config.lineupConfig.globalConfig.globalFlag = false;
    config.lineupConfig.rfConfig.modulation = kCofdm;
    config.lineupConfig.rfConfig.rfProfileFlag = true;
  }
  return true;
}

bool storeOutputVlan(HeadendConfig& config, int32_t vlan) {
  if (!change(config.lineupConfig.ipConfig.outputVlan, vlan)) {
    return false;
  }
  for (hub_module::LineupIPEntryConfig& entry : config.lineupConfig.ipEntries) {
    entry.outputSelector = 0;  // the headend's own choice
  }
  return true;
}

/// Sets the setting to the choice that `word` names.
void changeSetting(const Setting& setting, LineupEditor& editor, const std::string& word,
                   bool quiet) {
  const std::string compared =
      setting.reading == WordReading::Exact ? word : std::to_string(readNumber(word));
  const std::string& echo = setting.reading == WordReading::NumberEchoed ? compared : word;
  const Choice* const choice = findWord(setting.choices, compared);
  if (choice == nullptr) {
    throw std::runtime_error(setting.invalid);
  }
  const bool changes = setting.store(editor.config, choice->value);
  editor.pendingChanges = editor.pendingChanges || changes;
  if (quiet && setting.silencedByQuiet) {
    return;
  }
  std::cout << (changes ? setting.changed : setting.already);
  if (!changes) {
    std::cout << echo;
  } else if (setting.afterWord != nullptr) {
    std::cout << echo << setting.afterWord;
  }
  std::cout << std::endl;
}

}  // namespace

constinit const Setting kRFModulation{
    .choices = kModulations,
    .invalid = "Please give a valid modulation type: cofdm or qam",
    .already = "RF modulation is already ",
    .changed = "Changed RF modulation to ",
    .store = [](HeadendConfig& config,
                int32_t value) { return change(config.lineupConfig.rfConfig.modulation, value); },
    .show = showModulation,
};

constinit const Setting kRFCarriers{
    .choices = kCarrierCounts,
    .invalid = "Please give a valid number: 4 or 6",
    .missing = "Please give a number: 4 or 6",
    .already = "Number of carriers per OUT module was already: ",
    .changed = "Number of carriers per OUT module changed to: ",
    .reading = WordReading::Number,
    .store =
        [](HeadendConfig& config, int32_t value) {
          return change(config.lineupConfig.rfConfig.carriersPerModule, value);
        },
};

constinit const Setting kDrm{
    .choices = kDrmStates,
    .invalid = "Please give a valid state: off lynk vsecure",
    .already = "DRM is already: ",
    .changed = "Changed DRM status to: ",
    .store = storeDrm,
    .show = showDrm,
};

constinit const Setting kEit{
    .choices = kEitModes,
    .invalid = "Please give a valid mode: off, actual or others",
    .already = "EIT working mode is already: ",
    .changed = "Changed EIT working mode to: ",
    .store = [](HeadendConfig& config,
                int32_t value) { return change(config.lineupConfig.globalConfig.eitMode, value); },
};

constinit const Setting kHeadendId{
    .choices = kHeadendIds,
    .invalid = "Headend id must be an integer in the range [1-10]",
    .missing = "Please give a headend id [1-10]",
    .already = "Headend was already set to: ",
    .changed = "Headend id changed to: ",
    .afterWord = ". Please remember to commit the changes.",
    .reading = WordReading::NumberEchoed,
    .store = [](HeadendConfig& config,
                int32_t value) { return change(config.headendGlobalConfig.headendId, value); },
};

constinit const Setting kCountry{
    .choices = kCountries,
    .invalid =
        "Please a valid country: spain, france, uk, australia, italy, portugal, greece, "
        "newzealand, sweden, finland, maldives, mexico, southkorea, taiwan, other",
    .already = "Country was already set to: ",
    .changed = "Country changed. Please remember to commit the changes.",
    .afterWord = nullptr,
    .store = storeCountry,
};

constinit const Setting kHeadendType{
    .choices = kHeadendTypes,
    .invalid = "Please a valid headend type: standard, skyit",
    .already = "Headend type was already set to: ",
    .changed = "Headend type changed. Please remember to commit the changes.",
    .afterWord = nullptr,
    .silencedByQuiet = true,
    .store = storeHeadendType,
};

constinit const Setting kOutputVlan{
    .choices = kOutputVlans,
    .invalid = "Please give a value: 1: Only TV1, 2: TV1 & TV2",
    .already = "Output port was already: ",
    .changed = "Output port changed. Please remember to commit the changes.",
    .afterWord = nullptr,
    .store = storeOutputVlan,
};

constinit const Setting kDecryptPolicy{
    .choices = kDecryptPolicies,
    .invalid = "Please give a valid Decrypt policy: video, sub or ttx",
    .already = "Decrypt policy is already: ",
    .changed = "Changed Decrypt policy to: ",
    .store =
        [](HeadendConfig& config, int32_t value) {
          return change(config.lineupConfig.globalConfig.decryptPolicy, value);
        },
};

void runSettingCommand(const Setting& setting, LineupEditor& editor,
                       const std::vector<std::string>& words, bool quiet) {
  if (words.size() >= 2) {
    changeSetting(setting, editor, words[1], quiet);
  } else if (setting.show != nullptr) {
    std::cout << setting.show(editor.config) << std::endl;
  } else {
    throw std::runtime_error(setting.missing);
  }
}

}  // namespace lineup
