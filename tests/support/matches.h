// Whether a text is of a form, given as a POSIX extended regular expression. std::regex would take
// the compiler five seconds in each source.

#pragma once

#include <gtest/gtest.h>

#include <string>

namespace lineup::test {

inline bool matches(const std::string& text, const std::string& form) {
  const testing::Matcher<const std::string&> matcher = testing::MatchesRegex(form);
  return matcher.Matches(text);
}

}  // namespace lineup::test
