#include "terminal/line_history.h"

#include <gtest/gtest.h>

#include <string>

namespace lineup::test {
namespace {

TEST(LineHistory, KeepsEachLineOnceTheLastLast) {
  LineHistory history;
  for (const wchar_t* line : {L"a", L"b", L"", L"b", L"a"}) {
    history.add(line);
  }
  ASSERT_EQ(history.size(), 2U);
  EXPECT_EQ(history[0], L"b");
  EXPECT_EQ(history[1], L"a");
}

TEST(LineHistory, KeepsTheLastThousand) {
  LineHistory history;
  for (int i = 0; i < 1500; ++i) {
    history.add(std::to_wstring(i));
  }
  ASSERT_EQ(history.size(), 1000U);
  EXPECT_EQ(history[0], L"500");
}

TEST(LineHistory, FindsTheLastLineBefore) {
  LineHistory history;
  for (const wchar_t* line : {L"x.*y", L"abab", L"cab"}) {
    history.add(line);
  }
  EXPECT_EQ(history.find(L"ab", 3)->line, 2U);
  EXPECT_EQ(history.find(L"ab", 3)->column, 1U);
  EXPECT_EQ(history.find(L"ab", 2)->line, 1U);
  EXPECT_EQ(history.find(L"ab", 2)->column, 0U);
  EXPECT_FALSE(history.find(L"ab", 1));
  EXPECT_EQ(history.find(L".*", 9)->line, 0U);
  EXPECT_FALSE(history.find(L"a.a", 3));
}

}  // namespace
}  // namespace lineup::test
