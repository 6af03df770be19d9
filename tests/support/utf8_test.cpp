#include "support/utf8.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cwctype>

namespace lineup::test {
namespace {

/// A test program begins in the locale C.
class Utf8 : public testing::Test {
 protected:
  ~Utf8() override { std::setlocale(LC_CTYPE, "C"); }
};

TEST_F(Utf8, ColumnsAreThoseOfATerminalInAnyLocale) {
  for (const char* const locale : {"C", "C.UTF-8"}) {
    ASSERT_NE(std::setlocale(LC_CTYPE, locale), nullptr);
    EXPECT_EQ(columnsOf(""), 0U);
    EXPECT_EQ(columnsOf("Canal 1"), 7U);
    EXPECT_EQ(columnsOf("Espa\u00f1a"), 6U);
    EXPECT_EQ(columnsOf("Espan\u0303a"), 6U);  // with a combining tilde
    EXPECT_EQ(columnsOf("\u0301"), 0U);
    EXPECT_EQ(columnsOf("a\u200bb"), 2U);  // with a space of no width
    EXPECT_EQ(columnsOf("\u6f22\u5b57"), 4U);
    EXPECT_EQ(columnsOf("\uff21\uff22"), 4U);  // fullwidth
    EXPECT_EQ(columnsOf("\U0001f4fa"), 2U);
  }
}

TEST_F(Utf8, WhatCannotBePrintedTakesOneColumn) {
  EXPECT_EQ(columnsOf("\x1b\n\x7f\u0085"), 4U);
  EXPECT_EQ(columnsOf("a\xff\xc3-\xe6\xbc"), 6U);
  EXPECT_EQ(columnsOf("\uffff"), 1U);
}

TEST_F(Utf8, TheLocaleIsThatOfTheProcessAgain) {
  constexpr wint_t kLetter = 0x00d1;  // of no use in the locale C
  EXPECT_EQ(std::towlower(kLetter), kLetter);
  {
    const Utf8Locale utf8;
    EXPECT_EQ(std::towlower(kLetter), 0x00f1U);
  }
  EXPECT_EQ(std::towlower(kLetter), kLetter);
}

}  // namespace
}  // namespace lineup::test
