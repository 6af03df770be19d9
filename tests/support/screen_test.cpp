#include "tests/support/screen.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace lineup::test {
namespace {

TEST(Screen, ShowsTextAndCursor) {
  Screen screen(3, 10);
  EXPECT_EQ(screen.text(), "|");
  screen.show("añb \r\nc\b");
  EXPECT_EQ(screen.text(), "añb\n|c");
}

TEST(Screen, WrapsAndScrolls) {
  Screen screen(3, 4);
  screen.show("abcd");
  EXPECT_EQ(screen.text(), "abcd|");
  screen.show("e\r\nf\r\ng");
  EXPECT_EQ(screen.text(), "e\nf\ng|");
}

TEST(Screen, MovesInsertsDeletesAndErases) {
  Screen screen(3, 10);
  screen.show("abcdef\x1b[3D\x1b[P");
  EXPECT_EQ(screen.text(), "abc|ef");
  screen.show("\x1b[2@");
  EXPECT_EQ(screen.text(), "abc|  ef");
  screen.show("\x1b[4hx\x1b[4l\x1b[C");
  EXPECT_EQ(screen.text(), "abcx | ef");
  screen.show("\x1b[2G");
  EXPECT_EQ(screen.text(), "a|bcx  ef");
  screen.show("\x1b[6G");
  screen.show("\x1b[1K\x1b[A\x1b[B\r\x1b[J");
  EXPECT_EQ(screen.text(), "      ef\n|");
  screen.show("x\x1b[H\x1b[2J");
  EXPECT_EQ(screen.text(), "|");
}

TEST(Screen, TakesOutputInPieces) {
  Screen screen(3, 10);
  for (const char* piece : {"a\xc3", "\xb1", "\x1b", "[", "2", "D", "x"}) {
    screen.show(piece);
  }
  EXPECT_EQ(screen.text(), "x|ñ");
}

TEST(Screen, WrapsLinesAnewForANewWidth) {
  Screen screen(4, 10);
  screen.show("first\r\n0123456789abcd");
  screen.resize(4, 8);
  EXPECT_EQ(screen.text(), "first\n01234567\n89abcd|");
  screen.resize(4, 20);
  EXPECT_EQ(screen.text(), "first\n0123456789abcd|");
  screen.resize(2, 5);
  EXPECT_EQ(screen.text(), "56789\nabcd|");
}

TEST(Screen, RefusesWhatItDoesNotKnow) {
  Screen screen(4, 10);
  EXPECT_THROW(screen.show("\x1b[3Q"), std::runtime_error);
  EXPECT_THROW(screen.show("\x1b(B"), std::runtime_error);
}

}  // namespace
}  // namespace lineup::test
