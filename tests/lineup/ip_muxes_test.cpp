#include <gtest/gtest.h>
#include <uuid/uuid.h>

#include <cstdint>
#include <map>
#include <string>

#include "model/lineup_editor.h"
#include "tests/support/expect_refused.h"

namespace lineup::test {
namespace {

hub_module::IPInput inputAt(int32_t slot, int32_t interface) {
  hub_module::IPInput input;
  input.__set_slot(slot);
  input.__set_interfaceId(interface);
  return input;
}

/// An editor with the input 7/1.
class AddIPMux : public testing::Test {
 protected:
  void expectRefused(int32_t slot, int32_t interface, const std::string& url,
                     const std::string& message) {
    test::expectRefused(editor, message, [&] { editor.addIPMux(slot, interface, url); });
  }

  LineupEditor editor;
  std::map<std::string, hub_module::IPInput>& inputs = editor.config.ipInputs;
  hub_module::IPInput& input = inputs["a"] = inputAt(7, 1);
};

TEST_F(AddIPMux, StoresAMuxUnderAFreshUuid) {
  editor.addIPMux(7, 1, "udp://239.1.1.1:1234");
  EXPECT_TRUE(editor.pendingChanges);
  ASSERT_EQ(input.muxes.size(), 1U);
  const auto& [key, mux] = *input.muxes.begin();
  EXPECT_EQ(key.size(), 36U);
  uuid_t uuid;
  ASSERT_EQ(uuid_parse(key.c_str(), uuid), 0) << key;
  EXPECT_EQ(uuid_type(uuid), UUID_TYPE_DCE_RANDOM);
  hub_module::IPMux expected;
  expected.uuid = key;
  expected.url = "udp://239.1.1.1:1234";
  EXPECT_EQ(mux, expected);
  EXPECT_FALSE(mux.__isset.uuid);
  EXPECT_FALSE(mux.__isset.url);
}

TEST_F(AddIPMux, RefusesEveryMuxWithoutIPInputs) {
  inputs.clear();
  expectRefused(7, 1, "udp://a", "No IP input found for 7/1");
  expectRefused(0, 0, "", "No IP input found for 0/0");
  expectRefused(-3, -1, "udp://a", "No IP input found for -3/-1");
}

TEST_F(AddIPMux, ChoosesOnlyAnInputOfThatSlotAndThatInterface) {
  expectRefused(7, 2, "udp://a", "No IP input found for 7/2");
  expectRefused(8, 1, "udp://a", "No IP input found for 8/1");
}

TEST_F(AddIPMux, NeverChoosesAnInputWhoseSlotOrInterfaceIsNotSet) {
  input.__isset.interfaceId = false;
  inputs["b"] = inputAt(7, 1);
  inputs["b"].__isset.slot = false;
  inputs["c"];
  expectRefused(7, 1, "udp://a", "No IP input found for 7/1");
  expectRefused(0, 0, "udp://a", "No IP input found for 0/0");
}

TEST_F(AddIPMux, ChoosesTheFirstOfTwoInputsOfTheSamePlace) {
  inputs["b"] = inputAt(7, 1);
  editor.addIPMux(7, 1, "udp://a");
  EXPECT_EQ(input.muxes.size(), 1U);
  EXPECT_TRUE(inputs.at("b").muxes.empty());
}

TEST_F(AddIPMux, RefusesAUrlThatTheInterfaceAlreadyHas) {
  editor.addIPMux(7, 1, "udp://239.1.1.1:1234");
  expectRefused(7, 1, "udp://239.1.1.1:1234",
                "Mux URL 'udp://239.1.1.1:1234' has already been set in 7/1");
}

TEST_F(AddIPMux, ComparesUrlsByteForByte) {
  editor.addIPMux(7, 1, "udp://a");
  editor.addIPMux(7, 1, "udp://A");
  editor.addIPMux(7, 1, "udp://a/");
  editor.addIPMux(7, 1, std::string("udp://a\0x", 9));
  editor.addIPMux(7, 1, "");
  EXPECT_EQ(input.muxes.size(), 5U);
  expectRefused(7, 1, "", "Mux URL '' has already been set in 7/1");
}

TEST_F(AddIPMux, TakesAUrlThatAnotherInterfaceOrModuleHas) {
  inputs["b"] = inputAt(7, 2);
  inputs["c"] = inputAt(8, 1);
  editor.addIPMux(7, 1, "udp://a");
  editor.addIPMux(7, 2, "udp://a");
  editor.addIPMux(8, 1, "udp://a");
  for (const auto& [name, each] : inputs) {
    ASSERT_EQ(each.muxes.size(), 1U) << name;
    EXPECT_EQ(each.muxes.begin()->second.url, "udp://a") << name;
  }
}

TEST_F(AddIPMux, GivesEveryMuxItsOwnUuidInTextOrder) {
  for (int i = 0; i < 100; ++i) {
    editor.addIPMux(7, 1, "udp://239.1.1.1:" + std::to_string(i));
  }
  ASSERT_EQ(input.muxes.size(), 100U);
  std::string previous;
  for (const auto& [key, mux] : input.muxes) {
    EXPECT_EQ(mux.uuid, key);
    EXPECT_LT(previous, key);
    previous = key;
  }
}

}  // namespace
}  // namespace lineup::test
