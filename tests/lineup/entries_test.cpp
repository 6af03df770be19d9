#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "model/lineup_editor.h"
#include "tests/support/expect_refused.h"
#include "tests/support/lineup_entries.h"

namespace lineup::test {
namespace {

using hub_module::LineupEntryKind;
using Words = std::vector<std::string>;

constexpr auto kNoKind = static_cast<LineupEntryKind::type>(3);

using RFEntries = std::vector<hub_module::LineupRFEntryConfig>;
using IPEntries = std::vector<hub_module::LineupIPEntryConfig>;

class Lineup : public testing::Test {
 protected:
  /// The commands, as the dispatcher composes them of the operations.
  int32_t addEnc(const Words& words) {
    const int32_t key = editor.addEncService(LineupEditor::makeEncService(words));
    editor.addIPEntry(key, LineupEntryKind::ENC);
    editor.addRFEntry(key, LineupEntryKind::ENC);
    return key;
  }
  int32_t rfAddEnc(const char* slot, const char* input) {
    const int32_t key =
        editor.addEncService(LineupEditor::makeEncService({"rfaddenc", slot, input}));
    editor.addRFEntry(key, LineupEntryKind::ENC);
    return key;
  }
  int32_t rfAddEmpty(int32_t serviceType) {
    const int32_t key = editor.addEmptyService(serviceType);
    editor.addRFEntry(key, LineupEntryKind::EMPTY);
    return key;
  }

  void putDvbService(int32_t key, const std::string& name, int32_t type) {
    auto& service = lineup.dvbInputServices[key].service;
    service.name = name;
    service.serviceType = type;
  }

  /// Expects that "addenc" with these words is refused with `message` and changes nothing.
  void expectEncRefused(const Words& words, const std::string& message) {
    expectRefused(editor, message, [&] { addEnc(words); });
  }

