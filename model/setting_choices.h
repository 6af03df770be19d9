// The words that the settings of a configuration accept, each with the value stored for it.

#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "general_types.h"

namespace lineup {

namespace general = korvel::thrift::general;

/// A word that a setting accepts and the value that stands for it.
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

/// LineupRFConfig::modulation
enum : int32_t { kCofdm = 0, kQam = 1, kQamB = 2 };
inline constexpr Choice kModulations[] = {{"cofdm", kCofdm}, {"qam", kQam}, {"qamb", kQamB}};

/// LineupRFConfig::carriersPerModule, which holds an index, not the count
inline constexpr Choice kCarrierCounts[] = {{"4", 0}, {"6", 1}};

/// Which system of LineupDRMConfig is enabled; the record holds a flag for each
enum : int32_t { kDrmOff, kDrmLynk, kDrmVSecure };
inline constexpr Choice kDrmStates[] = {
    {"lynk", kDrmLynk}, {"vsecure", kDrmVSecure}, {"off", kDrmOff}};

/// LineupGlobalConfig::eitMode
inline constexpr Choice kEitModes[] = {{"off", 0}, {"actual", 1}, {"others", 2}};

/// LineupGlobalConfig::decryptPolicy
inline constexpr Choice kDecryptPolicies[] = {{"video", 1}, {"sub", 2}, {"ttx", 3}};

/// HeadendGlobalConfig::headendId
inline constexpr Choice kHeadendIds[] = {{"1", 1}, {"2", 2}, {"3", 3}, {"4", 4}, {"5", 5},
                                         {"6", 6}, {"7", 7}, {"8", 8}, {"9", 9}, {"10", 10}};

/// HeadendGlobalConfig::countryCode, which is optional: one that is not set is none of these
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

/// HeadendGlobalConfig::headendType
enum : int32_t { kStandardHeadend = 0, kSkyitHeadend = 1 };
inline constexpr Choice kHeadendTypes[] = {{"standard", kStandardHeadend},
                                           {"skyit", kSkyitHeadend}};

/// LineupIPConfig::outputVlan; the numbers are inverted with respect to the words
inline constexpr Choice kOutputVlans[] = {{"1", 1}, {"2", 0}};

}  // namespace lineup
