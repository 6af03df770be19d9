// The commands that edit the RF and IP lineups and the IP muxes, as an installer sees them.

#include <gtest/gtest.h>

#include <cstdint>

#include "tests/console/editing_commands.h"
#include "tests/console/prompt_steps.h"
#include "tests/support/lineup_entries.h"

namespace lineup::test {
namespace {

using namespace korvel::thrift::hub_module;

/// The service that the encoder commands store.
ENCInputServiceConfig encService(int32_t slot, int32_t port) {
  ENCInputServiceConfig service;
  service.address.slot = slot;
  service.address.port = port;
  service.settings.videoProfile = 3;
  service.settings.audioCodec = 2;
  return service;
}

using LineupCommands = EditingCommands;

TEST_F(LineupCommands, EachEncoderCommandAddsToItsLineups) {
  HeadendConfig expected;
  LineupConfig& lineup = expected.lineupConfig;
  lineup.encInputServices[1] = encService(5, 2);
  lineup.encInputServices[2] = encService(3, 0);
  lineup.encInputServices[3] = encService(12, 3);
  lineup.rfEntries = {rfEntry(1, LineupEntryKind::ENC, "ENC 5/2"),
                      rfEntry(2, LineupEntryKind::ENC, "ENC 3/0")};
  lineup.ipEntries = {ipEntry(1, LineupEntryKind::ENC, "ENC 5/2"),
                      ipEntry(3, LineupEntryKind::ENC, "ENC 12/3")};
  EXPECT_EQ(committedAfter({{"addenc 5 2"}, {"rfaddenc 3 0"}, {"ipaddenc 12x 3 8"}}), expected);
}

TEST_F(LineupCommands, RfAddEmptyReservesASlotThatAServiceOfItsTypeFills) {
  HeadendConfig expected;
  LineupConfig& lineup = expected.lineupConfig;
  lineup.emptyInputServices[2].service.serviceType = 0;
  lineup.encInputServices[1] = encService(4, 0);
  lineup.rfEntries = {rfEntry(1, LineupEntryKind::ENC, "EMPTY SLOT"),
                      rfEntry(2, LineupEntryKind::EMPTY, "EMPTY SLOT")};
  EXPECT_EQ(committedAfter({{"rfaddempty 1"}, {"rfaddempty radio"}, {"rfaddenc 4 0"}}), expected);
}

TEST_F(LineupCommands, ClearLeavesReservationsAndIsNoChangeIfThereIsNothingElse) {
  HeadendConfig expected;
  expected.lineupConfig.emptyInputServices[1].service.serviceType = 2;
  EXPECT_EQ(committedAfter({{"rfaddempty 2"},
                            {"addenc 4 0"},
                            {"clear"},
                            {"commit", "", false},
                            {"clear", "", false}}),
            expected);
}

TEST_F(LineupCommands, AMuxIsAddedToTheInputOfThatPlaceOnce) {
  config.ipInputs["a"].__set_slot(7);
  config.ipInputs["a"].__set_interfaceId(2);
  const HeadendConfig committed = committedAfter(
      {{"addipmux x y udp://a", "No IP input found for 0/0\n", false},
       {"addipmux 7 1z udp://a", "No IP input found for 7/1\n", false},
       {"addipmux 7 2 udp://ñ'✓ ignored"},
       {"addipmux 7 2 udp://ñ'✓", "Mux URL 'udp://ñ'✓' has already been set in 7/2\n"}});
  ASSERT_EQ(committed.ipInputs.at("a").muxes.size(), 1U);
  EXPECT_EQ(committed.ipInputs.at("a").muxes.begin()->second.url, "udp://ñ'✓");
  HeadendConfig without = committed;
  without.ipInputs["a"].muxes.clear();
  EXPECT_EQ(without, config);
}

}  // namespace
}  // namespace lineup::test
