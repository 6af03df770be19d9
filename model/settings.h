// The settings of a configuration: their fields, and the words that stand for their values.

#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>

#include "hub_module_types.h"
#include "model/namespaces.h"

namespace lineup {

/// A word that a setting accepts and the value that it stands for.
struct Choice {
  std::string_view word;
  int32_t value;
};

/// The choice of this word, compared exactly, or null.
constexpr const Choice* findWord(std::span<const Choice> choices, std::string_view word) {
  for (const Choice& choice : choices) {
    if (choice.word == word) {
      return &choice;
    }
  }
  return nullptr;
}

/// The choice of this value, or null.
constexpr const Choice* findValue(std::span<const Choice> choices, int32_t value) {
  for (const Choice& choice : choices) {
    if (choice.value == value) {
      return &choice;
    }
  }
  return nullptr;
}

enum : int32_t { kCofdm = 0, kQam = 1, kQamB = 2 };
inline constexpr Choice kModulations[] = {{"cofdm", kCofdm}, {"qam", kQam}, {"qamb", kQamB}};

/// The record holds an index, not the count.
inline constexpr Choice kCarrierCounts[] = {{"4", 0}, {"6", 1}};

/// Which system is enabled; the record holds a flag for each.
enum : int32_t { kDrmOff, kDrmLynk, kDrmVSecure };
inline constexpr Choice kDrmStates[] = {
    {"lynk", kDrmLynk}, {"vsecure", kDrmVSecure}, {"off", kDrmOff}};

inline constexpr Choice kEitModes[] = {{"off", 0}, {"actual", 1}, {"others", 2}};

inline constexpr Choice kDecryptPolicies[] = {{"video", 1}, {"sub", 2}, {"ttx", 3}};

inline constexpr Choice kHeadendIds[] = {{"1", 1}, {"2", 2}, {"3", 3}, {"4", 4}, {"5", 5},
                                         {"6", 6}, {"7", 7}, {"8", 8}, {"9", 9}, {"10", 10}};

inline constexpr Choice kCountries[] = {{"other", general::CountryCode::OTHER},
                                        {"spain", general::CountryCode::SPAIN},
                                        {"france", general::CountryCode::FRANCE},
                                        {"uk", general::CountryCode::UK},
                                        {"australia", general::CountryCode::AUSTRALIA},
                                        {"italy", general::CountryCode::ITALY},
                                        {"portugal", general::CountryCode::PORTUGAL},
                                        {"greece", general::CountryCode::GREECE},
                                        {"newzealand", general::CountryCode::NEWZEALAND},
                                        {"sweden", general::CountryCode::SWEDEN},
                                        {"finland", general::CountryCode::FINLAND},
                                        {"maldives", general::CountryCode::MALDIVES},
                                        {"mexico", general::CountryCode::MEXICO},
                                        {"southkorea", general::CountryCode::SOUTHKOREA},
                                        {"taiwan", general::CountryCode::TAIWAN}};

enum : int32_t { kStandardHeadend = 0, kSkyitHeadend = 1 };
inline constexpr Choice kHeadendTypes[] = {{"standard", kStandardHeadend},
                                           {"skyit", kSkyitHeadend}};

/// The numbers are inverted with respect to the words.
inline constexpr Choice kOutputVlans[] = {{"1", 1}, {"2", 0}};

inline constexpr Choice kSwitch[] = {{"disabled", 0}, {"enabled", 1}};

/// One setting.
struct Setting {
  std::string_view command;  ///< which changes it: "rfmod", "tdtscan cofdm"
  std::span<const Choice> choices;
  /// The value that a configuration holds, one of the choices or not; nothing if its fields stand
  /// for no value.
  std::optional<int32_t> (*value)(const hub_module::HeadendConfig&);
  void (*store)(hub_module::HeadendConfig&, int32_t value);
  std::string_view withoutValue{};  ///< what people read where `value` returns nothing
};

// The fields of settings that are one: each a function that returns a reference to it, given a
// configuration.

inline constexpr auto kHeadendTypeField = [](auto& config) -> auto& {
  return config.headendGlobalConfig.headendType;
};
inline constexpr auto kHeadendIdField = [](auto& config) -> auto& {
  return config.headendGlobalConfig.headendId;
};
inline constexpr auto kModulationField = [](auto& config) -> auto& {
  return config.lineupConfig.rfConfig.modulation;
};
inline constexpr auto kCarriersPerModuleField = [](auto& config) -> auto& {
  return config.lineupConfig.rfConfig.carriersPerModule;
};
inline constexpr auto kEitModeField = [](auto& config) -> auto& {
  return config.lineupConfig.globalConfig.eitMode;
};
inline constexpr auto kDecryptPolicyField = [](auto& config) -> auto& {
  return config.lineupConfig.globalConfig.decryptPolicy;
};
inline constexpr auto kOutputVlanField = [](auto& config) -> auto& {
  return config.lineupConfig.ipConfig.outputVlan;
};
inline constexpr auto kCofdmScanEnabledField = [](auto& config) -> auto& {
  return config.lineupConfig.globalConfig.cofdmScanEnabled;
};
inline constexpr auto kQamsScanEnabledField = [](auto& config) -> auto& {
  return config.lineupConfig.globalConfig.qamsScanEnabled;
};

/// A setting that is one field, one of those above.
template <auto field>
consteval Setting fieldSetting(std::string_view command, std::span<const Choice> choices) {
  return {command, choices,
          [](const hub_module::HeadendConfig& config) -> std::optional<int32_t> {
            return field(config);
          },
          [](hub_module::HeadendConfig& config, int32_t value) {
            using Field = std::remove_reference_t<decltype(field(config))>;
            field(config) = static_cast<Field>(value);
          }};
}

consteval Setting countrySetting() {
  return {"country", kCountries,
          [](const hub_module::HeadendConfig& config) -> std::optional<int32_t> {
            const hub_module::HeadendGlobalConfig& global = config.headendGlobalConfig;
            return global.__isset.countryCode ? std::optional(global.countryCode) : std::nullopt;
          },
          [](hub_module::HeadendConfig& config, int32_t value) {
            config.headendGlobalConfig.__set_countryCode(
                static_cast<general::CountryCode::type>(value));
          },
          "not set"};
}

consteval Setting drmSetting() {
  return {"drm", kDrmStates,
          [](const hub_module::HeadendConfig& config) -> std::optional<int32_t> {
            const auto& drm = config.lineupConfig.globalConfig.drmConfig;
            if (drm.lynkConfig.enabled && drm.vsecureConfig.enabled) {
              return std::nullopt;
            }
            return drm.lynkConfig.enabled      ? kDrmLynk
                   : drm.vsecureConfig.enabled ? kDrmVSecure
                                               : kDrmOff;
          },
          [](hub_module::HeadendConfig& config, int32_t value) {
            auto& drm = config.lineupConfig.globalConfig.drmConfig;
            drm.lynkConfig.enabled = value == kDrmLynk;
            drm.vsecureConfig.enabled = value == kDrmVSecure;
          },
          "lynk and vsecure"};
}

/// Every setting, in the order in which they are shown.
inline constexpr Setting kSettings[] = {
    fieldSetting<kHeadendTypeField>("type", kHeadendTypes),
    fieldSetting<kHeadendIdField>("id", kHeadendIds),
    countrySetting(),
    fieldSetting<kModulationField>("rfmod", kModulations),
    fieldSetting<kCarriersPerModuleField>("rfnum", kCarrierCounts),
    drmSetting(),
    fieldSetting<kEitModeField>("eit", kEitModes),
    fieldSetting<kDecryptPolicyField>("stdp", kDecryptPolicies),
    fieldSetting<kOutputVlanField>("vlan", kOutputVlans),
    fieldSetting<kCofdmScanEnabledField>("tdtscan cofdm", kSwitch),
    fieldSetting<kQamsScanEnabledField>("tdtscan qams", kSwitch),
};

/// The setting that `command` changes, found by the compiler.
consteval const Setting& settingOf(std::string_view command) {
  for (const Setting& setting : kSettings) {
    if (setting.command == command) {
      return setting;
    }
  }
  throw "no such setting";
}

}  // namespace lineup
