#include "app/setting_commands.h"

#include <iostream>
#include <iterator>
#include <stdexcept>

#include "support/words.h"

namespace lineup {

namespace {

using general::CountryCode;
using hub_module::HeadendConfig;

std::string showModulation(std::optional<int32_t> modulation) {
  static constexpr const char* kNames[] = {"COFDM", "QAM", "QAM B"};
  const bool named = modulation >= 0 && modulation < static_cast<int32_t>(std::size(kNames));
  return std::string("Current RF modulation is: ") + (named ? kNames[*modulation] : "");
}

std::string showDrm(std::optional<int32_t> state) {
  const Choice* const shown = findValue(kDrmStates, state.value_or(kDrmLynk));  // lynk if both are
  return std::string("DRM is currently: ").append(shown->word);
}

void changeWithDrm(HeadendConfig& config, int32_t /*state*/) {
  config.lineupConfig.globalConfig.drmConfig.combinedFlag = false;  // no choice enables both
}

/// "skyit" also sets the country, its time zone, the modulation and two flags; "standard" sets
/// nothing else.
void changeWithHeadendType(HeadendConfig& config, int32_t type) {
  if (type == kSkyitHeadend) {
    config.headendGlobalConfig.__set_countryCode(CountryCode::ITALY);
    config.headendGlobalConfig.timeZone = "Europe/Rome";
    config.lineupConfig.globalConfig.globalFlag = false;
    config.lineupConfig.rfConfig.modulation = kCofdm;
    config.lineupConfig.rfConfig.rfProfileFlag = true;
  }
}

void changeWithOutputVlan(HeadendConfig& config, int32_t /*vlan*/) {
  for (hub_module::LineupIPEntryConfig& entry : config.lineupConfig.ipEntries) {
    entry.outputSelector = 0;  // the headend's own choice
  }
}

/// Stores `value` and changes what depends on it. Returns false, and changes nothing, if it is the
/// current one.
bool store(const SettingCommand& command, HeadendConfig& config, int32_t value) {
  if (command.setting.value(config) == value) {
    return false;
  }
  command.setting.store(config, value);
  if (command.changeOthers != nullptr) {
    command.changeOthers(config, value);
  }
  return true;
}

/// Sets the setting to the choice that `word` names.
void changeSetting(const SettingCommand& command, LineupEditor& editor, const std::string& word,
                   bool quiet) {
  const std::string compared =
      command.reading == WordReading::Exact ? word : std::to_string(readNumber(word));
  const std::string& echo = command.reading == WordReading::NumberEchoed ? compared : word;
  const Choice* const choice = findWord(command.setting.choices, compared);
  if (choice == nullptr) {
    throw std::runtime_error(command.invalid);
  }
  const bool changes = store(command, editor.config, choice->value);
  editor.pendingChanges = editor.pendingChanges || changes;
  if (quiet && command.silencedByQuiet) {
    return;
  }
  std::cout << (changes ? command.changed : command.already);
  if (!changes) {
    std::cout << echo;
  } else if (command.afterWord != nullptr) {
    std::cout << echo << command.afterWord;
  }
  std::cout << std::endl;
}

}  // namespace

constinit const SettingCommand kRFModulation{
    .setting = settingOf("rfmod"),
    .invalid = "Please give a valid modulation type: cofdm or qam",
    .already = "RF modulation is already ",
    .changed = "Changed RF modulation to ",
    .show = showModulation,
};

constinit const SettingCommand kRFCarriers{
    .setting = settingOf("rfnum"),
    .invalid = "Please give a valid number: 4 or 6",
    .missing = "Please give a number: 4 or 6",
    .already = "Number of carriers per OUT module was already: ",
    .changed = "Number of carriers per OUT module changed to: ",
    .reading = WordReading::Number,
};

constinit const SettingCommand kDrm{
    .setting = settingOf("drm"),
    .invalid = "Please give a valid state: off lynk vsecure",
    .already = "DRM is already: ",
    .changed = "Changed DRM status to: ",
    .changeOthers = changeWithDrm,
    .show = showDrm,
};

constinit const SettingCommand kEit{
    .setting = settingOf("eit"),
    .invalid = "Please give a valid mode: off, actual or others",
    .already = "EIT working mode is already: ",
    .changed = "Changed EIT working mode to: ",
};

constinit const SettingCommand kHeadendId{
    .setting = settingOf("id"),
    .invalid = "Headend id must be an integer in the range [1-10]",
    .missing = "Please give a headend id [1-10]",
    .already = "Headend was already set to: ",
    .changed = "Headend id changed to: ",
    .afterWord = ". Please remember to commit the changes.",
    .reading = WordReading::NumberEchoed,
};

constinit const SettingCommand kCountry{
    .setting = settingOf("country"),
    .invalid =
        "Please a valid country: spain, france, uk, australia, italy, portugal, greece, "
        "newzealand, sweden, finland, maldives, mexico, southkorea, taiwan, other",
    .already = "Country was already set to: ",
    .changed = "Country changed. Please remember to commit the changes.",
    .afterWord = nullptr,
};

constinit const SettingCommand kHeadendType{
    .setting = settingOf("type"),
    .invalid = "Please a valid headend type: standard, skyit",
    .already = "Headend type was already set to: ",
    .changed = "Headend type changed. Please remember to commit the changes.",
    .afterWord = nullptr,
    .silencedByQuiet = true,
    .changeOthers = changeWithHeadendType,
};

constinit const SettingCommand kOutputVlan{
    .setting = settingOf("vlan"),
    .invalid = "Please give a value: 1: Only TV1, 2: TV1 & TV2",
    .already = "Output port was already: ",
    .changed = "Output port changed. Please remember to commit the changes.",
    .afterWord = nullptr,
    .changeOthers = changeWithOutputVlan,
};

constinit const SettingCommand kDecryptPolicy{
    .setting = settingOf("stdp"),
    .invalid = "Please give a valid Decrypt policy: video, sub or ttx",
    .already = "Decrypt policy is already: ",
    .changed = "Changed Decrypt policy to: ",
};

void runSettingCommand(const SettingCommand& command, LineupEditor& editor,
                       const std::vector<std::string>& words, bool quiet) {
  if (words.size() >= 2) {
    changeSetting(command, editor, words[1], quiet);
  } else if (command.show != nullptr) {
    std::cout << command.show(command.setting.value(editor.config)) << std::endl;
  } else {
    throw std::runtime_error(command.missing);
  }
}

}  // namespace lineup
