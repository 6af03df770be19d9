#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "catalogue/build_dvb_services.h"

namespace lineup {
namespace {

using Texts = std::vector<std::string>;
using Integers = std::vector<int32_t>;

/// What parseIntegerList throws for `text`, if it is an `Error`.
template <class Error>
std::string errorOf(const std::string& text) {
  try {
    parseIntegerList(text);
  } catch (const Error& error) {
    return error.what();
  }
  return "nothing thrown";
}

TEST(TextList, IsSplitAtCommas) {
  EXPECT_EQ(parseTextList("x,y"), (Texts{"x", "y"}));
}

TEST(TextList, KeepsAnEmptyItemBetweenTwoCommas) {
  EXPECT_EQ(parseTextList("x,,y"), (Texts{"x", "", "y"}));
  EXPECT_EQ(parseTextList(",x"), (Texts{"", "x"}));
}

TEST(TextList, KeepsBlanks) {
  EXPECT_EQ(parseTextList(" x , y"), (Texts{" x ", " y"}));
}

TEST(TextList, ATrailingCommaAddsNothing) {
  EXPECT_EQ(parseTextList("x,y,"), (Texts{"x", "y"}));
  EXPECT_EQ(parseTextList(","), (Texts{""}));
}

TEST(TextList, OfAnEmptyTextIsEmpty) {
  EXPECT_EQ(parseTextList(""), Texts{});
}

TEST(IntegerList, IsSplitAtCommas) {
  EXPECT_EQ(parseIntegerList("101,102,103"), (Integers{101, 102, 103}));
}

TEST(IntegerList, OfAnEmptyTextIsEmpty) {
  EXPECT_EQ(parseIntegerList(""), Integers{});
}

TEST(IntegerList, ATrailingCommaAddsNothing) {
  EXPECT_EQ(parseIntegerList("101,102,"), (Integers{101, 102}));
}

TEST(IntegerList, AcceptsBlanksSignsAndWhatFollowsTheDigits) {
  EXPECT_EQ(parseIntegerList(" 1,-2,+3,12x,0x10"), (Integers{1, -2, 3, 12, 0}));
}

TEST(IntegerList, ReachesToTheEndsOf32Bits) {
  EXPECT_EQ(parseIntegerList("2147483647,-2147483648"), (Integers{2147483647, -2147483647 - 1}));
}

TEST(IntegerList, AnItemWithoutDigitsIsAnInvalidArgument) {
  for (const char* text : {"101,,103", ",1", ",", "a", "1,b", " ", "-"}) {
    EXPECT_EQ(errorOf<std::invalid_argument>(text), "stoi") << text;
  }
}

TEST(IntegerList, AnItemBeyond32BitsIsOutOfRange) {
  for (const char* text : {"2147483648", "1,-2147483649", "99999999999999999999"}) {
    EXPECT_EQ(errorOf<std::out_of_range>(text), "stoi") << text;
  }
}

}  // namespace
}  // namespace lineup
