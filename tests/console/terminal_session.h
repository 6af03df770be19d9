// The console on a terminal, as a person sees it.

#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/support/program_process.h"
#include "tests/support/screen.h"

namespace lineup::test {

/// The end of a screen with the prompt that says that there are changes.
inline constexpr char kPendingOnScreen[] = "\n(changes to commit) > |";

inline Start onTerminal(const std::string& type = "xterm") {
  Start start;
  start.terminal = true;
  start.timeout = std::chrono::seconds(20);
  start.environment = {{"TERM", type}, {"LANG", "C.UTF-8"}, {"LC_ALL", {}}, {"LC_CTYPE", {}}};
  return start;
}

/// The console, or what runs it, and its screen.
class Session {
 public:
  explicit Session(const Start& start) : console(start), screen(start.rows, start.columns) {}

  void type(std::string_view keys) { console.send(keys); }

  void resize(unsigned short rows, unsigned short columns) {
    screen.resize(rows, columns);
    console.resize(rows, columns);
  }

  /// Waits until the screen ends with `expected`, where '|' is the cursor.
  void expect(const std::string& expected) {
    try {
      while (!screen.text().ends_with(expected)) {
        screen.show(console.readMore());
      }
    } catch (const std::runtime_error&) {
      ADD_FAILURE() << "not on the screen:\n" << expected << "\nbut:\n" << screen.text();
      throw;
    }
  }

  /// Brings the console to reading an answer, which has no prompt to wait for.
  void askForPlsItem() {
    type("addpls\n");
    expect(" (0 Auto | 1 Gold | 2 Root)   131070\n|");
    while (console.echoes()) {
      usleep(1'000);
    }
  }

  ProgramProcess console;
  Screen screen;
};

}  // namespace lineup::test
