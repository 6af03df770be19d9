// The nine settings that one command each changes: their words, texts and fields.

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "model/lineup_editor.h"
#include "model/setting_choices.h"

namespace lineup {

/// How the typed word is compared with the choices.
enum class WordReading {
  Exact,        ///< as typed
  Number,       ///< as the number that it begins with
  NumberEchoed  ///< likewise, and the messages show that number
};

/// One setting: its words, its messages and where it is stored.
struct Setting {
  std::span<const Choice> choices;
  const char* invalid;            ///< message for a word that is no choice
  const char* missing = invalid;  ///< message for a line without a word, unless `show` is set
  const char* already;            ///< before the word, when the value is held already
  const char* changed;            ///< after a change...
  const char* afterWord = "";     ///< ...then the word and this; null where no word follows
  WordReading reading = WordReading::Exact;
  bool silencedByQuiet = false;
  /// Stores the value and what goes with it. Returns false, and changes nothing, if it is
  /// the current one.
  bool (*store)(hub_module::HeadendConfig&, int32_t value);
  /// The text that a line without a word prints; null where a word is needed.
  std::string (*show)(const hub_module::HeadendConfig&) = nullptr;
};

extern const Setting kRFModulation;
extern const Setting kRFCarriers;
extern const Setting kDrm;
extern const Setting kEit;
extern const Setting kHeadendId;
extern const Setting kCountry;
extern const Setting kHeadendType;
extern const Setting kOutputVlan;
extern const Setting kDecryptPolicy;

/// Runs the command of `setting`; words[0] is the command, words[1] names a choice. Stores it,
/// marks the change as pending and says so; says "already" if it is held. Without words[1], prints
/// the value held if the setting shows it. Throws std::runtime_error with `missing` or `invalid`
/// otherwise. With `quiet`, a setting with `silencedByQuiet` prints nothing.
void runSettingCommand(const Setting& setting, LineupEditor& editor,
                       const std::vector<std::string>& words, bool quiet);

}  // namespace lineup
