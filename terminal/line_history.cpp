#include "terminal/line_history.h"

#include <algorithm>

namespace lineup {

void LineHistory::add(const std::wstring& line) {
  if (line.empty()) {
    return;
  }
  const auto same = std::find(lines_.begin(), lines_.end(), line);
  if (same != lines_.end()) {
    lines_.erase(same);
  }
  lines_.push_back(line);
  if (lines_.size() > kMost) {
    lines_.pop_front();
  }
}

std::optional<LineHistory::Place> LineHistory::find(const std::wstring& text,
                                                    std::size_t before) const {
  for (std::size_t line = std::min(before, lines_.size()); line > 0; --line) {
    const std::size_t column = lines_[line - 1].find(text);
    if (column != std::wstring::npos) {
      return Place{line - 1, column};
    }
  }
  return {};
}

}  // namespace lineup
