#include "compare/json_difference.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <vector>

namespace lineup::test {
namespace {

using nlohmann::json;

TEST(PatchBetween, SaysOneElementPutInFrontInOneOperation) {
  EXPECT_EQ(patchBetween({{"a", {1, 2, 3}}}, {{"a", {0, 1, 2, 3}}}),
            json::parse(R"([{"op": "add", "path": "/a/0", "value": 0}])"));
  EXPECT_EQ(patchBetween({{"a", {0, 1, 2, 3}}}, {{"a", {1, 2, 3}}}),
            json::parse(R"([{"op": "remove", "path": "/a/0"}])"));
}

TEST(PatchBetween, EscapesTheNamesInPaths) {
  EXPECT_EQ(patchBetween({{"a/b~c", 1}}, {{"a/b~c", 2}}),
            json::parse(R"([{"op": "replace", "path": "/a~1b~0c", "value": 2}])"));
}

TEST(PatchBetween, GivesTheOtherListWhateverDiffers) {
  const std::vector<json> lists = {
      json::array(),      {1},          {1, 1},         {2, 1}, {1, 2, 3}, {3, 2, 1},
      {1, 2, 3, 1, 2, 3}, {0, 1, 2, 3}, {{{"a", 1}}, 2}};
  for (const json& from : lists) {
    for (const json& to : lists) {
      EXPECT_EQ(from.patch(patchBetween(from, to)), to) << from << " " << to;
    }
  }
}

}  // namespace
}  // namespace lineup::test
