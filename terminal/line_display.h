// Showing the line that is edited, and other things below it, on the terminal.

#pragma once

#include <iostream>
#include <string>
#include <vector>

#include "terminal/letters.h"
#include "terminal/libedit_line.h"
#include "terminal/line_screen.h"
#include "terminal/terminal_description.h"
#include "terminal/terminal_mode.h"

namespace lineup {

/// The prompt with the line after it, written to standard output.
class LineDisplay {
 public:
  /// `line` has to outlive it.
  explicit LineDisplay(const LibeditLine& line) : line_(line) {}

  /// To be called once, before anything else.
  void start(const TerminalDescription& terminal);

  void setPrompt(const std::string& prompt) { prompt_ = charactersOf(prompt); }

  /// Sets what is shown below the line; may be empty.
  void setNote(const std::wstring& note) { note_ = note; }

  /// Begins with nothing shown, the terminal's cursor at the left of a row.
  void begin();

  /// Shows the line as it is now.
  void draw();

  /// Shows the line, `mark` after its cursor, and what is written next below it.
  void leave(const std::string& mark = "");

  /// Shows the line without its line feed, as it was entered, and what is written next below it.
  void leaveEntered();

  /// The terminal has another size, and has wrapped the line anew: shows it.
  void resize();

  /// Erases the screen.
  void clear() { put(screen_.clear()); }

  /// Shows `items` in columns below the line.
  void list(const std::vector<std::string>& items);

  /// Whether the screen has room for the line and `text`.
  bool hasRoomFor(const std::string& text) const;

  /// Tells the terminal to mark what is pasted ("bracketed paste"), or no longer to.
  void markPastes(bool on);

  /// Says that a key has no effect now.
  static void ring() { put("\a"); }

  static void put(const std::string& output) { std::cout << output << std::flush; }

 private:
  TerminalSize size() const;

  const LibeditLine& line_;
  TerminalDescription terminal_{};
  LineScreen screen_{{}};
  bool marksPastes_ = false;
  std::wstring prompt_{};
  std::wstring note_{};
};

}  // namespace lineup
