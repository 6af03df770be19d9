// Regular expressions, and counting in texts.

#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace lineup::test {

/// Whether the text is of the form, a POSIX extended regular expression. std::regex would take the
/// compiler five seconds in each source.
inline bool matches(const std::string& text, const std::string& form) {
  const testing::Matcher<const std::string&> matcher = testing::MatchesRegex(form);
  return matcher.Matches(text);
}

/// How often `part` is in `text`.
inline int count(const std::string& text, const std::string& part) {
  int found = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++found;
  }
  return found;
}

}  // namespace lineup::test
