// Going back to earlier lines from the one that is edited.

#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>

#include "terminal/line_history.h"
#include "terminal/line_places.h"

namespace lineup {

/// The earlier lines, of earlier consoles too, and which of them is edited. One that is changed and
/// left for another keeps its change as long as the line is edited; the history stays as it is.
class LineRecall {
 public:
  /// Reads the lines of earlier consoles. Without memory for them there are none.
  void readEarlierLines();

  /// Adds `line`, for later consoles too, unless it is empty or the same as the last one.
  void remember(const std::string& line);

  /// Begins another line, after the last of the history.
  void begin();

  /// The line before the one that is edited, whose text is now `text`, or the one after it, with
  /// the cursor at its end; none if there is none. After the last one is what was typed.
  std::optional<EditedLine> older(const std::wstring& text);
  std::optional<EditedLine> newer(const std::wstring& text);

  /// The place in the history of the line that is edited; the size of the history for what was
  /// typed.
  std::size_t place() const { return place_; }

  /// Keeps `text` as what the line that is edited was changed to.
  void leave(const std::wstring& text) { left_[place_] = text; }

  /// Makes the line at `place` the one that is edited.
  void goTo(std::size_t place) { place_ = place; }

  const LineHistory& history() const { return history_; }

 private:
  std::optional<EditedLine> recall(std::size_t place, const std::wstring& text);

  LineHistory history_{};
  std::size_t place_ = 0;
  std::map<std::size_t, std::wstring> left_{};  ///< by their places
};

}  // namespace lineup
