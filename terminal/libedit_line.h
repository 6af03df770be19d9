// The line that is edited, in libedit.

#pragma once

#include <cstddef>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "terminal/line_places.h"
#include "terminal/terminal_description.h"

namespace lineup {

/// Keeps the line in libedit, which inserts the letters that are typed. libedit reads no keys and
/// draws nothing: its drawing writes beyond its screen buffer when the line has more rows than the
/// screen. It is given a large screen whose output goes to /dev/null. Nor does it move or erase, as
/// it takes a combining mark for a letter.
///
/// Lasts as long as the process: libedit's end would discard what was typed ahead for the program
/// that comes next.
class LibeditLine {
 public:
  /// Gives libedit the next key, a letter or one that ends the line or the input. Returns 1 then, 0
  /// at the end of input, or -1 to end the line. It acts on any other key itself, calls refresh()
  /// and waits for the next. Must not throw.
  using ReadKey = std::function<int(wchar_t& key)>;

  explicit LibeditLine(ReadKey readKey) : readKey_(std::move(readKey)) {}
  LibeditLine(const LibeditLine&) = delete;
  LibeditLine& operator=(const LibeditLine&) = delete;

  /// Starts libedit on `terminal`, which standard input and output are. Returns what that can do;
  /// none if lines cannot be edited on it. To be called once, before anything else.
  std::optional<TerminalDescription> start(const char* terminal);

  /// Reads a line and returns it, with its line feed; null at the end, or as ReadKey has said. It
  /// is valid until the next call.
  const char* read();

  std::wstring text() const;
  std::size_t length() const;

  /// How many characters are before the cursor.
  std::size_t cursor() const;
  EditedLine line() const { return {text(), cursor()}; }

  void insert(const std::wstring& text);
  void replace(const EditedLine& line);
  void moveTo(std::size_t place);

  /// Erases `count` characters before the cursor.
  void eraseBefore(std::size_t count);

  /// Makes libedit take over what the above have done.
  void refresh();

  /// To be called before ReadKey returns a key: libedit may add it to the line.
  void makeRoomForKey();

 private:
  std::optional<TerminalDescription> startOn(const char* terminal, std::FILE* nowhere);
  void bindKeys();
  bool edits();
  void makeRoom(std::size_t letters);

  ReadKey readKey_;
  editline* lib_ = nullptr;
  std::size_t room_ = 0;     ///< for how many characters libedit's screen is large enough
  std::size_t longest_ = 1;  ///< the most characters that a line has had
};

}  // namespace lineup
