// The nine settings that one command each changes: their words, texts and fields.

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "model/lineup_editor.h"

namespace lineup {

/// A word that a setting accepts and the value that stands for it.
struct Choice {
  std::string_view word;
  int32_t value;
};

/// How the typed word is compared with the choices.
enum class WordReading {
  Exact,        ///< as typed
  Number,       ///< as the number that it begins with
  NumberEchoed  ///< likewise, and the messages show that number
};

struct Setting {
  std::span<const Choice> choices;
  WordReading reading;
  const char* missing;    ///< for a line without a word; null where that shows the value
  const char* invalid;    ///< for a word that is no choice
  const char* already;    ///< before the word, when the value is held already
  const char* changed;    ///< after a change...
  const char* afterWord;  ///< ...then the word and this; null where no word follows
  bool silencedByQuiet;
  /// Whether the configuration holds the value.
  bool (*holds)(const hub_module::HeadendConfig&, int32_t value);
  /// Stores the value and what goes with it.
  void (*store)(hub_module::HeadendConfig&, int32_t value);
  /// The text that shows the value held; null where `missing` is not.
  std::string (*show)(const hub_module::HeadendConfig&);
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

/// Prints the value held; for settings whose `missing` is null.
void showSetting(const Setting& setting, const LineupEditor& editor);

/// Sets the setting to the choice that `word` names, marks the change as pending and says so; says
/// "already" if it is held. Raises std::runtime_error with `invalid` for any other word. With
/// `quiet`, a setting that is silenced by it prints nothing.
void changeSetting(const Setting& setting, LineupEditor& editor, const std::string& word,
                   bool quiet);

}  // namespace lineup
