#include <unistd.h>

#include <iostream>
#include <stdexcept>
#include <string>

#include "app/commands.h"
#include "app/earlier_copies.h"
#include "app/function_keys.h"
#include "model/lineup_editor.h"
#include "support/ending_signals.h"
#include "terminal/line_editing.h"
#include "terminal/line_input.h"

namespace lineup {

namespace {

/// Runs one line and prints the error if it is refused. Returns false for "quit".
bool runLine(LineupEditor& editor, const std::string& line) {
  try {
    if (!editor.dispatchCommand(line, false)) {
      return false;
    }
  } catch (const std::runtime_error& error) {
    std::cout << error.what() << std::endl;
  }
  throwIfSignalled();
  return true;
}

/// Does what runLine() does; an interrupt ends only the line.
bool runInterruptibly(LineupEditor& editor, const std::string& line) {
  try {
    return runLine(editor, line);
  } catch (const EndedBySignal&) {
    if (!isInterrupted()) {
      throw;
    }
    forgetInterrupt();
    std::cout << std::endl;  // after the "^C" that the terminal shows
    return true;
  }
}

}  // namespace

void LineupEditor::runPromptLoop() {
  fetchHeadendConfig();
  if (isatty(STDIN_FILENO) == 1) {
    announceEarlierCopies(fetches > 0 ? &config : nullptr);
  }
  std::cout << "Enter 'help' and press return for help" << std::endl;
  const LineAids aids{
      .complete = [this](const std::string& begun) { return completeCommandLine(begun, config); },
      .f2 = [this] { return changesToCommit(config); },
      .f3 = [this] { return lineupTables(config); },
  };
  // For the whole loop: Ctrl-C right after Return is not to end the console either.
  const InterruptibleCommand eachCommand(canEditLines());
  std::string line;
  while (true) {
    const char* const prompt = pendingChanges ? "(changes to commit) > " : "> ";
    if (!readCommandLine(prompt, aids, line)) {
      break;
    }
    if (!runInterruptibly(*this, line)) {
      break;
    }
  }
  std::cout << std::endl;
  if (pendingChanges) {
    std::cout << "NOTE: Changes have not been committed" << std::endl;
  }
}

}  // namespace lineup
