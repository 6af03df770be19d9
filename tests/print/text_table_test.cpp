#include "print/text_table.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lineup::test {
namespace {

TEST(TextTable, SetsColumnsTwoBlanksApartAsATerminalShowsThem) {
  EXPECT_EQ(tableText({{"name", "SID"}, {{"España", "1"}, {"a", "2"}, {"b", ""}}}),
            "NAME    SID\nEspaña  1\na       2\nb\n");
  EXPECT_EQ(tableText({{"name", "SID"}, {{"漢字ＴＶ", "1"}, {"Espan\u0303a", "2"}, {"a\n", "3"}}}),
            "NAME      SID\n漢字ＴＶ  1\nEspan\u0303a    2\na\\n       3\n");
}

TEST(TextTable, AColumnIsAtMost256ColumnsOfATerminalWide) {
  std::string wide;
  std::string combined = "a";
  for (int i = 0; i < 128; ++i) {
    wide += "漢";
    combined += "\u0301\u0301\u0301";
  }
  EXPECT_EQ(tableText({{"x", "y"}, {{wide, "1"}, {wide + "漢", "2"}, {combined, "3"}}}),
            "X" + std::string(257, ' ') + "Y\n" + wide + "  1\n" + wide + "漢  2\n" + combined +
                std::string(257, ' ') + "3\n");
}

TEST(TextTable, AVeryLongCellMakesNoOtherLineLonger) {
  const std::string longest(25'000'000, 'x');
  const std::string wide(256, 'w');
  std::vector<TextTable::Row> rows(10'000, {"a", "1"});
  rows[1][0] = longest;
  rows[2][0] = wide;
  const std::string text = tableText({{"name", "SID"}, rows});
  const std::string heading = "NAME" + std::string(254, ' ') + "SID\n";
  const std::string line = "a" + std::string(257, ' ') + "1\n";
  EXPECT_EQ(text.size(), heading.size() + 9'999 * line.size() + longest.size() + 4);
  const std::string begin = heading + line + longest + "  1\n" + wide + "  1\n" + line;
  EXPECT_TRUE(text.starts_with(begin));
}

TEST(TextTable, HasItsTitleInFrontWhichSaysWhereThereIsNothing) {
  EXPECT_EQ(titledText("Slots", {{"slot", "DVB type"}, {{"1", "2"}}}),
            "Slots\nSLOT  DVB TYPE\n1     2\n");
  EXPECT_EQ(titledText("Slots", {{"slot", "type"}}), "Slots: none\n");
}

TEST(TextTable, LetsNothingThroughThatWouldMoveTheCursor) {
  // Some programs end lines at these as well.
  EXPECT_EQ(tableText({{"name"}, {{"a\u2028b\u2029c\u0085d\u2027"}}}),
            "NAME\na\\xe2\\x80\\xa8b\\xe2\\x80\\xa9c\\xc2\\x85d\u2027\n");
  EXPECT_EQ(tableText({{"name"}, {{"a\tb\x1b[2J\\\x7f\xc2\x9b\xff"}}}),
            "NAME\na\\tb\\x1b[2J\\\\\\x7f\\xc2\\x9b\\xff\n");
}

TEST(TextTable, QuotesTheCellsOfCsvThatNeedIt) {
  EXPECT_EQ(tableCsv({{"a", "b"}, {{"x,y", "say \"hi\"\n"}, {"plain", ""}}}),
            "a,b\n\"x,y\",\"say \"\"hi\"\"\n\"\nplain,\n");
}

}  // namespace
}  // namespace lineup::test
