#include "terminal/column_list.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>
#include <vector>

namespace lineup::test {
namespace {

class ColumnList : public testing::Test {
 protected:
  ColumnList() { std::setlocale(LC_CTYPE, "C.UTF-8"); }
};

TEST_F(ColumnList, IsReadDownwards) {
  EXPECT_EQ(listInColumns({"a", "bbb", "c", "d", "e"}, 9, 10),
            "a    d\n"
            "bbb  e\n"
            "c\n");
}

TEST_F(ColumnList, UsesTheWholeWidth) {
  EXPECT_EQ(listInColumns({"aaa", "bbb"}, 8, 10), "aaa  bbb\n");
  EXPECT_EQ(listInColumns({"aaa", "bbb"}, 7, 10), "aaa\nbbb\n");
}

TEST_F(ColumnList, CountsLettersAndNotBytes) {
  EXPECT_EQ(listInColumns({"ñé", "b", "漢", "d"}, 6, 10), "ñé  漢\nb   d\n");
}

TEST_F(ColumnList, CountsWhatItHasNoRoomFor) {
  EXPECT_EQ(listInColumns({"a", "b", "c"}, 1, 3), "a\nb\nc\n");
  EXPECT_EQ(listInColumns({"a", "b", "c", "d"}, 1, 3), "a\nb\n(2 more)\n");
  EXPECT_EQ(listInColumns({"a", "b", "c", "d", "e"}, 4, 2), "a  b\n(3 more)\n");
}

TEST_F(ColumnList, ShowsAtLeastOneLine) {
  EXPECT_EQ(listInColumns({"a", "b"}, 1, 1), "a\n(1 more)\n");
}

TEST_F(ColumnList, ALargeListShowsItsBeginning) {
  const std::vector<std::string> items(100'000, "item");
  EXPECT_EQ(listInColumns(items, 10, 2), "item  item\n(99998 more)\n");
}

TEST_F(ColumnList, CutsWhatIsTooWide) {
  EXPECT_EQ(listInColumns({"abcdef", "漢字"}, 3, 10), "abc\n漢\n");
}

TEST_F(ColumnList, ShowsNothingThatCannotBePrinted) {
  EXPECT_EQ(listInColumns({std::string("a\x1b[2J\n\x7f\0z", 9)}, 20, 10), "a?[2J???z\n");
  EXPECT_EQ(listInColumns({"\xff\xc3-\xc2\x9b\xe2\x82"}, 20, 10), "\?\?-\?\?\?\n");
}

TEST_F(ColumnList, AnEmptyItemTakesItsPlace) {
  EXPECT_EQ(listInColumns({"", "", ""}, 4, 10), "   \n\n");
}

}  // namespace
}  // namespace lineup::test
