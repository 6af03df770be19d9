#include "terminal/line_undo.h"

#include <cstddef>
#include <utility>

#include "terminal/terminal_keys.h"

namespace lineup {

void LineUndo::begin() {
  before_.clear();
  inRun_ = false;
}

bool LineUndo::beginsStep(wchar_t key) {
  const bool isLetter = key::isLetter(key);
  return !std::exchange(inRun_, isLetter) || !isLetter;
}

void LineUndo::keep(const EditedLine& line) {
  constexpr std::size_t kSteps = 100;
  if (!before_.empty() && before_.back().text == line.text) {
    before_.back().cursor = line.cursor;
    return;
  }
  before_.push_back(line);
  if (before_.size() > kSteps) {
    before_.erase(before_.begin());
  }
}

std::optional<EditedLine> LineUndo::undo(const std::wstring& text) {
  inRun_ = false;
  while (!before_.empty() && before_.back().text == text) {
    before_.pop_back();
  }
  return before_.empty() ? std::nullopt : std::optional(before_.back());
}

}  // namespace lineup
