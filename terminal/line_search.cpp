#include "terminal/line_search.h"

#include <cstddef>

#include "terminal/line_places.h"
#include "terminal/terminal_keys.h"

namespace lineup {

bool LineSearch::take(wchar_t key) {
  std::size_t before = history_.size();
  if (key::isLetter(key)) {
    part_ += key;
    before = place_ ? place_->line + 1 : before;
  } else if (key == key::kSearch) {
    before = place_ ? place_->line : before;
  } else if (key == key::kBackspace || key == key::kRubout) {
    part_.resize(letterBefore(part_, part_.size()));
  } else {
    return false;
  }
  const auto found = part_.empty() ? std::nullopt : history_.find(part_, before);
  found_ = found.has_value();
  place_ = found ? found : place_;
  return true;
}

std::wstring LineSearch::note() const {
  return L"bck:" + part_ + (found_ || part_.empty() ? L"" : L"?");
}

}  // namespace lineup
