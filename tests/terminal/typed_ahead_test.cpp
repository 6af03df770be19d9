#include "terminal/typed_ahead.h"

#include <gtest/gtest.h>

#include <string>

namespace lineup::test {
namespace {

constexpr bool kUsual = true;
constexpr bool kEditing = false;

/// The modes in which the next `count` bytes came: 'u' for the usual one, 'e' for that for editing.
std::string modes(TypedAhead& ahead, int count) {
  std::string modes;
  for (int i = 0; i < count; ++i) {
    modes += ahead.take() ? 'u' : 'e';
  }
  return modes;
}

TEST(TypedAhead, KeepsTheModeOfEachByte) {
  TypedAhead ahead;
  ahead.thereAre(2, kUsual);
  ahead.thereAre(5, kEditing);
  EXPECT_EQ(modes(ahead, 1), "u");
  EXPECT_EQ(ahead.count(), 4);
  ahead.thereAre(6, kUsual);
  EXPECT_EQ(modes(ahead, 8), "ueeeuuee");
  EXPECT_EQ(ahead.count(), 0);
}

TEST(TypedAhead, ForgetsWhatAnotherProgramHasRead) {
  TypedAhead ahead;
  ahead.thereAre(2, kEditing);
  ahead.thereAre(4, kUsual);
  ahead.thereAre(1, kEditing);
  EXPECT_EQ(modes(ahead, 2), "ue");
  ahead.thereAre(0, kUsual);
  EXPECT_EQ(ahead.take(), kEditing);
}

bool completed(const LineEnds::End& end, char byte, bool usualMode, bool moreFollows = false) {
  LineEnds ends;
  ends.ended({'\r', kEditing, false, false});  // as a person ends a line
  ends.ended(end);
  const bool completed = ends.areCompletedBy(byte, usualMode, [=] { return moreFollows; });
  EXPECT_FALSE(ends.areCompletedBy('\n', kEditing, [] { return true; })) << "only the next byte";
  return completed;
}

TEST(LineEnds, ALineFeedAfterAReturnBelongsToItWheneverItComes) {
  EXPECT_TRUE(completed({'\r', kEditing, true, true}, '\n', kEditing));
  EXPECT_TRUE(completed({'\r', kEditing, false, false}, '\n', kEditing));
  EXPECT_FALSE(completed({'\r', kEditing, true, true}, '\r', kEditing));
  EXPECT_FALSE(completed({'\r', kEditing, true, true}, 'x', kEditing));
}

TEST(LineEnds, WhatMayBeAReturnTypedWhileACommandRunsIsOneUnlessItIsOfAPaste) {
  EXPECT_FALSE(completed({'\r', kEditing, false, false}, '\n', kUsual));
  EXPECT_TRUE(completed({'\r', kEditing, false, false}, '\n', kUsual, true));
  EXPECT_TRUE(completed({'\r', kEditing, true, false}, '\n', kUsual));
  EXPECT_FALSE(completed({'\n', kUsual, true, false}, '\n', kUsual));
  EXPECT_TRUE(completed({'\n', kUsual, true, false}, '\n', kUsual, true));
  EXPECT_TRUE(completed({'\n', kUsual, true, true}, '\n', kUsual));
  EXPECT_TRUE(completed({'\n', kUsual, true, false}, '\n', kEditing));
}

TEST(LineEnds, LineFeedsAloneEndALineEach) {
  EXPECT_FALSE(completed({'\n', kEditing, true, true}, '\n', kEditing, true));
  EXPECT_FALSE(completed({'\n', kEditing, true, true}, '\n', kUsual, true));
  LineEnds ends;
  ends.ended({'\n', kEditing, true, true});
  ends.ended({'\n', kUsual, true, true});
  EXPECT_FALSE(ends.areCompletedBy('\n', kUsual, [] { return true; }));
}

TEST(LineEnds, InAPasteTwoReturnsAreOneAndTwoLineFeedsAreTwo) {
  for (const bool usual : {kEditing, kUsual}) {
    for (const char byte : {'\r', '\n'}) {
      LineEnds ends;
      ends.setInPaste(true);
      ends.ended({'\r', kEditing, true, true});
      EXPECT_TRUE(ends.areCompletedBy(byte, usual, [] { return false; }));
      EXPECT_FALSE(ends.areCompletedBy(byte, usual, [] { return false; })) << "a third one";
      ends.ended({'\n', kUsual, true, true});  // a Return that came while a command ran
      EXPECT_TRUE(ends.areCompletedBy(byte, usual, [] { return false; }));
      ends.ended({'\n', kEditing, true, true});
      EXPECT_FALSE(ends.areCompletedBy(byte, usual, [] { return false; }));
    }
  }
  LineEnds ends;
  ends.setInPaste(true);
  ends.ended({'\r', kEditing, true, true});
  EXPECT_FALSE(ends.areCompletedBy('x', kEditing, [] { return true; }));
  EXPECT_FALSE(ends.areCompletedBy('\r', kEditing, [] { return true; }));
}

TEST(LineEnds, AfterAPasteReturnsAreOneEach) {
  LineEnds ends;
  ends.setInPaste(true);
  ends.setInPaste(false);
  ends.ended({'\r', kEditing, true, true});
  EXPECT_FALSE(ends.areCompletedBy('\r', kEditing, [] { return true; }));
}

TEST(LineEnds, WhereNothingIsKnownYetOnlyWhatComesAtOnceBelongsTogether) {
  for (const bool moreFollowed : {true, false}) {
    LineEnds ends;
    ends.ended({'\n', kUsual, true, moreFollowed});
    EXPECT_EQ(ends.areCompletedBy('\n', kEditing, [] { return false; }), moreFollowed);
  }
}

}  // namespace
}  // namespace lineup::test
