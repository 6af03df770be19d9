#include "terminal/line_places.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>
#include <vector>

namespace lineup::test {
namespace {

class LinePlaces : public testing::Test {
 protected:
  LinePlaces() { std::setlocale(LC_CTYPE, "C.UTF-8"); }
};

/// The places that lead from one end of `line` to the other.
template <class Next>
std::vector<std::size_t> places(const std::wstring& line, std::size_t from, Next next) {
  std::vector<std::size_t> places{from};
  while (next(line, places.back()) != places.back()) {
    places.push_back(next(line, places.back()));
  }
  return places;
}

using Places = std::vector<std::size_t>;

TEST_F(LinePlaces, AreNotBetweenALetterAndItsMarks) {
  const std::wstring line = L"ae\u0301\u0323漢b\u0301";
  EXPECT_EQ(places(line, 0, letterAfter), (Places{0, 1, 4, 5, 7}));
  EXPECT_EQ(places(line, line.size(), letterBefore), (Places{7, 5, 4, 1, 0}));
}

TEST_F(LinePlaces, OfMarksWithoutALetterAreTheEnds) {
  const std::wstring line = L"\u0301\u0301";
  EXPECT_EQ(places(line, 0, letterAfter), (Places{0, 2}));
  EXPECT_EQ(places(line, 2, letterBefore), (Places{2, 0}));
  EXPECT_EQ(places(line, 2, wordBefore), (Places{2, 0}));
  EXPECT_EQ(places(L"", 0, wordAfter), (Places{0}));
}

TEST_F(LinePlaces, OfWordsAreWhereLettersDigitsAndTheSignsOfUrlsEnd) {
  const std::wstring line = L" ab1  http://e\u0301x_y.org:80";
  EXPECT_EQ(places(line, 0, wordAfter), (Places{0, 4, 10, 22, 25}));
  EXPECT_EQ(places(line, line.size(), wordBefore), (Places{25, 23, 13, 6, 1, 0}));
}

TEST_F(LinePlaces, OfWordsAreNotBetweenALetterAndItsMarks) {
  const std::wstring line = L"a/\u0301b e\u0301t";
  EXPECT_EQ(places(line, 0, wordAfter), (Places{0, 1, 4, 8}));
  EXPECT_EQ(places(line, line.size(), wordBefore), (Places{8, 5, 3, 0}));
}

TEST_F(LinePlaces, AfterBlanksAreBeforeWhateverIsNone) {
  const std::wstring line = L"a \u0301b  http://x?y ";
  EXPECT_EQ(places(line, line.size(), blankDelimitedBefore), (Places{17, 6, 3, 0}));
}

}  // namespace
}  // namespace lineup::test
