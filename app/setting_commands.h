// The nine commands that show or change one setting each: their texts, and what else they change.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/lineup_editor.h"
#include "model/settings.h"

namespace lineup {

/// How the typed word is compared with the choices.
enum class WordReading {
  Exact,        ///< as typed
  Number,       ///< as the number that it begins with
  NumberEchoed  ///< likewise, and the messages show that number
};

/// The command of one setting.
struct SettingCommand {
  const Setting& setting;
  const char* invalid;            ///< message for a word that is not a choice
  const char* missing = invalid;  ///< message for a line without a word, unless `show` is set
  const char* already;            ///< before the word, when the value is held already
  const char* changed;            ///< after a change...
  const char* afterWord = "";     ///< ...then the word and this; null where no word follows
  WordReading reading = WordReading::Exact;
  bool silencedByQuiet = false;
  /// Changes the fields that depend on a new value; null if none does.
  void (*changeOthers)(hub_module::HeadendConfig&, int32_t value) = nullptr;
  /// The text that a line without a word prints; null where a word is needed.
  std::string (*show)(std::optional<int32_t> value) = nullptr;
};

extern const SettingCommand kRFModulation;
extern const SettingCommand kRFCarriers;
extern const SettingCommand kDrm;
extern const SettingCommand kEit;
extern const SettingCommand kHeadendId;
extern const SettingCommand kCountry;
extern const SettingCommand kHeadendType;
extern const SettingCommand kOutputVlan;
extern const SettingCommand kDecryptPolicy;

/// Runs `command`; words[0] is its word, words[1] names a choice. Stores it, marks the change as
/// pending and says so; says "already" if it is held. Without words[1], prints the value held if
/// the setting shows it. Throws std::runtime_error with `missing` or `invalid` otherwise. With
/// `quiet`, a setting with `silencedByQuiet` prints nothing.
void runSettingCommand(const SettingCommand& command, LineupEditor& editor,
                       const std::vector<std::string>& words, bool quiet);

}  // namespace lineup
