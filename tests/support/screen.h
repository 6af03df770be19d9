// What a person sees of a program's output on a terminal.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lineup::test {

/// A terminal's screen that understands what programs send to xterm and vt100. A letter takes
/// as many columns as wcwidth() says, a combining one none. What does not change the text, such as
/// colours, is left out.
class Screen {
 public:
  Screen(std::size_t rows, std::size_t columns);

  /// Shows `output`, which may end within an escape sequence or a letter. Throws
  /// std::runtime_error for a sequence that it does not know.
  void show(std::string_view output);

  /// Takes a new size, with lines wrapped anew for it. Where the cursor is after a line that then
  /// fills its rows, it comes to the next row, or waits in the last column, as in tmux.
  void resize(std::size_t rows, std::size_t columns, bool cursorWaits = false);

  /// The rows down to the last with text or cursor, without blanks at their ends, joined by line
  /// feeds. '|' stands before the letter at the cursor.
  std::string text() const;

 private:
  using Letters = std::vector<std::string>;
  struct Row {
    Letters letters;         ///< as many as there are columns
    bool continued = false;  ///< whether the text goes on in the next row
  };

  std::size_t showSome(std::string_view output);
  std::size_t showEscape(std::string_view output);
  void control(char final, const std::vector<std::size_t>& parameters);
  bool moveCursor(char final, std::size_t count);  ///< false if `final` does not move it
  bool editLine(char final, std::size_t count);    ///< false if `final` does not edit the line
  void put(std::string_view letter);
  void lineFeed();
  void eraseInDisplay(std::size_t what);
  void eraseInLine(std::size_t what);
  Row blankRow() const;
  void addRows(Letters line);       ///< one line, wrapped
  void keepRows(std::size_t rows);  ///< so many, with the cursor's

  std::size_t columns_;
  std::vector<Row> rows_;
  std::size_t row_ = 0;
  std::size_t column_ = 0;  ///< columns_ when the last letter filled the row
  bool inserting_ = false;
  std::string unfinished_{};
};

}  // namespace lineup::test
