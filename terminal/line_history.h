// The lines that were entered before.

#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>

namespace lineup {

/// The last thousand lines, each once, the oldest first. The line being edited counts as one after
/// the last.
class LineHistory {
 public:
  static constexpr std::size_t kMost = 1000;

  /// Where a line was found.
  struct Place {
    std::size_t line;
    std::size_t column;
  };

  /// Adds a line, unless it is empty. One that is there already moves to the end.
  void add(const std::wstring& line);

  std::size_t size() const { return lines_.size(); }
  const std::wstring& operator[](std::size_t line) const { return lines_[line]; }

  /// The last line before `before` that has `text` in it.
  std::optional<Place> find(const std::wstring& text, std::size_t before) const;

 private:
  std::deque<std::wstring> lines_{};
};

}  // namespace lineup
