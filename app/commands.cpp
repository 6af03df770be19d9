#include "app/commands.h"

#include <cstddef>
#include <cstdint>
#include <iostream>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "app/completion.h"
#include "app/help.h"
#include "app/setting_commands.h"
#include "model/input_types.h"
#include "model/lineup_editor.h"
#include "support/words.h"

// The command table, the dispatcher and completion from the table. A new command is one row.

namespace lineup {

namespace {

using hub_module::LineupEntryKind;

/// The command line that is run.
struct Invocation {
  LineupEditor& editor;
  std::vector<std::string> words;
  bool quiet;
  bool leave = false;  ///< set by "quit": dispatchCommand() then returns false

  std::string wordOrEmpty(std::size_t index) const {
    return index < words.size() ? words[index] : std::string();
  }
};

/// One row of a command table. Words are compared exactly. A row has one of `run`, `setting` and
/// `subcommands`.
struct Command {
  std::string_view word;
  std::size_t wordsNeeded = 1;        ///< in the whole line, the command word included
  const char* tooFewWords = nullptr;  ///< the message for a line that has fewer
  void (*run)(Invocation&) = nullptr;
  /// Completes the word after it; null if there is nothing to offer.
  std::vector<Candidate> (*complete)(const std::string& typed) = nullptr;
  /// The setting that the command shows or changes; checks and completes the second word.
  const SettingCommand* setting = nullptr;
  /// The table in which the second word is looked up.
  std::span<const Command> subcommands{};
  /// Completes an argument of a command that takes several: `words` are its arguments, the last of
  /// which is completed. Used where `complete` is null.
  std::vector<Candidate> (*completeWords)(std::span<const std::string> words,
                                          const hub_module::HeadendConfig& config) = nullptr;
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
  if (command.run != nullptr) {
    command.run(line);
    return;
  }
  if (command.setting != nullptr) {
    runSettingCommand(*command.setting, line.editor, line.words, line.quiet);
    return;
  }
  const Command* const subcommand = findCommand(command.subcommands, line.words[1]);
  if (subcommand == nullptr) {
    throw std::runtime_error("unknown subcommand ");
  }
  runCommand(*subcommand, line);
}

/// Completes the last of `words`; words[0] is looked up in `commands`.
std::vector<Candidate> complete(std::span<const Command> commands,
                                std::span<const std::string> words,
                                const hub_module::HeadendConfig& config) {
  std::vector<Candidate> candidates;
  if (words.size() == 1) {
    for (const Command& command : commands) {
      offer(command.word, words[0], candidates);
    }
    return candidates;
  }
  const Command* const command = findCommand(commands, words[0]);
  if (command == nullptr) {
    return candidates;
  }
  if (!command->subcommands.empty()) {
    return complete(command->subcommands, words.subspan(1), config);
  }
  if (words.size() == 2 && command->setting != nullptr) {
    return completeChoice(command->setting->setting, words[1]);
  }
  if (command->completeWords != nullptr) {
    return command->completeWords(words.subspan(1), config);
  }
  return words.size() == 2 && command->complete != nullptr ? command->complete(words[1])
                                                           : candidates;
}

// ---- lineup entries

/// The lineups to which a service is added.
struct Lineups {
  bool ip;
  bool rf;
};

constexpr Lineups kBothLineups{.ip = true, .rf = true};
constexpr Lineups kRFLineup{.ip = false, .rf = true};
constexpr Lineups kIPLineup{.ip = true, .rf = false};

void addEntries(LineupEditor& editor, Lineups lineups, int32_t key, LineupEntryKind::type kind) {
  if (lineups.ip) {
    editor.addIPEntry(key, kind);
  }
  if (lineups.rf) {
    editor.addRFEntry(key, kind);
  }
}

void addDvb(Invocation& line, Lineups lineups) {
  const int32_t key = line.editor.addCatalogueService(readNumber(line.words[1]));
  addEntries(line.editor, lineups, key, LineupEntryKind::DVB);
}

void addEnc(Invocation& line, Lineups lineups) {
  const int32_t key = line.editor.addEncService(LineupEditor::makeEncService(line.words));
  addEntries(line.editor, lineups, key, LineupEntryKind::ENC);
}

void addEmpty(Invocation& line) {
  const int32_t key = line.editor.addEmptyService(readNumber(line.words[1]));
  line.editor.addRFEntry(key, LineupEntryKind::EMPTY);
}

void addMux(Invocation& line) {
  line.editor.addIPMux(readNumber(line.words[1]), readNumber(line.words[2]), line.words[3]);
}

// ---- commands with sub-commands

constexpr char kNoSubcommand[] = "If you don't give me a parameter, there is little I can do";
constexpr char kWhichRFInput[] =
    "Please enter RF input [TDT1, TDT2 | SAT1...SAT8 | TDTALL | SATALL]";
constexpr char kWhichScan[] = "Please select the type of scan [COFDM|QAMS]";

constexpr Command kRFInputCommands[] = {
    {.word = "enable",
     .wordsNeeded = 3,
     .tooFewWords = kWhichRFInput,
     .run = [](Invocation& line) { line.editor.setRFInputState(true, line.words[2]); },
     .complete = completeRFInput},
    {.word = "disable",
     .wordsNeeded = 3,
     .tooFewWords = kWhichRFInput,
     .run = [](Invocation& line) { line.editor.setRFInputState(false, line.words[2]); },
     .complete = completeRFInput},
    {.word = "status", .run = [](Invocation& line) { line.editor.getRFInputState(); }},
};

constexpr Command kTdtScanCommands[] = {
    {.word = "enable",
     .wordsNeeded = 3,
     .tooFewWords = kWhichScan,
     .run = [](Invocation& line) { line.editor.setTdtScan(true, line.words[2]); },
     .complete = completeScanType},
    {.word = "disable",
     .wordsNeeded = 3,
     .tooFewWords = kWhichScan,
     .run = [](Invocation& line) { line.editor.setTdtScan(false, line.words[2]); },
     .complete = completeScanType},
    {.word = "status", .run = [](Invocation& line) { line.editor.showTdtScan(); }},
};

// ---- the table

constexpr char kWhichService[] = "Please give a SERVICE_ID";
constexpr char kWhichFile[] = "Please a configuration file";

// makeEncService() checks the number of words of "addenc", "rfaddenc" and "ipaddenc".
constexpr Command kCommands[] = {
    {.word = "help", .run = [](Invocation&) { printHelp(); }},
    {.word = "quit", .run = [](Invocation& line) { line.leave = true; }},
    {.word = "show", .run = [](Invocation& line) { line.editor.showLineup(); }},
    {.word = "clear", .run = [](Invocation& line) { line.editor.clearLineup(); }},
    {.word = "find",
     .run = [](Invocation& line) { line.editor.findServices(line.wordOrEmpty(1)); },
     .complete = [](const std::string& typed) { return completeName("", typed); }},
    {.word = "findtdt",
     .run = [](Invocation& line) { line.editor.findTdtServices(line.wordOrEmpty(1)); },
     .complete = [](const std::string& typed) { return completeName(kTdtInput.name, typed); }},
    {.word = "findsat",
     .run = [](Invocation& line) { line.editor.findSatServices(line.wordOrEmpty(1)); },
     .complete = [](const std::string& typed) { return completeName(kSatInput.name, typed); }},
    {.word = "findcable",
     .run = [](Invocation& line) { line.editor.findCableServices(line.wordOrEmpty(1)); },
     .complete = [](const std::string& typed) { return completeName(kCableInput.name, typed); }},
    {.word = "findip",
     .run = [](Invocation& line) { line.editor.findIPServices(line.wordOrEmpty(1)); },
     .complete = [](const std::string& typed) { return completeName(kIPInput.name, typed); }},
    {.word = "adddvb",
     .wordsNeeded = 2,
     .tooFewWords = kWhichService,
     .run = [](Invocation& line) { addDvb(line, kBothLineups); },
     .complete = completeService},
    {.word = "rfadddvb",
     .wordsNeeded = 2,
     .tooFewWords = kWhichService,
     .run = [](Invocation& line) { addDvb(line, kRFLineup); },
     .complete = completeService},
    {.word = "ipadddvb",
     .wordsNeeded = 2,
     .tooFewWords = kWhichService,
     .run = [](Invocation& line) { addDvb(line, kIPLineup); },
     .complete = completeService},
    {.word = "addenc",
     .run = [](Invocation& line) { addEnc(line, kBothLineups); },
     .completeWords = completeEncoder},
    {.word = "rfaddenc",
     .run = [](Invocation& line) { addEnc(line, kRFLineup); },
     .completeWords = completeEncoder},
    {.word = "ipaddenc",
     .run = [](Invocation& line) { addEnc(line, kIPLineup); },
     .completeWords = completeEncoder},
    {.word = "rfaddempty",
     .wordsNeeded = 2,
     .tooFewWords = "Please give a DVB service type",
     .run = addEmpty,
     .complete = completeServiceType},
    {.word = "addpls", .run = [](Invocation& line) { line.editor.addPlsItem(); }},
    {.word = "rmpls", .run = [](Invocation& line) { line.editor.clearPlsItems(); }},
    {.word = "rfmod", .setting = &kRFModulation},
    {.word = "rfnum", .setting = &kRFCarriers},
    {.word = "drm", .setting = &kDrm},
    {.word = "eit", .setting = &kEit},
    {.word = "id", .setting = &kHeadendId},
    {.word = "country", .setting = &kCountry},
    {.word = "type", .setting = &kHeadendType},
    {.word = "vlan", .setting = &kOutputVlan},
    {.word = "addipmux",
     .wordsNeeded = 4,
     .tooFewWords = "Please give a SLOT_ID, IF_ID and URL",
     .run = addMux,
     .completeWords = completeIPInput},
    {.word = "stdp", .setting = &kDecryptPolicy},
    {.word = "rfinput",
     .wordsNeeded = 2,
     .tooFewWords = kNoSubcommand,
     .subcommands = kRFInputCommands},
    {.word = "tdtscan",
     .wordsNeeded = 2,
     .tooFewWords = kNoSubcommand,
     .subcommands = kTdtScanCommands},
    {.word = "save",
     .wordsNeeded = 2,
     .tooFewWords = kWhichFile,
     .run = [](Invocation& line) { line.editor.saveConfig(line.words[1]); },
     .complete = completeFile},
    {.word = "restore",
     .wordsNeeded = 2,
     .tooFewWords = kWhichFile,
     .run = [](Invocation& line) { line.editor.restoreConfig(line.words[1]); },
     .complete = completeFile},
    {.word = "reset", .run = [](Invocation& line) { line.editor.fetchHeadendConfig(); }},
    {.word = "commit", .run = [](Invocation& line) { line.editor.commitHeadendConfig(); }},
    {.word = "c", .run = [](Invocation& line) { line.editor.commitHeadendConfig(); }},
};

}  // namespace

std::vector<Candidate> completeCommandLine(const std::string& begun,
                                           const hub_module::HeadendConfig& config) {
  std::vector<std::string> words = splitWords(begun, ' ');
  if (begun.empty() || begun.ends_with(' ')) {
    words.emplace_back();
  }
  return complete(kCommands, words, config);
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
