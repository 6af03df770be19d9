// The commands that edit the RF and IP lineups and the IP muxes, as an installer sees them.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "tests/console/session.h"
#include "tests/support/fake_controller.h"

namespace lineup::test {
namespace {

using namespace korvel::thrift::hub_module;

constexpr char kNoAddress[] = "Please give a SLOT_ID and HDMI_ID\n";
constexpr char kBadModule[] = "Invalid module id, please enter an integer 3-12\n";
constexpr char kBadHdmi[] = "Invalid HDMI id, please enter an integer 0-3\n";
constexpr char kNoType[] = "Please give a DVB service type\n";
constexpr char kNoMux[] = "Please give a SLOT_ID, IF_ID and URL\n";

/// The service that the encoder commands store.
ENCInputServiceConfig encService(int32_t slot, int32_t port) {
  ENCInputServiceConfig service;
  service.address.slot = slot;
  service.address.port = port;
  service.settings.videoProfile = 3;
  service.settings.audioCodec = 2;
  return service;
}

template <class Entry>
Entry entry(int32_t key, LineupEntryKind::type kind, const std::string& name) {
  Entry result;
  result.serviceKey = key;
  result.serviceKind = kind;
  result.name = name;
  return result;
}

LineupRFEntryConfig rfEntry(int32_t key, LineupEntryKind::type kind, const std::string& name) {
  return entry<LineupRFEntryConfig>(key, kind, name);
}

LineupIPEntryConfig ipEntry(int32_t key, LineupEntryKind::type kind, const std::string& name) {
  return entry<LineupIPEntryConfig>(key, kind, name);
}

/// A controller that keeps what is committed.
class LineupCommands : public ::testing::Test {
 protected:
  LineupConfig& lineup() { return config.lineupConfig; }

  /// The lines are typed and then committed, on top of `config`; returns what was committed.
  HeadendConfig committedAfter(std::vector<Step> steps) {
    steps.push_back({"commit", "", false});
    controller.setConfig(config);
    expectSession(steps);
    const std::vector<ReceivedCall> calls = controller.calls();
    EXPECT_EQ(calls.back().method, "setHeadendConfig");
    return calls.back().config;
  }

