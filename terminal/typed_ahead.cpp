#include "terminal/typed_ahead.h"

#include <algorithm>
#include <utility>

namespace lineup {

void TypedAhead::thereAre(int count, bool usualMode) {
  if (count > count_) {
    bytes_.push_back({count - count_, usualMode});
    count_ = count;
  } else {
    drop(count_ - count);
  }
}

bool TypedAhead::take() {
  const bool usualMode = !bytes_.empty() && bytes_.front().usualMode;
  drop(1);
  return usualMode;
}

void TypedAhead::drop(int count) {
  while (count > 0 && !bytes_.empty()) {
    Bytes& first = bytes_.front();
    const int part = std::min(count, first.count);
    first.count -= part;
    count_ -= part;
    count -= part;
    if (first.count == 0) {
      bytes_.pop_front();
    }
  }
}

void LineEnds::ended(const End& end) {
  if (!end.usualMode) {
    last_ = end.byte == '\r' ? Told::Returns : Told::LineFeeds;
  }
  isOpen_ = last_ != Told::LineFeeds;
  end_ = end;
}

bool LineEnds::areCompletedBy(char byte, bool usualMode, const std::function<bool()>& moreFollows) {
  if (!std::exchange(isOpen_, false)) {
    return false;
  }
  if (inPaste_) {
    return byte == '\r' || byte == '\n';
  }
  if (byte != '\n') {
    return false;
  }
  if (end_.byte == '\r') {
    return !usualMode || end_.atOnce || moreFollows();
  }
  return end_.moreFollowed || (usualMode ? moreFollows() : last_ == Told::Returns);
}

}  // namespace lineup
