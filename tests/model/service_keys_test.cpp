#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <map>
#include <vector>

#include "model/lineup_editor.h"

namespace lineup::test {
namespace {

TEST(ServiceKeys, AreTheLowestFromOneThatAreFreeWhateverElseThereIs) {
  constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();
  constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();
  const struct {
    std::vector<int32_t> taken;
    int32_t next;
  } cases[] = {{{}, 1},
               {{1, 2, 3}, 4},
               {{1, 2, 4}, 3},
               {{1, 3}, 2},
               {{1, 3, 4, 9}, 2},
               {{2, 3}, 1},
               {{kLowest, -1, 0}, 1},
               {{-1, 0, 1, 2}, 3},
               {{0, 1, kHighest}, 2}};
  for (const auto& each : cases) {
    std::map<int32_t, char> services;
    for (const int32_t key : each.taken) {
      services[key] = 'x';
    }
    EXPECT_EQ(LineupEditor::allocateServiceKey(services), each.next);
  }
}

}  // namespace
}  // namespace lineup::test
