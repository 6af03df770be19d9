#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <map>

#include "model/lineup_editor.h"

namespace lineup {
namespace {

using Services = std::map<int32_t, char>;

TEST(ServiceKeys, StartAtOne) {
  EXPECT_EQ(LineupEditor::allocateServiceKey(Services{}), 1);
}

TEST(ServiceKeys, GoOnAfterTheLastKeyWithoutAGap) {
  EXPECT_EQ(LineupEditor::allocateServiceKey(Services{{1, 'a'}, {2, 'b'}, {3, 'c'}}), 4);
}

TEST(ServiceKeys, FillTheLowestGapFirst) {
  EXPECT_EQ(LineupEditor::allocateServiceKey(Services{{1, 'a'}, {2, 'b'}, {4, 'd'}}), 3);
  EXPECT_EQ(LineupEditor::allocateServiceKey(Services{{1, 'a'}, {3, 'c'}}), 2);
  EXPECT_EQ(LineupEditor::allocateServiceKey(Services{{1, 'a'}, {3, 'c'}, {4, 'd'}, {9, 'e'}}), 2);
  EXPECT_EQ(LineupEditor::allocateServiceKey(Services{{2, 'b'}, {3, 'c'}}), 1);
}

TEST(ServiceKeys, LookPastKeysThatTheConsoleNeverAllocates) {
  const int32_t lowest = std::numeric_limits<int32_t>::min();
  const int32_t highest = std::numeric_limits<int32_t>::max();
  EXPECT_EQ(LineupEditor::allocateServiceKey(Services{{lowest, 'a'}, {-1, 'b'}, {0, 'c'}}), 1);
  EXPECT_EQ(LineupEditor::allocateServiceKey(Services{{-1, 'a'}, {0, 'b'}, {1, 'c'}, {2, 'd'}}), 3);
  EXPECT_EQ(LineupEditor::allocateServiceKey(Services{{0, 'a'}, {1, 'b'}, {highest, 'c'}}), 2);
}

TEST(ServiceKeys, AddedOneByOneAreOneTwoThree) {
  Services services{{-7, 'x'}, {5, 'y'}};
  for (const int32_t key : {1, 2, 3, 4, 6, 7}) {
    EXPECT_EQ(LineupEditor::allocateServiceKey(services), key);
    services[LineupEditor::allocateServiceKey(services)] = 'z';
  }
}

}  // namespace
}  // namespace lineup
