#include "support/words.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lineup::test {
namespace {

using Words = std::vector<std::string>;

TEST(SplitWords, EmptyLineHasNoWords) {
  EXPECT_EQ(splitWords("", ' '), Words());
}

TEST(SplitWords, OneBlankSeparatesWords) {
  EXPECT_EQ(splitWords("a b", ' '), (Words{"a", "b"}));
}

TEST(SplitWords, TwoBlanksHaveAnEmptyWordBetweenThem) {
  EXPECT_EQ(splitWords("rfmod  qam", ' '), (Words{"rfmod", "", "qam"}));
}

TEST(SplitWords, LeadingBlankGivesAnEmptyFirstWord) {
  EXPECT_EQ(splitWords(" a", ' '), (Words{"", "a"}));
}

TEST(SplitWords, OneTrailingBlankAddsNothing) {
  EXPECT_EQ(splitWords("a ", ' '), Words{"a"});
}

TEST(SplitWords, TwoTrailingBlanksAddOneEmptyWord) {
  EXPECT_EQ(splitWords("a  ", ' '), (Words{"a", ""}));
}

TEST(SplitWords, ASingleBlankIsOneEmptyWord) {
  EXPECT_EQ(splitWords(" ", ' '), Words{""});
}

TEST(SplitWords, TabsAndCarriageReturnsArePartOfAWord) {
  EXPECT_EQ(splitWords("a\tb c\r", ' '), (Words{"a\tb", "c\r"}));
}

TEST(SplitWords, TheDelimiterIsTheCallersChoice) {
  EXPECT_EQ(splitWords("x,,y", ','), (Words{"x", "", "y"}));
}

TEST(ReadNumber, ReadsLeadingDigitsAndIgnoresTheRest) {
  EXPECT_EQ(readNumber("12abc"), 12);
  EXPECT_EQ(readNumber("4x"), 4);
  EXPECT_EQ(readNumber("07"), 7);
}

TEST(ReadNumber, AcceptsLeadingWhiteSpaceAndASign) {
  EXPECT_EQ(readNumber("\t-5"), -5);
  EXPECT_EQ(readNumber("+5"), 5);
}

TEST(ReadNumber, NoNumberIsZero) {
  EXPECT_EQ(readNumber("abc"), 0);
  EXPECT_EQ(readNumber(""), 0);
}

TEST(ReadNumber, BeyondThirtyTwoBitsIsTheNearestWithin) {
  EXPECT_EQ(readNumber("4294967299"), 2147483647);
  EXPECT_EQ(readNumber("-99999999999999999999"), -2147483647 - 1);
}

TEST(IsOneWord, WithoutBlanksAndControlCharacters) {
  EXPECT_TRUE(isOneWord("/tmp/señal-\xff"));
  for (const char* text : {"a b", "a\tb", "a\nb", "\x7f", "\x1b[A"}) {
    EXPECT_FALSE(isOneWord(text)) << text;
  }
}

TEST(UpperCase, TurnsAsciiAlone) {
  std::string text = "sat3 é z";
  upperCase(text);
  EXPECT_EQ(text, "SAT3 é Z");
}

}  // namespace
}  // namespace lineup::test
