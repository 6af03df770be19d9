#include "model/lineup_from_status.h"

#include <gtest/gtest.h>

#include <cstddef>

#include "tests/support/random_records.h"

namespace lineup::test {
namespace {

TEST(LineupFromStatus, NewStatusGivesANewLineup) {
  EXPECT_EQ(lineupFromStatus(hub_module::LineupStatus()), hub_module::LineupConfig());
}

TEST(LineupFromStatus, CopiesSettingsEntriesInOrderAndServicesKeyByKey) {
  const hub_module::LineupStatus status = randomHeadendStatus(1).lineupStatus;
  const hub_module::LineupConfig lineup = lineupFromStatus(status);
  EXPECT_EQ(lineup.globalConfig, status.globalConfig);
  EXPECT_EQ(lineup.ipConfig, status.ipStatus.config);
  EXPECT_EQ(lineup.rfConfig, status.rfStatus.config);
  EXPECT_EQ(lineup.dvbInputServices, status.dvbInputServices);
  EXPECT_EQ(lineup.encInputServices, status.encInputServices);
  ASSERT_EQ(lineup.rfEntries.size(), status.rfEntries.size());
  for (std::size_t index = 0; index < lineup.rfEntries.size(); ++index) {
    EXPECT_EQ(lineup.rfEntries[index], status.rfEntries[index].config);
  }
}

TEST(LineupFromStatus, LeavesWhatAStatusDoesNotTellAtItsDefaults) {
  const hub_module::LineupConfig lineup = lineupFromStatus(randomHeadendStatus(2).lineupStatus);
  EXPECT_TRUE(lineup.ipEntries.empty());
  EXPECT_TRUE(lineup.emptyInputServices.empty());
  EXPECT_TRUE(lineup.encConfig.moduleSettings.empty());
}

}  // namespace
}  // namespace lineup::test
