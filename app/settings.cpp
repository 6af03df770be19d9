#include "app/settings.h"

#include <iostream>
#include <iterator>
#include <stdexcept>

#include "support/words.h"

namespace lineup {

namespace {

using general::CountryCode;
using hub_module::HeadendConfig;

// ---- rfmod

constexpr Choice kModulations[] = {{"cofdm", 0}, {"qam", 1}, {"qamb", 2}};

std::string showModulation(const HeadendConfig& config) {
  static constexpr const char* kNames[] = {"COFDM", "QAM", "QAM B"};
  const int32_t modulation = config.lineupConfig.rfConfig.modulation;
  const bool named = modulation >= 0 && modulation < static_cast<int32_t>(std::size(kNames));
  return std::string("Current RF modulation is: ") + (named ? kNames[modulation] : "");
}

// ---- rfnum: the stored value is an index, not the count

constexpr Choice kCarrierCounts[] = {{"4", 0}, {"6", 1}};

// ---- drm: at most one of the two systems is on

enum : int32_t { kDrmOff, kDrmLynk, kDrmVSecure };

constexpr Choice kDrmStates[] = {{"lynk", kDrmLynk}, {"vsecure", kDrmVSecure}, {"off", kDrmOff}};

bool holdsDrm(const HeadendConfig& config, int32_t state) {
  const hub_module::LineupDRMConfig& drm = config.lineupConfig.globalConfig.drmConfig;
  return drm.lynkConfig.enabled == (state == kDrmLynk) &&
         drm.vsecureConfig.enabled == (state == kDrmVSecure);
}

void storeDrm(HeadendConfig& config, int32_t state) {
  hub_module::LineupDRMConfig& drm = config.lineupConfig.globalConfig.drmConfig;
  drm.lynkConfig.enabled = state == kDrmLynk;
  drm.vsecureConfig.enabled = state == kDrmVSecure;
  // As the headend has it: on when both are, which no choice here brings about.
  drm.combinedFlag = drm.lynkConfig.enabled && drm.vsecureConfig.enabled;
}

std::string showDrm(const HeadendConfig& config) {
  const hub_module::LineupDRMConfig& drm = config.lineupConfig.globalConfig.drmConfig;
  const char* state = "off";
  if (drm.lynkConfig.enabled) {
    state = "lynk";
  } else if (drm.vsecureConfig.enabled) {
    state = "vsecure";
  }
  return std::string("DRM is currently: ") + state;
}

// ---- eit, stdp

constexpr Choice kEitModes[] = {{"off", 0}, {"actual", 1}, {"others", 2}};
constexpr Choice kDecryptPolicies[] = {{"video", 1}, {"sub", 2}, {"ttx", 3}};

constexpr char kWhichEitMode[] = "Please give a valid mode: off, actual or others";
constexpr char kWhichDecryptPolicy[] = "Please give a valid Decrypt policy: video, sub or ttx";

// ---- id

constexpr Choice kHeadendIds[] = {{"1", 1}, {"2", 2}, {"3", 3}, {"4", 4}, {"5", 5},
                                  {"6", 6}, {"7", 7}, {"8", 8}, {"9", 9}, {"10", 10}};

// ---- country

constexpr Choice kCountries[] = {
    {"other", CountryCode::OTHER},           {"spain", CountryCode::SPAIN},
    {"france", CountryCode::FRANCE},         {"uk", CountryCode::UK},
    {"australia", CountryCode::AUSTRALIA},   {"italy", CountryCode::ITALY},
    {"portugal", CountryCode::PORTUGAL},     {"greece", CountryCode::GREECE},
    {"newzealand", CountryCode::NEWZEALAND}, {"sweden", CountryCode::SWEDEN},
    {"finland", CountryCode::FINLAND},       {"maldives", CountryCode::MALDIVES},
    {"mexico", CountryCode::MEXICO},         {"southkorea", CountryCode::SOUTHKOREA},
    {"taiwan", CountryCode::TAIWAN}};

constexpr char kWhichCountry[] =
    "Please a valid country: spain, france, uk, australia, italy, portugal, greece, newzealand, "
    "sweden, finland, maldives, mexico, southkorea, taiwan, other";

// A country that was never set is none of them, "other" included.
bool holdsCountry(const HeadendConfig& config, int32_t country) {
  const hub_module::HeadendGlobalConfig& global = config.headendGlobalConfig;
  return global.__isset.countryCode && global.countryCode == country;
}

void storeCountry(HeadendConfig& config, int32_t country) {
  config.headendGlobalConfig.__set_countryCode(static_cast<CountryCode::type>(country));
}

// ---- type

enum : int32_t { kStandard, kSkyit };

constexpr Choice kHeadendTypes[] = {{"standard", kStandard}, {"skyit", kSkyit}};

constexpr char kWhichHeadendType[] = "Please a valid headend type: standard, skyit";

// A skyit headend works in Italy on COFDM; a standard one keeps what was set.
void storeHeadendType(HeadendConfig& config, int32_t type) {
  config.headendGlobalConfig.headendType = type;
  if (type == kSkyit) {
    storeCountry(config, CountryCode::ITALY);
    config.headendGlobalConfig.timeZone = "Europe/Rome";
    config.lineupConfig.globalConfig.globalFlag = false;
    config.lineupConfig.rfConfig.modulation = 0;
    config.lineupConfig.rfConfig.rfProfileFlag = true;
  }
}

// ---- vlan: the stored numbers are inverted with respect to the words

constexpr Choice kOutputVlans[] = {{"1", 1}, {"2", 0}};

constexpr char kWhichOutputVlan[] = "Please give a value: 1: Only TV1, 2: TV1 & TV2";

void storeOutputVlan(HeadendConfig& config, int32_t vlan) {
  config.lineupConfig.ipConfig.outputVlan = vlan;
  for (hub_module::LineupIPEntryConfig& entry : config.lineupConfig.ipEntries) {
    entry.outputSelector = 0;  // the headend's own choice
  }
}

// ---- the shared pattern

/// The choice that `word` names, and how the messages spell it.
struct NamedChoice {
  const Choice* choice;
  std::string echo;
};

NamedChoice findChoice(const Setting& setting, const std::string& word) {
  const std::string compared =
      setting.reading == WordReading::Exact ? word : std::to_string(readNumber(word));
  const std::string& echo = setting.reading == WordReading::NumberEchoed ? compared : word;
  for (const Choice& choice : setting.choices) {
    if (choice.word == compared) {
      return {&choice, echo};
    }
  }
  throw std::runtime_error(setting.invalid);
}

}  // namespace

constinit const Setting kRFModulation{
    .choices = kModulations,
    .reading = WordReading::Exact,
    .missing = nullptr,
    .invalid = "Please give a valid modulation type: cofdm or qam",
    .already = "RF modulation is already ",
    .changed = "Changed RF modulation to ",
    .afterWord = "",
    .silencedByQuiet = false,
    .holds = [](const HeadendConfig& config,
                int32_t value) { return config.lineupConfig.rfConfig.modulation == value; },
    .store = [](HeadendConfig& config,
                int32_t value) { config.lineupConfig.rfConfig.modulation = value; },
    .show = showModulation};

constinit const Setting kRFCarriers{
    .choices = kCarrierCounts,
    .reading = WordReading::Number,
    .missing = "Please give a number: 4 or 6",
    .invalid = "Please give a valid number: 4 or 6",
    .already = "Number of carriers per OUT module was already: ",
    .changed = "Number of carriers per OUT module changed to: ",
    .afterWord = "",
    .silencedByQuiet = false,
    .holds = [](const HeadendConfig& config,
                int32_t value) { return config.lineupConfig.rfConfig.carriersPerModule == value; },
    .store = [](HeadendConfig& config,
                int32_t value) { config.lineupConfig.rfConfig.carriersPerModule = value; },
    .show = nullptr};

constinit const Setting kDrm{.choices = kDrmStates,
                             .reading = WordReading::Exact,
                             .missing = nullptr,
                             .invalid = "Please give a valid state: off lynk vsecure",
                             .already = "DRM is already: ",
                             .changed = "Changed DRM status to: ",
                             .afterWord = "",
                             .silencedByQuiet = false,
                             .holds = holdsDrm,
                             .store = storeDrm,
                             .show = showDrm};

constinit const Setting kEit{
    .choices = kEitModes,
    .reading = WordReading::Exact,
    .missing = kWhichEitMode,
    .invalid = kWhichEitMode,
    .already = "EIT working mode is already: ",
    .changed = "Changed EIT working mode to: ",
    .afterWord = "",
    .silencedByQuiet = false,
    .holds = [](const HeadendConfig& config,
                int32_t value) { return config.lineupConfig.globalConfig.eitMode == value; },
    .store = [](HeadendConfig& config,
                int32_t value) { config.lineupConfig.globalConfig.eitMode = value; },
    .show = nullptr};

constinit const Setting kHeadendId{
    .choices = kHeadendIds,
    .reading = WordReading::NumberEchoed,
    .missing = "Please give a headend id [1-10]",
    .invalid = "Headend id must be an integer in the range [1-10]",
    .already = "Headend was already set to: ",
    .changed = "Headend id changed to: ",
    .afterWord = ". Please remember to commit the changes.",
    .silencedByQuiet = false,
    .holds = [](const HeadendConfig& config,
                int32_t value) { return config.headendGlobalConfig.headendId == value; },
    .store = [](HeadendConfig& config,
                int32_t value) { config.headendGlobalConfig.headendId = value; },
    .show = nullptr};

constinit const Setting kCountry{
    .choices = kCountries,
    .reading = WordReading::Exact,
    .missing = kWhichCountry,
    .invalid = kWhichCountry,
    .already = "Country was already set to: ",
    .changed = "Country changed. Please remember to commit the changes.",
    .afterWord = nullptr,
    .silencedByQuiet = false,
    .holds = holdsCountry,
    .store = storeCountry,
    .show = nullptr};

constinit const Setting kHeadendType{
    .choices = kHeadendTypes,
    .reading = WordReading::Exact,
    .missing = kWhichHeadendType,
    .invalid = kWhichHeadendType,
    .already = "Headend type was already set to: ",
    .changed = "Headend type changed. Please remember to commit the changes.",
    .afterWord = nullptr,
    .silencedByQuiet = true,
    .holds = [](const HeadendConfig& config,
                int32_t value) { return config.headendGlobalConfig.headendType == value; },
    .store = storeHeadendType,
    .show = nullptr};

constinit const Setting kOutputVlan{
    .choices = kOutputVlans,
    .reading = WordReading::Exact,
    .missing = kWhichOutputVlan,
    .invalid = kWhichOutputVlan,
    .already = "Output port was already: ",
    .changed = "Output port changed. Please remember to commit the changes.",
    .afterWord = nullptr,
    .silencedByQuiet = false,
    .holds = [](const HeadendConfig& config,
                int32_t value) { return config.lineupConfig.ipConfig.outputVlan == value; },
    .store = storeOutputVlan,
    .show = nullptr};

constinit const Setting kDecryptPolicy{
    .choices = kDecryptPolicies,
    .reading = WordReading::Exact,
    .missing = kWhichDecryptPolicy,
    .invalid = kWhichDecryptPolicy,
    .already = "Decrypt policy is already: ",
    .changed = "Changed Decrypt policy to: ",
    .afterWord = "",
    .silencedByQuiet = false,
    .holds = [](const HeadendConfig& config,
                int32_t value) { return config.lineupConfig.globalConfig.decryptPolicy == value; },
    .store = [](HeadendConfig& config,
                int32_t value) { config.lineupConfig.globalConfig.decryptPolicy = value; },
    .show = nullptr};

void showSetting(const Setting& setting, const LineupEditor& editor) {
  std::cout << setting.show(editor.config) << std::endl;
}

void changeSetting(const Setting& setting, LineupEditor& editor, const std::string& word,
                   bool quiet) {
  const NamedChoice named = findChoice(setting, word);
  const bool silent = quiet && setting.silencedByQuiet;
  if (setting.holds(editor.config, named.choice->value)) {
    if (!silent) {
      std::cout << setting.already << named.echo << std::endl;
    }
    return;
  }
  setting.store(editor.config, named.choice->value);
  editor.pendingChanges = true;
  if (silent) {
    return;
  }
  std::cout << setting.changed;
  if (setting.afterWord != nullptr) {
    std::cout << named.echo << setting.afterWord;
  }
  std::cout << std::endl;
}

}  // namespace lineup