  LineupEditor editor;
  hub_module::LineupConfig& lineup = editor.config.lineupConfig;
};

using EncAddress = Lineup;
using StoredServices = Lineup;
using EntryServiceType = Lineup;
using EntryName = Lineup;
using Entries = Lineup;
using ClearLineup = Lineup;

// ---- addresses of encoder inputs

TEST_F(EncAddress, IsReadAsFarAsItsWordsAreNumbers) {
  const struct {
    Words words;
    int32_t slot;
    int32_t port;
  } cases[] = {{{"addenc", "3", "0"}, 3, 0},
               {{"addenc", "12", "3"}, 12, 3},
               {{"addenc", "5x", "2.7", "9"}, 5, 2},
               {{"addenc", "5", "hdmi"}, 5, 0}};
  for (const auto& each : cases) {
    const auto address = LineupEditor::parseEncAddress(each.words);
    EXPECT_EQ(address.slot, each.slot);
    EXPECT_EQ(address.port, each.port);
  }
}

TEST_F(EncAddress, RefusesTooFewWordsBeforeItLooksAtTheNumbers) {
  for (const Words& words :
       {Words{}, Words{"addenc"}, Words{"addenc", "5"}, Words{"addenc", "99"}}) {
    expectEncRefused(words, "Please give a SLOT_ID and HDMI_ID");
  }
}

TEST_F(EncAddress, RefusesASlotOutsideThreeToTwelveBeforeItLooksAtTheInput) {
  for (const char* slot : {"2", "13", "0", "-5", "", "five", "4294967299", "-4294967293",
                           "99999999999999999999", "-99999999999999999999"}) {
    SCOPED_TRACE(slot);
    expectEncRefused({"addenc", slot, "0"}, "Invalid module id, please enter an integer 3-12");
    expectEncRefused({"addenc", slot, "9"}, "Invalid module id, please enter an integer 3-12");
  }
}

TEST_F(EncAddress, RefusesAnInputOutsideZeroToThree) {
  for (const char* input : {"4", "-1", "100", "4294967296", "99999999999999999999"}) {
    SCOPED_TRACE(input);
    expectEncRefused({"addenc", "5", input}, "Invalid HDMI id, please enter an integer 0-3");
  }
}

TEST_F(EncAddress, RefusalLeavesEarlierEditsPending) {
  addEnc({"addenc", "5", "2"});
  expectEncRefused({"addenc", "5", "4"}, "Invalid HDMI id, please enter an integer 0-3");
  EXPECT_TRUE(editor.pendingChanges);
}

TEST(EncService, HasTheFixedSettingsAndDefaultsOtherwise) {
  hub_module::ENCInputServiceConfig expected;
  expected.address.slot = 5;
  expected.address.port = 2;
  expected.settings.videoCodec = 0;
  expected.settings.videoResolution = 0;
  expected.settings.videoProfile = 3;
  expected.settings.audioCodec = 2;
  EXPECT_EQ(LineupEditor::makeEncService({"addenc", "5", "2"}), expected);
  EXPECT_EQ(expected.settings.videoBitrate, 8000);
}

// ---- services and their keys

TEST_F(StoredServices, DVBServicesGetTheSmallestFreeKey) {
  EXPECT_EQ(editor.storeDVBService({}), 1);
  EXPECT_EQ(editor.storeDVBService({}), 2);
  lineup.dvbInputServices[4].service.name = "four";
  EXPECT_EQ(editor.storeDVBService({}), 3);
  EXPECT_EQ(editor.storeDVBService({}), 5);
  EXPECT_EQ(lineup.dvbInputServices.at(4).service.name, "four");
}

TEST_F(StoredServices, ADVBServiceIsStoredAsItIsBesideTheOthers) {
  lineup.encInputServices[1].label = "encoder";
  lineup.emptyInputServices[1].service.serviceType = 2;
  hub_module::DVBInputServiceConfig service;
  service.service.name = "Channel One";
  service.service.__set_ipMuxUUID("uuid");
  EXPECT_EQ(editor.storeDVBService(service), 1);
  EXPECT_TRUE(editor.pendingChanges);
  EXPECT_EQ(lineup.dvbInputServices.at(1), service);
  EXPECT_EQ(lineup.encInputServices.size(), 1U);
  EXPECT_EQ(lineup.emptyInputServices.size(), 1U);
}

TEST_F(StoredServices, EncoderServicesGetTheSmallestFreeKey) {
  const auto enc = LineupEditor::makeEncService({"addenc", "5", "2"});
  EXPECT_EQ(editor.addEncService(enc), 1);
  EXPECT_TRUE(editor.pendingChanges);
  EXPECT_EQ(editor.addEncService(enc), 2);
  EXPECT_EQ(editor.addEncService(enc), 3);
  lineup.encInputServices.erase(2);
  const auto other = LineupEditor::makeEncService({"addenc", "7", "1"});
  EXPECT_EQ(editor.addEncService(other), 2);
  EXPECT_EQ(editor.addEncService(other), 4);
  EXPECT_EQ(lineup.encInputServices.at(1), enc);
  EXPECT_EQ(lineup.encInputServices.at(2), other);
}

TEST_F(StoredServices, ReservationsGetTheSmallestFreeKeyOfTheirOwnMap) {
  lineup.encInputServices[1];
  lineup.dvbInputServices[1];
  EXPECT_EQ(editor.addEmptyService(25), 1);
  EXPECT_TRUE(editor.pendingChanges);
  EXPECT_EQ(editor.addEmptyService(1), 2);
  lineup.emptyInputServices.erase(1);
  EXPECT_EQ(editor.addEmptyService(25), 1);
  hub_module::EmptyInputServiceConfig expected;
  expected.service.serviceType = 25;
  EXPECT_EQ(lineup.emptyInputServices.at(1), expected);
}

TEST_F(EntryServiceType, IsTheServicesOwnOrOneForEveryEncoder) {
  putDvbService(4, "Radio", 2);
  lineup.emptyInputServices[4].service.serviceType = 25;
  EXPECT_EQ(editor.entryServiceType(4, LineupEntryKind::DVB), 2);
  EXPECT_EQ(editor.entryServiceType(4, LineupEntryKind::EMPTY), 25);
  EXPECT_EQ(editor.entryServiceType(4, LineupEntryKind::ENC), 1);
}

TEST_F(EntryServiceType, IsZeroForAMissingServiceOrAnUnknownKind) {
  putDvbService(4, "Radio", 2);
  EXPECT_EQ(editor.entryServiceType(5, LineupEntryKind::DVB), 0);
  EXPECT_EQ(editor.entryServiceType(5, LineupEntryKind::EMPTY), 0);
  EXPECT_EQ(editor.entryServiceType(4, kNoKind), 0);
  EXPECT_FALSE(editor.pendingChanges);
}

TEST_F(EntryName, IsTheServicesName) {
  putDvbService(4, "Télé \"1\" ✓", 1);
  lineup.encInputServices[4] = LineupEditor::makeEncService({"addenc", "12", "3"});
  lineup.emptyInputServices[4];
  auto rf = rfEntry(4, LineupEntryKind::DVB, "old");
  editor.entryName(rf);
  EXPECT_EQ(rf, rfEntry(4, LineupEntryKind::DVB, "Télé \"1\" ✓"));
  auto ip = ipEntry(4, LineupEntryKind::ENC, "old");
  editor.entryName(ip);
  EXPECT_EQ(ip, ipEntry(4, LineupEntryKind::ENC, "ENC 12/3"));
  rf = rfEntry(4, LineupEntryKind::EMPTY, "old");
  editor.entryName(rf);
  EXPECT_EQ(rf, rfEntry(4, LineupEntryKind::EMPTY, "EMPTY SLOT"));
}

TEST_F(EntryName, IsEmptyForAMissingServiceOrAnUnknownKind) {
  putDvbService(4, "Radio", 2);
  for (const auto kind : {LineupEntryKind::DVB, LineupEntryKind::ENC, LineupEntryKind::EMPTY}) {
    auto entry = rfEntry(5, kind, "old");
    editor.entryName(entry);
    EXPECT_EQ(entry, rfEntry(5, kind, ""));
  }
  auto entry = ipEntry(4, kNoKind, "old");
  editor.entryName(entry);
  EXPECT_EQ(entry, ipEntry(4, kNoKind, ""));
}

// ---- entries

TEST_F(Entries, AddEncStartsBothLineups) {
  EXPECT_EQ(addEnc({"addenc", "5", "2"}), 1);
  EXPECT_TRUE(editor.pendingChanges);
  hub_module::LineupConfig expected;
  expected.encInputServices[1] = LineupEditor::makeEncService({"addenc", "5", "2"});
  expected.ipEntries = {ipEntry(1, LineupEntryKind::ENC, "ENC 5/2")};
  expected.rfEntries = {rfEntry(1, LineupEntryKind::ENC, "ENC 5/2")};
  EXPECT_EQ(lineup, expected);
}

TEST_F(Entries, TheSameEncoderInputTwiceGivesTwoServicesAndTwoEntries) {
  EXPECT_EQ(rfAddEnc("5", "2"), 1);
  EXPECT_EQ(rfAddEnc("5", "2"), 2);
  EXPECT_EQ(lineup.encInputServices.size(), 2U);
  EXPECT_EQ(lineup.rfEntries, (RFEntries{rfEntry(1, LineupEntryKind::ENC, "ENC 5/2"),
                                         rfEntry(2, LineupEntryKind::ENC, "ENC 5/2")}));
  EXPECT_TRUE(lineup.ipEntries.empty());
}

TEST_F(Entries, IPEntriesAreAlwaysAppended) {
  lineup.emptyInputServices[1].service.serviceType = 1;
  lineup.ipEntries = {ipEntry(1, LineupEntryKind::EMPTY, "EMPTY SLOT")};
  putDvbService(7, "Uno", 1);
  editor.addIPEntry(7, LineupEntryKind::DVB);
  EXPECT_TRUE(editor.pendingChanges);
  EXPECT_EQ(lineup.ipEntries, (IPEntries{ipEntry(1, LineupEntryKind::EMPTY, "EMPTY SLOT"),
                                         ipEntry(7, LineupEntryKind::DVB, "Uno")}));
  EXPECT_EQ(lineup.emptyInputServices.size(), 1U);
}

TEST_F(Entries, AnEncoderFillsASlotReservedForTelevision) {
  rfAddEmpty(1);
  rfAddEnc("4", "0");
  EXPECT_EQ(lineup.rfEntries, (RFEntries{rfEntry(1, LineupEntryKind::ENC, "EMPTY SLOT")}));
  EXPECT_TRUE(lineup.emptyInputServices.empty());
}

TEST_F(Entries, AnEncoderPassesOverASlotReservedForAnotherType) {
  rfAddEmpty(2);
  rfAddEnc("4", "0");
  EXPECT_EQ(lineup.rfEntries, (RFEntries{rfEntry(1, LineupEntryKind::EMPTY, "EMPTY SLOT"),
                                         rfEntry(1, LineupEntryKind::ENC, "ENC 4/0")}));
  EXPECT_EQ(lineup.emptyInputServices.size(), 1U);
}

TEST_F(Entries, ADvbServiceFillsTheSlotReservedForItsTypeAndKeepsTheRestOfIt) {
  rfAddEmpty(1);
  rfAddEmpty(2);
  rfAddEmpty(1);
  lineup.rfEntries[1].lcn = 17;
  lineup.rfEntries[1].channelInfo.frequency = 474000;
  auto expected = lineup.rfEntries;
  expected[1].serviceKey = 9;
  expected[1].serviceKind = LineupEntryKind::DVB;
  putDvbService(9, "Radio", 2);
  editor.pendingChanges = false;
  editor.addRFEntry(9, LineupEntryKind::DVB);
  EXPECT_TRUE(editor.pendingChanges);
  EXPECT_EQ(lineup.rfEntries, expected);
  EXPECT_EQ(lineup.emptyInputServices.count(1), 1U);
  EXPECT_EQ(lineup.emptyInputServices.count(2), 0U);
  EXPECT_EQ(lineup.emptyInputServices.count(3), 1U);
}

TEST_F(Entries, SlotsOfOneTypeAreFilledInListOrder) {
  rfAddEmpty(1);
  rfAddEmpty(1);
  std::swap(lineup.rfEntries[0], lineup.rfEntries[1]);
  rfAddEnc("4", "0");
  EXPECT_EQ(lineup.rfEntries[0], rfEntry(1, LineupEntryKind::ENC, "EMPTY SLOT"));
  EXPECT_EQ(lineup.rfEntries[1], rfEntry(1, LineupEntryKind::EMPTY, "EMPTY SLOT"));
  EXPECT_EQ(lineup.emptyInputServices.count(1), 1U);
  rfAddEnc("4", "1");
  EXPECT_EQ(lineup.rfEntries[1], rfEntry(2, LineupEntryKind::ENC, "EMPTY SLOT"));
  EXPECT_TRUE(lineup.emptyInputServices.empty());
  rfAddEnc("4", "2");
  EXPECT_EQ(lineup.rfEntries[2], rfEntry(3, LineupEntryKind::ENC, "ENC 4/2"));
}

TEST_F(Entries, AReservationNeverFillsAReservedSlot) {
  EXPECT_EQ(rfAddEmpty(1), 1);
  EXPECT_EQ(rfAddEmpty(1), 2);
  EXPECT_EQ(lineup.rfEntries, (RFEntries{rfEntry(1, LineupEntryKind::EMPTY, "EMPTY SLOT"),
                                         rfEntry(2, LineupEntryKind::EMPTY, "EMPTY SLOT")}));
}

TEST_F(Entries, AServiceOfTypeZeroFillsASlotWhoseReservationIsMissing) {
  lineup.rfEntries = {rfEntry(8, LineupEntryKind::EMPTY, "EMPTY SLOT")};
  putDvbService(1, "Data", 0);
  editor.addRFEntry(1, LineupEntryKind::DVB);
  EXPECT_EQ(lineup.rfEntries, (RFEntries{rfEntry(1, LineupEntryKind::DVB, "EMPTY SLOT")}));
}

TEST_F(Entries, AServiceOfAReservedTypeIsAppendedIfNoEntryHoldsTheReservation) {
  editor.addEmptyService(1);
  rfAddEnc("4", "0");
  EXPECT_EQ(lineup.rfEntries, (RFEntries{rfEntry(1, LineupEntryKind::ENC, "ENC 4/0")}));
  EXPECT_EQ(lineup.emptyInputServices.size(), 1U);
}

// ---- clearing

TEST_F(ClearLineup, EmptiesTheLineupsAndTheirServicesButNoReservation) {
  addEnc({"addenc", "5", "2"});
  putDvbService(1, "Uno", 1);
  rfAddEmpty(1);
  lineup.ipConfig.port = 5000;
  editor.pendingChanges = false;
  editor.clearLineup();
  EXPECT_TRUE(editor.pendingChanges);
  hub_module::LineupConfig expected;
  expected.ipConfig.port = 5000;
  expected.emptyInputServices[1].service.serviceType = 1;
  EXPECT_EQ(lineup, expected);
}

TEST_F(ClearLineup, IsNoChangeIfThereIsNothingButReservations) {
  editor.addEmptyService(1);
  editor.pendingChanges = false;
  editor.clearLineup();
  EXPECT_FALSE(editor.pendingChanges);
  EXPECT_EQ(lineup.emptyInputServices.size(), 1U);
  editor.pendingChanges = true;
  editor.clearLineup();
  EXPECT_TRUE(editor.pendingChanges);
}

TEST_F(ClearLineup, IsAChangeIfAnyOneOfTheFourHeldSomething) {
  const auto expectAChange = [this] {
    editor.pendingChanges = false;
    editor.clearLineup();
    EXPECT_TRUE(editor.pendingChanges);
    EXPECT_EQ(editor.config, hub_module::HeadendConfig());
  };
  lineup.ipEntries.emplace_back();
  expectAChange();
  lineup.rfEntries.emplace_back();
  expectAChange();
  lineup.dvbInputServices[3];
  expectAChange();
  lineup.encInputServices[3];
  expectAChange();
}

// ---- the search for a reserved slot against the plainest one

/// What addRFEntry() does, by a walk of the whole lineup.
void addRFEntryByWalk(LineupEditor& editor, int32_t key, LineupEntryKind::type kind) {
  hub_module::LineupConfig& lineup = editor.config.lineupConfig;
  if (kind != LineupEntryKind::EMPTY) {
    const int32_t type = editor.entryServiceType(key, kind);
    for (auto& entry : lineup.rfEntries) {
      if (entry.serviceKind == LineupEntryKind::EMPTY &&
          editor.entryServiceType(entry.serviceKey, LineupEntryKind::EMPTY) == type) {
        lineup.emptyInputServices.erase(entry.serviceKey);
        entry.serviceKey = key;
        entry.serviceKind = kind;
        return;
      }
    }
  }
  auto entry = rfEntry(key, kind, "");
  editor.entryName(entry);
  lineup.rfEntries.push_back(entry);
}

TEST_F(Entries, TheSearchForAReservedSlotAgreesWithAWalkOfTheLineup) {
  std::mt19937 random(20260617);
  const auto upTo = [&random](int highest) {
    return std::uniform_int_distribution<int32_t>(0, highest)(random);
  };
  for (int round = 0; round < 2000; ++round) {
    SCOPED_TRACE(round);
    editor.config = {};
    // Few keys and types, so that entries share a reservation, or lack theirs.
    for (int i = upTo(4); i > 0; --i) {
      lineup.emptyInputServices[upTo(5)].service.serviceType = upTo(3) - 1;
    }
    for (int32_t key = 0; key <= 4; ++key) {
      putDvbService(key, "service " + std::to_string(key), upTo(3) - 1);
    }
    for (int i = upTo(8); i > 0; --i) {
      lineup.rfEntries.push_back(
          rfEntry(upTo(5), static_cast<LineupEntryKind::type>(upTo(3)), std::to_string(i)));
    }
    LineupEditor walked;
    walked.config = editor.config;
    for (int i = 0; i < 10; ++i) {
      const int32_t key = upTo(6);
      const auto kind = static_cast<LineupEntryKind::type>(upTo(3));
      editor.addRFEntry(key, kind);
      addRFEntryByWalk(walked, key, kind);
      ASSERT_EQ(editor.config, walked.config);
    }
  }
}

}  // namespace
}  // namespace lineup::test
