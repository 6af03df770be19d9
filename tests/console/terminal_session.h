// The console on a terminal, as a person sees it.

#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tests/console/keys.h"
#include "tests/support/console_texts.h"
#include "tests/support/fake_controller.h"
#include "tests/support/file_content.h"
#include "tests/support/program_process.h"
#include "tests/support/screen.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {

/// The end of a screen with the prompt that says that there are changes.
inline const std::string kPendingOnScreen = "\n" + kPending + "|";

/// The end of one on which the headend's id was changed.
inline std::string changedOnScreen(int id) {
  return idChanged(id) + kPending + "|";
}

inline Start onTerminal(const std::string& type = "xterm", unsigned short rows = 24,
                        unsigned short columns = 80) {
  Start start;
  start.terminal = true;
  start.rows = rows;
  start.columns = columns;
  start.timeout = std::chrono::seconds(20);
  start.environment = {{"TERM", type}, {"LANG", "C.UTF-8"}, {"LC_ALL", {}}, {"LC_CTYPE", {}}};
  return start;
}

/// The console, or what runs it, and its screen.
class Session {
 public:
  /// Waits until the screen ends with `begin`: the prompt, as a rule.
  explicit Session(const Start& start, const std::string& begin = "> |")
      : console(start), screen(start.rows, start.columns) {
    expect(begin);
  }

  void type(std::string_view keys) { console.send(keys); }

  /// Types, and waits until the screen ends with `expected`.
  void type(std::string_view keys, const std::string& expected) {
    type(keys);
    expect(expected);
  }

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

  /// Stops the console, which stoppable() runs, and lets it go on: the screen then ends with
  /// `expected`. Returns what is shown up to the stop.
  std::string stopAndGoOn(const std::string& expected) {
    type(kCtrlZ);
    std::string shown = console.readUntil("stopped\r\n");
    screen.show("\x1b[2J\x1b[H");
    type("\n", expected);
    return shown;
  }

  /// Ends the console, at an empty line.
  void quit() {
    type("quit\n");
    EXPECT_EQ(console.finish().status, 0);
  }

  /// Types Ctrl-C during a call, and waits until the console has been interrupted.
  void interruptCall() {
    type(kCtrlC);
    console.readUntil("^C");  // the terminal shows it once the signal is sent
    console.waitUntilTaken(SIGINT);
  }

  /// Brings the console to reading an answer, which has no prompt to wait for.
  void askForPlsItem() {
    type("addpls\n", " (0 Auto | 1 Gold | 2 Root)   131070\n|");
    console.waitUntilLinesAreEdited(true);
  }

  ProgramProcess console;
  Screen screen;
};

/// Types `keys`, which begin a call; its answer goes on, or breaks off, when it is released.
inline void beginCall(Session& session, FakeController& controller, const std::string& keys,
                      bool goesOn = false) {
  const std::size_t calls = controller.calls().size();
  controller.answerNext(stalled(goesOn));
  session.type(keys);
  controller.waitForCalls(calls + 1);
}

/// A session on each of the terminals of kTerminals.
class OnEachTerminal : public testing::TestWithParam<const char*> {
 protected:
  FakeController controller;
  Session session{onTerminal(GetParam())};
};

inline const auto kTerminals = testing::Values("xterm", "vt100");

inline std::string nameOfTerminal(const testing::TestParamInfo<const char*>& instance) {
  return instance.param;
}

class OnATerminal : public testing::Test {
 protected:
  /// A terminal, with the folder for what the console and its shell leave there.
  Start start() const {
    Start start = onTerminal();
    start.environment["XDG_STATE_HOME"] = folder.path();
    start.environment["PAGER"] = std::nullopt;
    start.folder = folder.path();
    return start;
  }

  /// A shell that runs the console and notes the terminal's mode, not the usual one, before and
  /// after it; and then runs `next`.
  Start watched(const std::string& next = "") const {
    return inShell("stty -echoe -echoctl; stty -a > before; " + kConsoleProgram +
                       "; echo \"status $?\"; stty -a > after; " + next,
                   start());
  }

  /// A shell that runs `command`, and when this is stopped notes the terminal's mode, says so, and
  /// lets it go on after a line.
  Start stoppable(const std::string& command, const Start& like) const {
    return inShell("stty -echoe -echoctl; stty -a > before; set -m; " + command +
                       "; while stty -a > after; echo stopped; read go; do fg >/dev/null; done",
                   like);
  }
  Start stoppable(const std::string& command = kConsoleProgram) const {
    return stoppable(command, start());
  }

  /// Expects that the mode was found, when it was noted last, as it was before.
  void expectModeRestored() const {
    EXPECT_NE(contentOf(folder.file("before")), "");
    EXPECT_EQ(contentOf(folder.file("before")), contentOf(folder.file("after")));
  }

  TemporaryFolder folder;
  FakeController controller;
};

}  // namespace lineup::test
