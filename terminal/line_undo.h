// Undoing what was done to a line.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "terminal/line_places.h"

namespace lineup {

/// What the line was before each of the last hundred steps. Letters typed in a row are one step,
/// any other key is one.
class LineUndo {
 public:
  /// Begins another line.
  void begin();

  /// Whether `key`, which is about to change the line, begins a step: keep() is to be called then.
  bool beginsStep(wchar_t key);

  /// Keeps the line as it is before that step.
  void keep(const EditedLine& line);

  /// Letters that are typed next are a step of their own.
  void endRun() { inRun_ = false; }

  /// What the line, now `text`, was before the last step that changed it; none if it was not
  /// changed.
  std::optional<EditedLine> undo(const std::wstring& text);

 private:
  std::vector<EditedLine> before_{};
  bool inRun_ = false;  ///< whether the last key was a letter
};

}  // namespace lineup