  FakeController controller;
  HeadendConfig config;  ///< the configuration that is running
};

// ---- encoder services

TEST_F(LineupCommands, AddEncPutsOneServiceIntoBothLineups) {
  HeadendConfig expected;
  expected.lineupConfig.encInputServices[1] = encService(5, 2);
  expected.lineupConfig.ipEntries = {ipEntry(1, LineupEntryKind::ENC, "ENC 5/2")};
  expected.lineupConfig.rfEntries = {rfEntry(1, LineupEntryKind::ENC, "ENC 5/2")};
  EXPECT_EQ(committedAfter({{"addenc 5 2"}}), expected);
}

TEST_F(LineupCommands, RfAddEncAndIpAddEncUseOneLineupEach) {
  HeadendConfig expected;
  expected.lineupConfig.encInputServices[1] = encService(3, 0);
  expected.lineupConfig.encInputServices[2] = encService(12, 3);
  expected.lineupConfig.rfEntries = {rfEntry(1, LineupEntryKind::ENC, "ENC 3/0")};
  expected.lineupConfig.ipEntries = {ipEntry(2, LineupEntryKind::ENC, "ENC 12/3")};
  EXPECT_EQ(committedAfter({{"rfaddenc 3 0"}, {"ipaddenc 12 3"}}), expected);
}

TEST_F(LineupCommands, EncoderAddressesOutOfRangeAreRefusedAndChangeNothing) {
  config.lineupConfig.encInputServices[4] = encService(6, 1);
  std::vector<Step> steps;
  for (const std::string command : {"addenc", "rfaddenc", "ipaddenc"}) {
    for (const char* words : {"", " 5", " 99", " "}) {
      steps.push_back({command + words, kNoAddress, false});
    }
    for (const char* words :
         {" 2 0", " 13 0", " x 0", " -5 0", " 13 9", "  5 0", " 4294967299 0"}) {
      steps.push_back({command + words, kBadModule, false});
    }
    for (const char* words : {" 5 4", " 5 -1", " 5 4294967296"}) {
      steps.push_back({command + words, kBadHdmi, false});
    }
  }
  EXPECT_EQ(committedAfter(steps), config);
}

TEST_F(LineupCommands, AnHdmiIdThatIsNoNumberIsInputZero) {
  EXPECT_EQ(committedAfter({{"rfaddenc 5 two"}, {"rfaddenc 5x 3y 8"}}).lineupConfig.rfEntries,
            (std::vector<LineupRFEntryConfig>{rfEntry(1, LineupEntryKind::ENC, "ENC 5/0"),
                                              rfEntry(2, LineupEntryKind::ENC, "ENC 5/3")}));
}

TEST_F(LineupCommands, TheSameEncoderInputTwiceGivesTwoServices) {
  const HeadendConfig committed = committedAfter({{"addenc 5 2"}, {"addenc 5 2"}});
  EXPECT_EQ(
      committed.lineupConfig.encInputServices,
      (std::map<int32_t, ENCInputServiceConfig>{{1, encService(5, 2)}, {2, encService(5, 2)}}));
  EXPECT_EQ(committed.lineupConfig.ipEntries.size(), 2U);
  EXPECT_EQ(committed.lineupConfig.rfEntries.size(), 2U);
}

TEST_F(LineupCommands, TheSmallestFreeKeyIsTakenFirst) {
  config.lineupConfig.encInputServices[1] = encService(3, 0);
  config.lineupConfig.encInputServices[3] = encService(3, 2);
  config.lineupConfig.emptyInputServices[2];
  const HeadendConfig committed =
      committedAfter({{"rfaddenc 4 0"}, {"rfaddenc 4 1"}, {"rfaddempty 2"}, {"rfaddempty 2"}});
  EXPECT_EQ(committed.lineupConfig.encInputServices.at(2), encService(4, 0));
  EXPECT_EQ(committed.lineupConfig.encInputServices.at(4), encService(4, 1));
  EXPECT_EQ(committed.lineupConfig.emptyInputServices.at(1).service.serviceType, 2);
  EXPECT_EQ(committed.lineupConfig.emptyInputServices.at(3).service.serviceType, 2);
}

// ---- reserved slots

TEST_F(LineupCommands, RfAddEmptyReservesASlot) {
  HeadendConfig expected;
  expected.lineupConfig.emptyInputServices[1].service.serviceType = 25;
  expected.lineupConfig.emptyInputServices[2].service.serviceType = 0;
  expected.lineupConfig.rfEntries = {rfEntry(1, LineupEntryKind::EMPTY, "EMPTY SLOT"),
                                     rfEntry(2, LineupEntryKind::EMPTY, "EMPTY SLOT")};
  EXPECT_EQ(committedAfter({{"rfaddempty 25"}, {"rfaddempty radio"}}), expected);
}

TEST_F(LineupCommands, RfAddEmptyWithoutATypeIsRefused) {
  EXPECT_EQ(committedAfter({{"rfaddempty", kNoType, false}}), config);
}

TEST_F(LineupCommands, AnEncoderFillsASlotReservedForTelevision) {
  HeadendConfig expected;
  expected.lineupConfig.encInputServices[1] = encService(4, 0);
  expected.lineupConfig.rfEntries = {rfEntry(1, LineupEntryKind::ENC, "EMPTY SLOT")};
  EXPECT_EQ(committedAfter({{"rfaddempty 1"}, {"rfaddenc 4 0"}}), expected);
}

TEST_F(LineupCommands, AnEncoderPassesOverASlotReservedForAnotherType) {
  HeadendConfig expected;
  expected.lineupConfig.encInputServices[1] = encService(4, 0);
  expected.lineupConfig.emptyInputServices[1].service.serviceType = 2;
  expected.lineupConfig.rfEntries = {rfEntry(1, LineupEntryKind::EMPTY, "EMPTY SLOT"),
                                     rfEntry(1, LineupEntryKind::ENC, "ENC 4/0")};
  EXPECT_EQ(committedAfter({{"rfaddempty 2"}, {"rfaddenc 4 0"}}), expected);
}

TEST_F(LineupCommands, SlotsOfOneTypeAreFilledInOrderAndTheIPLineupHasNone) {
  const HeadendConfig committed = committedAfter({{"rfaddempty 1"},
                                                  {"rfaddempty 2"},
                                                  {"rfaddempty 1"},
                                                  {"addenc 4 0"},
                                                  {"addenc 4 1"},
                                                  {"addenc 4 2"}});
  EXPECT_EQ(committed.lineupConfig.rfEntries,
            (std::vector<LineupRFEntryConfig>{rfEntry(1, LineupEntryKind::ENC, "EMPTY SLOT"),
                                              rfEntry(2, LineupEntryKind::EMPTY, "EMPTY SLOT"),
                                              rfEntry(2, LineupEntryKind::ENC, "EMPTY SLOT"),
                                              rfEntry(3, LineupEntryKind::ENC, "ENC 4/2")}));
  EXPECT_EQ(committed.lineupConfig.ipEntries,
            (std::vector<LineupIPEntryConfig>{ipEntry(1, LineupEntryKind::ENC, "ENC 4/0"),
                                              ipEntry(2, LineupEntryKind::ENC, "ENC 4/1"),
                                              ipEntry(3, LineupEntryKind::ENC, "ENC 4/2")}));
}

// ---- clearing

TEST_F(LineupCommands, ClearOfAnEmptyLineupIsNoChange) {
  EXPECT_EQ(committedAfter({{"clear", "", false}}), config);
}

TEST_F(LineupCommands, ClearLeavesReservationsAndEverythingElse) {
  config.lineupConfig.ipConfig.port = 5000;
  config.lineupConfig.dvbInputServices[7].service.name = "Uno";
  config.lineupConfig.ipEntries = {ipEntry(7, LineupEntryKind::DVB, "Uno")};
  HeadendConfig expected;
  expected.lineupConfig.ipConfig.port = 5000;
  expected.lineupConfig.emptyInputServices[1].service.serviceType = 1;
  EXPECT_EQ(committedAfter({{"rfaddempty 1"}, {"addenc 4 0"}, {"rfaddempty 1"}, {"clear"}}),
            expected);
}

TEST_F(LineupCommands, ClearWithOnlyReservationsLeftIsNoChange) {
  config.lineupConfig.emptyInputServices[1].service.serviceType = 1;
  EXPECT_EQ(committedAfter({{"clear", "", false}}), config);
}

// ---- IP muxes

class MuxCommands : public LineupCommands {
 protected:
  MuxCommands() {
    addInput("a", 7, 1);
    addInput("b", 7, 2);
  }

