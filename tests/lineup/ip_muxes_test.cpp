#include <gtest/gtest.h>
#include <uuid/uuid.h>

#include <cstdint>
#include <string>
#include <vector>

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

std::vector<std::string> urlsOf(const hub_module::IPInput& input) {
  std::vector<std::string> urls;
  for (const auto& mux : input.muxes) {
    urls.push_back(mux.second.url);
  }
  return urls;
}

TEST(AddIPMux, StoresAMuxUnderAFreshUuid) {
  LineupEditor editor;
  editor.config.ipInputs["input-7-1"] = inputAt(7, 1);
  editor.addIPMux(7, 1, "udp://239.1.1.1:1234");
  EXPECT_TRUE(editor.pendingChanges);
  ASSERT_EQ(editor.config.ipInputs.at("input-7-1").muxes.size(), 1U);
  const auto& [key, mux] = *editor.config.ipInputs.at("input-7-1").muxes.begin();
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

TEST(AddIPMux, RefusesEveryMuxWithoutIPInputs) {
  LineupEditor editor;
  expectRefused(editor, "No IP input found for 7/1", [&] { editor.addIPMux(7, 1, "udp://a"); });
  expectRefused(editor, "No IP input found for 0/0", [&] { editor.addIPMux(0, 0, ""); });
  expectRefused(editor, "No IP input found for -3/-1", [&] { editor.addIPMux(-3, -1, "udp://a"); });
}

TEST(AddIPMux, ChoosesOnlyAnInputOfThatSlotAndThatInterface) {
  LineupEditor editor;
  editor.config.ipInputs["a"] = inputAt(7, 1);
  expectRefused(editor, "No IP input found for 7/2", [&] { editor.addIPMux(7, 2, "udp://a"); });
  expectRefused(editor, "No IP input found for 8/1", [&] { editor.addIPMux(8, 1, "udp://a"); });
}

TEST(AddIPMux, NeverChoosesAnInputWhoseSlotOrInterfaceIsNotSet) {
  LineupEditor editor;
  editor.config.ipInputs["a"] = inputAt(7, 1);
  editor.config.ipInputs["a"].__isset.interfaceId = false;
  editor.config.ipInputs["b"] = inputAt(7, 1);
  editor.config.ipInputs["b"].__isset.slot = false;
  editor.config.ipInputs["c"];
  expectRefused(editor, "No IP input found for 7/1", [&] { editor.addIPMux(7, 1, "udp://a"); });
  expectRefused(editor, "No IP input found for 0/0", [&] { editor.addIPMux(0, 0, "udp://a"); });
}

TEST(AddIPMux, ChoosesTheFirstOfTwoInputsOfTheSamePlace) {
  LineupEditor editor;
  editor.config.ipInputs["b"] = inputAt(7, 1);
  editor.config.ipInputs["a"] = inputAt(7, 1);
  editor.addIPMux(7, 1, "udp://a");
  EXPECT_EQ(editor.config.ipInputs.at("a").muxes.size(), 1U);
  EXPECT_TRUE(editor.config.ipInputs.at("b").muxes.empty());
}

TEST(AddIPMux, RefusesAUrlThatTheInterfaceAlreadyHas) {
  LineupEditor editor;
  editor.config.ipInputs["a"] = inputAt(7, 1);
  editor.addIPMux(7, 1, "udp://239.1.1.1:1234");
  expectRefused(editor, "Mux URL 'udp://239.1.1.1:1234' has already been set in 7/1",
                [&] { editor.addIPMux(7, 1, "udp://239.1.1.1:1234"); });
}

TEST(AddIPMux, ComparesUrlsByteForByte) {
  LineupEditor editor;
  editor.config.ipInputs["a"] = inputAt(7, 1);
  editor.addIPMux(7, 1, "udp://a");
  editor.addIPMux(7, 1, "udp://A");
  editor.addIPMux(7, 1, "udp://a/");
  editor.addIPMux(7, 1, std::string("udp://a\0x", 9));
  editor.addIPMux(7, 1, "");
  EXPECT_EQ(editor.config.ipInputs.at("a").muxes.size(), 5U);
  expectRefused(editor, "Mux URL '' has already been set in 7/1",
                [&] { editor.addIPMux(7, 1, ""); });
}

TEST(AddIPMux, TakesAUrlThatAnotherInterfaceOrModuleHas) {
  LineupEditor editor;
  editor.config.ipInputs["a"] = inputAt(7, 1);
  editor.config.ipInputs["b"] = inputAt(7, 2);
  editor.config.ipInputs["c"] = inputAt(8, 1);
  editor.addIPMux(7, 1, "udp://a");
  editor.addIPMux(7, 2, "udp://a");
  editor.addIPMux(8, 1, "udp://a");
  for (const auto& input : editor.config.ipInputs) {
    EXPECT_EQ(urlsOf(input.second), std::vector<std::string>{"udp://a"});
  }
}

TEST(AddIPMux, GivesEveryMuxItsOwnUuidInTextOrder) {
  LineupEditor editor;
  editor.config.ipInputs["a"] = inputAt(7, 1);
  for (int i = 0; i < 100; ++i) {
    editor.addIPMux(7, 1, "udp://239.1.1.1:" + std::to_string(i));
  }
  const auto& muxes = editor.config.ipInputs.at("a").muxes;
  ASSERT_EQ(muxes.size(), 100U);
  std::string previous;
  for (const auto& [key, mux] : muxes) {
    EXPECT_EQ(mux.uuid, key);
    EXPECT_LT(previous, key);
    previous = key;
  }
}

}  // namespace
}  // namespace lineup::test
