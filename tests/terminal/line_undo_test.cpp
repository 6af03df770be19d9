#include "terminal/line_undo.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "terminal/terminal_keys.h"

namespace lineup::test {
namespace {

/// Types `letter` after `line`.
void type(LineUndo& undo, std::wstring& line, wchar_t letter) {
  if (undo.beginsStep(letter)) {
    undo.keep({line, line.size()});
  }
  line += letter;
}

/// Undoes the last step; returns whether there was one.
bool undoIn(LineUndo& undo, std::wstring& line) {
  const std::optional<EditedLine> before = undo.undo(line);
  line = before ? before->text : line;
  return before.has_value();
}

TEST(LineUndo, LettersInARowAreOneStepUnlessTheRowIsEnded) {
  LineUndo undo;
  std::wstring line;
  type(undo, line, L'a');
  type(undo, line, L'b');
  undo.endRun();
  type(undo, line, L'c');
  EXPECT_TRUE(undoIn(undo, line));
  EXPECT_EQ(line, L"ab");
  EXPECT_TRUE(undoIn(undo, line));
  EXPECT_EQ(line, L"");
  EXPECT_FALSE(undoIn(undo, line));
}

TEST(LineUndo, BringsBackTheCursorFromWhereTheTextWasChanged) {
  LineUndo undo;
  ASSERT_TRUE(undo.beginsStep(key::kLeft));
  undo.keep({L"ab", 2});
  ASSERT_TRUE(undo.beginsStep(key::kBackspace));
  undo.keep({L"ab", 1});
  const std::optional<EditedLine> before = undo.undo(L"b");
  ASSERT_TRUE(before);
  EXPECT_EQ(before->text, L"ab");
  EXPECT_EQ(before->cursor, 1U);
}

TEST(LineUndo, GoesBackAHundredSteps) {
  LineUndo undo;
  std::wstring line;
  for (int step = 0; step < 120; ++step) {
    type(undo, line, L'a');
    undo.endRun();
  }
  int steps = 0;
  while (undoIn(undo, line)) {
    ++steps;
  }
  EXPECT_EQ(steps, 100);
  EXPECT_EQ(line.size(), 20U);
}

TEST(LineUndo, OfAnotherLineBeginsAnew) {
  LineUndo undo;
  std::wstring line;
  type(undo, line, L'a');
  undo.begin();
  line = L"";
  type(undo, line, L'b');
  EXPECT_TRUE(undoIn(undo, line));
  EXPECT_FALSE(undoIn(undo, line));
}

}  // namespace
}  // namespace lineup::test
