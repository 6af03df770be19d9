#include "print/show_command.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iostream>
#include <string>

#include "model/lineup_editor.h"
#include "tests/support/memory_use.h"
#include "tests/support/random_records.h"
#include "tests/support/streams.h"

namespace lineup::test {
namespace {

std::string shown(const LineupEditor& editor) {
  return printed([&] { editor.showLineup(); });
}

TEST(ShowCommand, BeginsWithTheNameOfTheRecordAndItsFirstFields) {
  const std::string text = configDebugString(hub_module::HeadendConfig());
  EXPECT_EQ(text.substr(0, 151),
            "HeadendConfig {\n"
            "  01: lineupConfig (struct) = LineupConfig {\n"
            "    01: globalConfig (struct) = LineupGlobalConfig {\n"
            "      01: globalFlag (bool) = false,\n");
  EXPECT_EQ(text.back(), '}');
}

TEST(ShowCommand, ShowsTheDefaultsOfANewEditor) {
  const std::string text = configDebugString(hub_module::HeadendConfig());
  for (const char* line :
       {"04: mcastRangeStart (string) = \"239.0.0.1\",", "06: port (i32) = 1234,",
        "03: ipEntries (list) = list<struct>[0] {", "05: rfEntries (list) = list<struct>[0] {",
        "06: dvbInputServices (map) = map<i32,struct>[0] {", "01: headendId (i32) = 1,"}) {
    EXPECT_NE(text.find(line), std::string::npos) << line;
  }
  EXPECT_EQ(text.find("countryCode"), std::string::npos);
}

TEST(ShowCommand, CallsTheServiceOfAnEntryService) {
  hub_module::HeadendConfig config;
  config.lineupConfig.dvbInputServices[1];
  config.lineupConfig.emptyInputServices[1];
  const std::string text = configDebugString(config);
  EXPECT_NE(text.find("01: service (struct) = DVBInputService {"), std::string::npos);
  EXPECT_NE(text.find("01: service (struct) = EmptyInputService {"), std::string::npos);
}

TEST(ShowCommand, ShortensLongStringsToTheirFirstSixteenBytes) {
  hub_module::HeadendConfig config;
  config.headendGlobalConfig.headendName = "0123456789abcdef" + std::string(241, 'x');
  EXPECT_NE(configDebugString(config).find("headendName (string) = \"0123456789abcdef[...](257)\""),
            std::string::npos);
  config.headendGlobalConfig.headendName.pop_back();
  EXPECT_NE(configDebugString(config).find(config.headendGlobalConfig.headendName + "\""),
            std::string::npos);
}

TEST(ShowCommand, DiffersBetweenConfigurations) {
  EXPECT_NE(configDebugString(randomHeadendConfig(1)), configDebugString(randomHeadendConfig(2)));
}

TEST(ShowCommand, IsShownUnderItsTitle) {
  LineupEditor editor;
  editor.config = randomHeadendConfig(1);
  editor.pendingChanges = true;
  EXPECT_EQ(shown(editor), "Current lineup:\n" + configDebugString(editor.config) + "\n");
  EXPECT_TRUE(editor.pendingChanges);
}

TEST(ShowCommand, OfTheMostRecordsThatAMegabyteHoldsTakesNoMemory) {
  LineupEditor editor;
  for (int32_t key = 0; key < 99900; ++key) {
    editor.config.lineupConfig.dvbInputServices[key];
  }
  std::ofstream nowhere("/dev/null");
  std::streambuf* const standardOutput = std::cout.rdbuf(nowhere.rdbuf());
  const int64_t peak = peakMemory([&] { editor.showLineup(); });
  std::cout.rdbuf(standardOutput);
  EXPECT_LT(peak, 1024 * 1024);
}

}  // namespace
}  // namespace lineup::test
