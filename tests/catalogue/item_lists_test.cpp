#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "catalogue/build_dvb_services.h"

namespace lineup::test {
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

TEST(TextList, IsSplitAtCommasWithItsEmptyItemsAndBlanksButNoneAtTheEnd) {
  const struct {
    const char* text;
    Texts items;
  } cases[] = {
      {"x,y", {"x", "y"}}, {"x,,y", {"x", "", "y"}},  {",x", {"", "x"}}, {"x,y,", {"x", "y"}},
      {",", {""}},         {" x , y", {" x ", " y"}}, {"", {}}};
  for (const auto& each : cases) {
    EXPECT_EQ(parseTextList(each.text), each.items) << each.text;
  }
}

TEST(IntegerList, IsSplitAtCommasAndReadAsFarAsItsItemsAreNumbers) {
  const struct {
    const char* text;
    Integers items;
  } cases[] = {{"101,102,103", {101, 102, 103}},
               {"101,102,", {101, 102}},
               {"", {}},
               {" 1,-2,+3,12x,0x10", {1, -2, 3, 12, 0}},
               {"2147483647,-2147483648", {2147483647, -2147483647 - 1}}};
  for (const auto& each : cases) {
    EXPECT_EQ(parseIntegerList(each.text), each.items) << each.text;
  }
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
}  // namespace lineup::test
