#include "terminal/line_recall.h"

#include <algorithm>
#include <new>

#include "terminal/history_file.h"
#include "terminal/letters.h"

namespace lineup {

void LineRecall::readEarlierLines() {
  try {
    for (const std::string& line : readHistoryFile(LineHistory::kMost)) {
      history_.add(charactersOf(line));
    }
  } catch (const std::bad_alloc&) {
    history_ = {};
  }
}

void LineRecall::remember(const std::string& line) {
  const std::wstring letters = charactersOf(line);
  if (letters.empty() || (history_.size() > 0 && history_[history_.size() - 1] == letters)) {
    return;
  }
  history_.add(letters);
  try {
    appendToHistoryFile(line, LineHistory::kMost);
  } catch (const std::bad_alloc&) {
    return;  // the file is too large: the line is kept in this console alone
  }
}

void LineRecall::begin() {
  place_ = history_.size();
  left_.clear();
}

std::optional<EditedLine> LineRecall::older(const std::wstring& text) {
  return recall(place_ - std::min<std::size_t>(place_, 1), text);
}

std::optional<EditedLine> LineRecall::newer(const std::wstring& text) {
  return recall(place_ + 1, text);
}

std::optional<EditedLine> LineRecall::recall(std::size_t place, const std::wstring& text) {
  if (place == place_ || place > history_.size()) {
    return {};
  }
  leave(text);
  goTo(place);
  const auto left = left_.find(place);
  const std::wstring& recalled = left == left_.end() ? history_[place] : left->second;
  return EditedLine{recalled, recalled.size()};
}

}  // namespace lineup
