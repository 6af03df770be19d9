// The command table, the dispatcher and completion from the table. A new command is one row.

#include <iostream>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "app/completion.h"
#include "app/help.h"
#include "app/settings.h"
#include "lineup/entries.h"
#include "model/lineup_editor.h"
#include "support/words.h"

namespace lineup {

namespace {

using hub_module::LineupEntryKind;

/// One command line on its way to a handler.
struct Invocation {
  LineupEditor& editor;
  std::vector<std::string> words;
  bool quiet;
  bool leave = false;  ///< set by the command that ends the prompt loop

  std::string wordOrEmpty(std::size_t index) const {
    return index < words.size() ? words[index] : std::string();
  }
};

/// One row of a command table. Words are compared exactly.
struct Command {
  std::string_view word;
  std::size_t wordsNeeded;  ///< in the whole line, the command word included
  const char* tooFewWords;  ///< the message for a line that has fewer
  void (*run)(Invocation&);
  /// What the word behind it may become; null where nothing is known of it.
  std::vector<Possibility> (*complete)(const std::string& typed) = nullptr;
  /// Instead of `run` and `complete`: the rows for the word behind it.
  std::span<const Command> subcommands{};
};

const Command* findCommand(std::span<const Command> commands, std::string_view word) {
  for (const Command& command : commands) {
    if (command.word == word) {
      return &command;
    }
  }
  return nullptr;
}

void runCommand(const Command& command, Invocation& line) {
  if (line.words.size() < command.wordsNeeded) {
    throw std::runtime_error(command.tooFewWords);
  }
  if (command.subcommands.empty()) {
    command.run(line);
    return;
  }
  const Command* const subcommand = findCommand(command.subcommands, line.words[1]);
  if (subcommand == nullptr) {
    throw std::runtime_error("unknown subcommand ");
  }
  runCommand(*subcommand, line);
}

/// What the last of `words` may become, the first of which is a word of `commands`.
std::vector<Possibility> complete(std::span<const Command> commands,
                                  std::span<const std::string> words) {
  std::vector<Possibility> possibilities;
  if (words.size() == 1) {
    for (const Command& command : commands) {
      if (command.word.starts_with(words[0])) {
        possibilities.push_back({std::string(command.word), ""});
      }
    }
    return possibilities;
  }
  const Command* const command = findCommand(commands, words[0]);
  if (command == nullptr) {
    return possibilities;
  }
  if (!command->subcommands.empty()) {
    return complete(command->subcommands, words.subspan(1));
  }
  return words.size() == 2 && command->complete != nullptr ? command->complete(words[1])
                                                           : possibilities;
}

// ---- lineup entries

enum class Lineups { IPAndRF, RF, IP };

template <Lineups lineups>
void addEntries(LineupEditor& editor, int32_t key, LineupEntryKind::type kind) {
  if constexpr (lineups != Lineups::RF) {
    editor.addIPEntry(key, kind);
  }
  if constexpr (lineups != Lineups::IP) {
    editor.addRFEntry(key, kind);
  }
}

template <Lineups lineups>
void addDvb(Invocation& line) {
  const int32_t key = line.editor.addCatalogueService(readNumber(line.words[1]));
  addEntries<lineups>(line.editor, key, LineupEntryKind::DVB);
}

template <Lineups lineups>
void addEnc(Invocation& line) {
  const int32_t key = line.editor.addEncService(makeEncService(line.words));
  addEntries<lineups>(line.editor, key, LineupEntryKind::ENC);
}

void addEmpty(Invocation& line) {
  const int32_t key = line.editor.addEmptyService(readNumber(line.words[1]));
  line.editor.addRFEntry(key, LineupEntryKind::EMPTY);
}

void addMux(Invocation& line) {
  line.editor.addIPMux(readNumber(line.words[1]), readNumber(line.words[2]), line.words[3]);
}

// ---- global settings

template <const Setting& setting>
void showOrChange(Invocation& line) {
  if (line.words.size() < 2) {
    showSetting(setting, line.editor);
  } else {
    changeSetting(setting, line.editor, line.words[1], line.quiet);
  }
}

template <const Setting& setting>
std::vector<Possibility> choices(const std::string& typed) {
  return completeChoice(setting, typed);
}

// ---- commands with sub-commands

constexpr char kNoSubcommand[] = "If you don't give me a parameter, there is little I can do";
constexpr char kWhichRFInput[] =
    "Please enter RF input [TDT1, TDT2 | SAT1...SAT8 | TDTALL | SATALL]";
constexpr char kWhichScan[] = "Please select the type of scan [COFDM|QAMS]";

template <bool enable>
void switchRFInput(Invocation& line) {
  line.editor.setRFInputState(enable, line.words[2]);
}

template <bool enable>
void switchTdtScan(Invocation& line) {
  line.editor.setTdtScan(enable, line.words[2]);
}

constexpr Command kRFInputCommands[] = {
    {"enable", 3, kWhichRFInput, switchRFInput<true>, completeRFInput},
    {"disable", 3, kWhichRFInput, switchRFInput<false>, completeRFInput},
    {"status", 2, kNoSubcommand, [](Invocation& line) { line.editor.getRFInputState(); }},
};

constexpr Command kTdtScanCommands[] = {
    {"enable", 3, kWhichScan, switchTdtScan<true>, completeScanType},
    {"disable", 3, kWhichScan, switchTdtScan<false>, completeScanType},
    {"status", 2, kNoSubcommand, [](Invocation& line) { line.editor.showTdtScan(); }},
};

// ---- the table

constexpr char kWhichService[] = "Please give a SERVICE_ID";
constexpr char kWhichFile[] = "Please a configuration file";

// "addenc" and its kin count their words where the encoder service is built.
const Command kCommands[] = {
    {"help", 1, nullptr, [](Invocation&) { printHelp(); }},
    {"quit", 1, nullptr, [](Invocation& line) { line.leave = true; }},
    {"show", 1, nullptr, [](Invocation& line) { line.editor.showLineup(); }},
    {"clear", 1, nullptr, [](Invocation& line) { line.editor.clearLineup(); }},
    {"find", 1, nullptr, [](Invocation& line) { line.editor.findServices(line.wordOrEmpty(1)); }},
    {"findtdt", 1, nullptr,
     [](Invocation& line) { line.editor.findTdtServices(line.wordOrEmpty(1)); }},
    {"findsat", 1, nullptr,
     [](Invocation& line) { line.editor.findSatServices(line.wordOrEmpty(1)); }},
    {"findcable", 1, nullptr,
     [](Invocation& line) { line.editor.findCableServices(line.wordOrEmpty(1)); }},
    {"findip", 1, nullptr,
     [](Invocation& line) { line.editor.findIPServices(line.wordOrEmpty(1)); }},
    {"adddvb", 2, kWhichService, addDvb<Lineups::IPAndRF>, completeService},
    {"rfadddvb", 2, kWhichService, addDvb<Lineups::RF>, completeService},
    {"ipadddvb", 2, kWhichService, addDvb<Lineups::IP>, completeService},
    {"addenc", 1, nullptr, addEnc<Lineups::IPAndRF>},
    {"rfaddenc", 1, nullptr, addEnc<Lineups::RF>},
    {"ipaddenc", 1, nullptr, addEnc<Lineups::IP>},
    {"rfaddempty", 2, "Please give a DVB service type", addEmpty},
    {"addpls", 1, nullptr, [](Invocation& line) { line.editor.addPlsItem(); }},
    {"rmpls", 1, nullptr, [](Invocation& line) { line.editor.clearPlsItems(); }},
    {"rfmod", 1, nullptr, showOrChange<kRFModulation>, choices<kRFModulation>},
    {"rfnum", 2, kRFCarriers.missing, showOrChange<kRFCarriers>, choices<kRFCarriers>},
    {"drm", 1, nullptr, showOrChange<kDrm>, choices<kDrm>},
    {"eit", 2, kEit.missing, showOrChange<kEit>, choices<kEit>},
    {"id", 2, kHeadendId.missing, showOrChange<kHeadendId>, choices<kHeadendId>},
    {"country", 2, kCountry.missing, showOrChange<kCountry>, choices<kCountry>},
    {"type", 2, kHeadendType.missing, showOrChange<kHeadendType>, choices<kHeadendType>},
    {"vlan", 2, kOutputVlan.missing, showOrChange<kOutputVlan>, choices<kOutputVlan>},
    {"addipmux", 4, "Please give a SLOT_ID, IF_ID and URL", addMux},
    {"stdp", 2, kDecryptPolicy.missing, showOrChange<kDecryptPolicy>, choices<kDecryptPolicy>},
    {"rfinput", 2, kNoSubcommand, nullptr, nullptr, kRFInputCommands},
    {"tdtscan", 2, kNoSubcommand, nullptr, nullptr, kTdtScanCommands},
    {"save", 2, kWhichFile, [](Invocation& line) { line.editor.saveConfig(line.words[1]); },
     completeFile},
    {"restore", 2, kWhichFile, [](Invocation& line) { line.editor.restoreConfig(line.words[1]); },
     completeFile},
    {"reset", 1, nullptr, [](Invocation& line) { line.editor.fetchHeadendConfig(); }},
    {"commit", 1, nullptr, [](Invocation& line) { line.editor.commitHeadendConfig(); }},
    {"c", 1, nullptr, [](Invocation& line) { line.editor.commitHeadendConfig(); }},
};

}  // namespace

std::vector<Possibility> completeCommandLine(const std::string& begun) {
  std::vector<std::string> words = splitWords(begun, ' ');
  if (begun.empty() || begun.ends_with(' ')) {
    words.emplace_back();
  }
  return complete(kCommands, words);
}

bool LineupEditor::dispatchCommand(const std::string& line, bool quiet) {
  Invocation invocation{*this, splitWords(line, ' '), quiet};
  if (invocation.words.empty()) {
    showLineup();
    return true;
  }
  const Command* command = findCommand(kCommands, invocation.words[0]);
  if (command == nullptr) {
    std::cout << "Invalid command. Try 'help'." << std::endl;
    return true;
  }
  runCommand(*command, invocation);
  return !invocation.leave;
}

}  // namespace lineup
