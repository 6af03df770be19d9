// Showing a line that is being edited, on as many rows of a terminal as it needs.

#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace lineup {

/// A terminal's control sequences, empty for those that it lacks, and whether it wraps.
struct TerminalAbilities {
  std::string up;                   ///< moves the cursor up one row
  std::string eraseToEndOfLine;     ///< from the cursor
  std::string eraseToEndOfDisplay;  ///< from the cursor
  std::string clear;                ///< erases all and moves the cursor to the first row
  bool wraps = true;                ///< what is written after the last column goes to the next row
};

/// How many rows a line of `text` takes on a terminal of `columns`, which wraps it.
std::size_t rowsOf(const std::wstring& text, std::size_t columns);

/// The part of a terminal's screen on which a line is shown. Keeps what it shows, and returns
/// output only for what differs. A line longer than the screen is shown as far as it has room,
/// around the cursor. Letters take the columns that wcwidth() gives them, and those without a
/// column stand in that of the letter before them.
class LineScreen {
 public:
  explicit LineScreen(TerminalAbilities abilities) : abilities_(std::move(abilities)) {}

  /// Begins with nothing shown, the terminal's cursor at the left of a row, on a screen of this
  /// size, 1 or more.
  void begin(std::size_t rows, std::size_t columns);

  /// Returns what makes the terminal show `text` with the cursor before its letter `cursor`, and
  /// `note`, unless it is empty, on a row below.
  std::string show(const std::wstring& text, std::size_t cursor, const std::wstring& note = {});

  /// Returns what moves the terminal's cursor to the row below all that is shown, where the next
  /// thing begins.
  std::string leave();

  /// Returns what erases the screen.
  std::string clear();

  /// Returns what erases the line that is shown, on a terminal whose size is now another, and that
  /// has wrapped the line anew if it does so. It is to be shown again.
  std::string resize(std::size_t rows, std::size_t columns);

  std::size_t rows() const { return rows_; }
  std::size_t columns() const { return columns_; }

 private:
  /// What the columns of a row show; nothing in the second column of a letter that takes two.
  using Row = std::vector<std::string>;
  struct Picture {
    std::vector<Row> rows{Row()};
    std::size_t cursorRow = 0;
    std::size_t cursorColumn = 0;
  };

  static void append(Picture& picture, wchar_t letter, std::size_t columns);
  static Picture layOut(const std::wstring& text, std::size_t cursor, std::size_t columns);
  static void appendBelow(Picture& picture, const std::wstring& note, std::size_t columns);
  void scrollTo(const Picture& picture);
  void showRow(std::size_t row, const Row& wanted);
  void moveTo(std::size_t row, std::size_t column);
  void moveToRow(std::size_t row);
  void write(const Row& row, std::size_t begin, std::size_t end);
  std::string taken();

  TerminalAbilities abilities_;
  std::size_t rows_ = 24;
  std::size_t columns_ = 80;
  std::vector<Row> shown_{};
  std::size_t top_ = 0;     ///< the first row of the line that is on the screen
  std::size_t row_ = 0;     ///< the cursor, as counted in shown_
  std::size_t column_ = 0;  ///< columns_ when the last letter filled the row
  std::wstring text_{};     ///< what is shown
  std::size_t cursor_ = 0;
  std::string output_{};
};

}  // namespace lineup