  void addInput(const std::string& key, int32_t slot, int32_t interface) {
    config.ipInputs[key].__set_slot(slot);
    config.ipInputs[key].__set_interfaceId(interface);
  }

  static std::vector<std::string> urlsOf(const IPInput& input) {
    std::vector<std::string> urls;
    for (const auto& [key, mux] : input.muxes) {
      EXPECT_EQ(mux.uuid, key);
      EXPECT_EQ(key.size(), 36U);
      urls.push_back(mux.url);
    }
    return urls;
  }
};

TEST_F(MuxCommands, AddsAMuxToTheInputOfThatPlace) {
  const HeadendConfig committed = committedAfter({{"addipmux 7 2 udp://239.1.1.1:1234 ignored"}});
  EXPECT_EQ(urlsOf(committed.ipInputs.at("b")), std::vector<std::string>{"udp://239.1.1.1:1234"});
  HeadendConfig without = committed;
  without.ipInputs["b"].muxes.clear();
  EXPECT_EQ(without, config);
}

TEST_F(MuxCommands, RefusesAPlaceWithoutAnInput) {
  config.ipInputs["b"].__isset.interfaceId = false;
  EXPECT_EQ(committedAfter({{"addipmux 7 2 udp://a", "No IP input found for 7/2\n", false},
                            {"addipmux 8 1 udp://a", "No IP input found for 8/1\n", false},
                            {"addipmux x y udp://a", "No IP input found for 0/0\n", false},
                            {"addipmux -7 1z udp://a", "No IP input found for -7/1\n", false}}),
            config);
}

TEST_F(MuxCommands, RefusesEveryMuxWithoutIPInputs) {
  config.ipInputs.clear();
  EXPECT_EQ(committedAfter({{"addipmux 7 1 udp://a", "No IP input found for 7/1\n", false}}),
            config);
}

TEST_F(MuxCommands, RefusesTooFewWords) {
  EXPECT_EQ(committedAfter({{"addipmux", kNoMux, false},
                            {"addipmux 7", kNoMux, false},
                            {"addipmux 7 1", kNoMux, false},
                            {"addipmux 7 1 ", kNoMux, false}}),
            config);
}

TEST_F(MuxCommands, RefusesAUrlTwiceOnOneInterfaceButNotOnTwo) {
  const HeadendConfig committed = committedAfter(
      {{"addipmux 7 1 udp://ñ'✓"},
       {"addipmux 7 1 udp://ñ'✓", "Mux URL 'udp://ñ'✓' has already been set in 7/1\n"},
       {"addipmux 7 2 udp://ñ'✓"}});
  EXPECT_EQ(urlsOf(committed.ipInputs.at("a")), std::vector<std::string>{"udp://ñ'✓"});
  EXPECT_EQ(urlsOf(committed.ipInputs.at("b")), std::vector<std::string>{"udp://ñ'✓"});
}

TEST_F(MuxCommands, TwoUrlsGiveTwoMuxes) {
  std::vector<std::string> urls =
      urlsOf(committedAfter({{"addipmux 7 1 udp://a"}, {"addipmux 7 1 udp://b"}}).ipInputs.at("a"));
  std::sort(urls.begin(), urls.end());
  EXPECT_EQ(urls, (std::vector<std::string>{"udp://a", "udp://b"}));
}

}  // namespace
}  // namespace lineup::test
