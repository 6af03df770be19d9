#include "terminal/line_screen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cstddef>
#include <random>
#include <string>
#include <utility>

#include "tests/support/screen.h"

namespace lineup::test {
namespace {

const TerminalAbilities kXterm{"\x1b[A", "\x1b[K", "\x1b[J", "\x1b[H\x1b[2J", true};

/// A screen of its own, and what a person sees of it.
class LineScreenTest : public testing::Test {
 protected:
  LineScreenTest() { std::setlocale(LC_CTYPE, "C.UTF-8"); }

  void use(std::size_t rows, std::size_t columns) {
    terminal = Screen(rows, columns);
    screen.begin(rows, columns);
  }

  /// What is seen when `text` is shown, its cursor at the '|' in it.
  std::string see(const std::wstring& text, const std::wstring& note = {}) {
    return see(terminal, screen, text, note);
  }

  /// Likewise on a screen that has shown nothing before.
  static std::string seeAtOnce(std::size_t rows, std::size_t columns, const std::wstring& text) {
    Screen newTerminal(rows, columns);
    LineScreen newScreen{kXterm};
    newScreen.begin(rows, columns);
    return see(newTerminal, newScreen, text);
  }

  Screen terminal{5, 10};
  LineScreen screen{kXterm};

 private:
  static std::string see(Screen& terminal, LineScreen& screen, std::wstring text,
                         const std::wstring& note = {}) {
    const std::size_t cursor = text.find(L'|');
    text.erase(cursor, 1);
    terminal.show(screen.show(text, cursor, note));
    return terminal.text();
  }
};

TEST_F(LineScreenTest, ShowsWhatDiffersOnly) {
  use(5, 20);
  EXPECT_EQ(screen.show(L"> abc", 5), "> abc");
  EXPECT_EQ(screen.show(L"> abcd", 6), "d");
  EXPECT_EQ(screen.show(L"> abcd", 5), "\b");
  EXPECT_EQ(screen.show(L"> abxd", 6), "\bxd");
  EXPECT_EQ(screen.show(L"> abxd", 6), "");
  EXPECT_EQ(screen.show(L"> a", 3), "\b\b\b\x1b[K");
}

TEST_F(LineScreenTest, TakesAsManyRowsAsItNeeds) {
  use(5, 10);
  EXPECT_EQ(see(L"> 34567890|"), "> 34567890\n|");
  EXPECT_EQ(see(L"> 34567890abc|"), "> 34567890\nabc|");
  EXPECT_EQ(see(L"> x|34567890abc"), "> x|3456789\n0abc");
  EXPECT_EQ(see(L"> |"), "> |");
}

TEST_F(LineScreenTest, ANoteStandsBelow) {
  use(5, 10);
  EXPECT_EQ(see(L"> 34|567890abc", L"note"), "> 34|567890\nabc\nnote");
  EXPECT_EQ(see(L"> 34|567890abc"), "> 34|567890\nabc");
}

TEST_F(LineScreenTest, OfOneRowShowsTheRowOfTheCursor) {
  use(1, 5);
  EXPECT_EQ(see(L"> abcdefgh|"), "|");
  EXPECT_EQ(see(L"> abcde|fgh"), "de|fgh");
  EXPECT_EQ(see(L"|> abcdefgh"), "|> abc");
}

TEST_F(LineScreenTest, OfOneColumnShowsALetterARow) {
  use(3, 1);
  EXPECT_EQ(see(L"> ab|"), "a\nb\n|");
  EXPECT_EQ(see(L"|> ab"), "|>\n\na");
}

TEST_F(LineScreenTest, WideLettersAreNotSplit) {
  use(5, 5);
  EXPECT_EQ(screen.show(L"abcd漢e", 6), "abcd  \r漢e");
  EXPECT_EQ(screen.show(L"abcd漢e", 4), "\r");
  EXPECT_EQ(screen.show(L"abcdx漢e", 4), "\r\x1b[Aabcdx\rabcd");
  use(5, 1);
  EXPECT_EQ(screen.show(L"漢", 0), "?\r");
}

TEST_F(LineScreenTest, CombiningLettersStandWithTheOneBefore) {
  use(5, 10);
  EXPECT_EQ(screen.show(L"e\u0301x", 3), "e\u0301x");
  EXPECT_EQ(screen.show(L"e\u0301x", 2), "\b");
  EXPECT_EQ(screen.show(L"ex", 1), "\rex\b");
  EXPECT_EQ(screen.show(L"\u0301", 1), "\r\x1b[K");
}

TEST_F(LineScreenTest, WhatCannotBePrintedIsAQuestionMark) {
  use(5, 10);
  EXPECT_EQ(screen.show(L"a\x01\x9bz", 4), "a??z");
}

TEST_F(LineScreenTest, LeavingMovesTheCursorToTheRowBelow) {
  use(5, 10);
  see(L"|> 34567890abc");
  terminal.show(screen.leave());
  EXPECT_EQ(terminal.text(), "> 34567890\nabc\n|");
}

TEST_F(LineScreenTest, ANewSizeLeavesNothingStale) {
  for (std::size_t columns = 1; columns < 40; ++columns) {
    use(30, 13);
    see(L"> 3456789012345678901234567890|12345");
    terminal.resize(30, columns);
    terminal.show(screen.resize(30, columns));
    const std::string seen = see(L"> 3456789012345678901234567890|12345");
    use(30, columns);
    EXPECT_EQ(seen, see(L"> 3456789012345678901234567890|12345")) << columns;
  }
}

TEST_F(LineScreenTest, ANewSizeThatALineFillsLeavesTheRowAbove) {
  for (const bool cursorWaits : {false, true}) {
    use(30, 20);
    terminal.show("above\r\n");
    see(L"> 3456789|");
    terminal.resize(30, 9, cursorWaits);
    terminal.show(screen.resize(30, 9));
    EXPECT_EQ(see(L"> 3456789|"), "above\n> 3456789\n|") << cursorWaits;
  }
}

TEST_F(LineScreenTest, ARowThatIsEmptiedStillBelongsToTheLine) {
  use(5, 10);
  see(L"> 34567890a|");
  EXPECT_EQ(screen.show(L"> 34567890", 10), "\r \r");
}

TEST_F(LineScreenTest, IsAlwaysThatOfALineShownAtOnce) {
  std::mt19937 random(1);
  for (const auto& [rows, columns] :
       {std::pair{24U, 80U}, {3U, 7U}, {1U, 4U}, {6U, 2U}, {2U, 1U}}) {
    use(rows, columns);
    for (int i = 0; i < 2000; ++i) {
      std::wstring text(random() % (std::size_t{rows} * columns * 2), L' ');
      for (wchar_t& letter : text) {
        letter = static_cast<wchar_t>(L'a' + random() % 3);
      }
      text.insert(random() % (text.size() + 1), 1, L'|');
      const std::string seen = see(text);
      if (text.size() <= std::size_t{rows} * columns) {  // with room for the cursor after it
        ASSERT_EQ(seen, seeAtOnce(rows, columns, text));
      }
      const std::size_t cursor = seen.find('|');
      ASSERT_NE(cursor, std::string::npos);
      const std::size_t at = text.find(L'|');
      const std::size_t rest = std::min<std::size_t>({text.size() - at, columns, 2});
      if (rest == 2 && at % columns + 1 < columns) {
        ASSERT_EQ(static_cast<wchar_t>(seen[cursor + 1]), text[at + 1]) << seen;
      }
    }
  }
}

TEST_F(LineScreenTest, RowsAreCountedInColumns) {
  EXPECT_EQ(rowsOf(L"", 4), 1U);
  EXPECT_EQ(rowsOf(L"abcd", 4), 1U);
  EXPECT_EQ(rowsOf(L"abcde", 4), 2U);
  EXPECT_EQ(rowsOf(L"e\u0301e\u0301e\u0301e\u0301", 4), 1U);
  EXPECT_EQ(rowsOf(L"漢字", 4), 1U);
  EXPECT_EQ(rowsOf(L"a漢字", 4), 2U) << "a letter of two columns is not parted";
}

}  // namespace
}  // namespace lineup::test
