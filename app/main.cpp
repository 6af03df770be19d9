#include <fcntl.h>
#include <unistd.h>

#include <iostream>
#include <stdexcept>

#include "app/options.h"
#include "app/rescue.h"
#include "controller/thrift_log.h"
#include "model/lineup_editor.h"
#include "support/ending_signals.h"
#include "support/log.h"
#include "support/memory_limit.h"

namespace {

constexpr int kLogToSyslog = 1;
constexpr int kLogToSyslogAndConsole = 3;

/// Puts /dev/null in the place of the standard streams that are closed, or the next connection or
/// file would take that place and get what is printed.
void openClosedStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) < 0) {
      // Takes the lowest number that is free, and stays open.
      open("/dev/null", O_RDWR);  // cppcheck-suppress leakReturnValNotUsed
    }
  }
}

// At once: there is nothing yet that a destructor would have to end.
[[noreturn]] void printVersionAndLeave() {
  std::cout << "\nVersion: " CONSOLE_VERSION "\n" << std::flush;
  _exit(0);
}

void runMode(lineup::LineupEditor& editor, const lineup::CommandLineOptions& options) {
  if (!options.saveFile.empty()) {
    editor.saveConfig(options.saveFile);
  } else if (!options.restoreFile.empty()) {
    editor.restoreConfig(options.restoreFile);
  } else if (options.headendType.empty()) {
    editor.runPromptLoop();
  } else {
    editor.runTypeMode(options.headendType);
  }
}

int run(const lineup::CommandLineOptions& options) {
  if (options.version) {
    printVersionAndLeave();
  }
  limitMemory();
  log_setup(options.level, options.console ? kLogToSyslogAndConsole : kLogToSyslog);
  lineup::routeThriftOutputToLog();
  catchEndingSignals();
  lineup::LineupEditor editor;
  try {
    runMode(editor, options);
    endIfSignalled();
  } catch (const std::runtime_error& error) {
    // GCOVR_EXCL_START: each of the modes catches its own
    std::cout << "Error: " << error.what() << std::endl;
    // GCOVR_EXCL_STOP
  } catch (const EndedBySignal& end) {
    lineup::rescuePendingChanges(editor);
    endBySignal(end.signal);
  } catch (...) {
    lineup::rescuePendingChanges(editor);
    throw;  // ends the program: nobody catches it
  }
  return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
  openClosedStreams();
  lineup::CommandLineOptions options;
  try {
    options = lineup::parseOptions(argc, argv);
  } catch (const std::string& message) {
    std::cerr << message << std::endl;
    return 1;
  }
  return run(options);
}
