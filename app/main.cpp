#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <iostream>
#include <stdexcept>
#include <string>

#include "app/edits_copy.h"
#include "app/options.h"
#include "controller/thrift_log.h"
#include "model/lineup_editor.h"
#include "support/closed_streams.h"
#include "support/ending_signals.h"
#include "support/log.h"
#include "support/memory_limit.h"
#include "support/output.h"
#include "terminal/line_input.h"

namespace lineup {

namespace {

// _exit() saves the time of destructors, of which none is needed yet.
[[noreturn]] void printVersionAndLeave() {
  std::cout << "\nVersion: " LINEUP_VERSION "\n" << std::flush;
  _exit(0);
}

void runMode(LineupEditor& editor, const CommandLineOptions& options) {
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

/// Saves the edits when `signal`, or an exception (SIGABRT), ends the program.
void saveEdits(EditsCopy& copy, int signal) {
  beginEnding(signal);
  copy.writeAtTheEnd();
}

EditsCopy* theCopy = nullptr;

/// For its lifetime, the copy is also written when the end is forced.
class WrittenWhenForced {
 public:
  explicit WrittenWhenForced(EditsCopy& copy) {
    theCopy = &copy;
    whenEndIsForced([] { theCopy->writeAtTheEnd(); });
  }
  ~WrittenWhenForced() { whenEndIsForced(nullptr); }
  WrittenWhenForced(const WrittenWhenForced&) = delete;
  WrittenWhenForced& operator=(const WrittenWhenForced&) = delete;
};

int run(const CommandLineOptions& options) {
  if (options.version) {
    printVersionAndLeave();
  }
  limitMemory();
  log_setup(options.level, options.console ? LOG_TO_SYSLOG_AND_STDERR : LOG_TO_SYSLOG);
  routeThriftOutputToLog();
  catchEndingSignals();
  LineupEditor editor;
  const bool onTerminal = isatty(STDIN_FILENO) == 1;
  EditsCopy copy(editor, onTerminal ? EditsCopy::When::WhileEditing : EditsCopy::When::AtTheEnd);
  const WrittenWhenForced written(copy);
  whenThereIsTime([&copy] { return copy.update(); });
  try {
    runMode(editor, options);
    throwIfSignalled();
    if (editor.pendingChanges) {
      copy.remove();  // given up
    } else {
      copy.update();
    }
  } catch (const std::runtime_error& error) {
    // COVERAGE_EXCL_START: each mode catches std::runtime_error itself
    std::cout << "Error: " << error.what() << std::endl;
    // COVERAGE_EXCL_STOP
  } catch (const EndedBySignal& end) {
    saveEdits(copy, end.signal);
    endBySignal(end.signal);
  } catch (...) {
    saveEdits(copy, SIGABRT);
    throw;  // std::terminate() ends the program
  }
  return 0;
}

}  // namespace

}  // namespace lineup

int main(int argc, char* argv[]) {
  lineup::openClosedStreams(O_RDWR);
  lineup::keepPrinting();
  lineup::CommandLineOptions options;
  try {
    options = lineup::parseOptions(argc, argv);
  } catch (const std::string& message) {
    std::cerr << message << std::endl;
    return 1;
  }
  return lineup::run(options);
}
