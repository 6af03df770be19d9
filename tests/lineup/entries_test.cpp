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

hub_module::LineupConfig& lineupOf(LineupEditor& editor) {
  return editor.config.lineupConfig;
}

/// The commands, as the dispatcher composes them of the operations.
int32_t addEnc(LineupEditor& editor, const Words& words) {
  const int32_t key = editor.addEncService(LineupEditor::makeEncService(words));
  editor.addIPEntry(key, LineupEntryKind::ENC);
  editor.addRFEntry(key, LineupEntryKind::ENC);
  return key;
}

int32_t rfAddEnc(LineupEditor& editor, const Words& words) {
  const int32_t key = editor.addEncService(LineupEditor::makeEncService(words));
  editor.addRFEntry(key, LineupEntryKind::ENC);
  return key;
}

int32_t rfAddEmpty(LineupEditor& editor, int32_t serviceType) {
  const int32_t key = editor.addEmptyService(serviceType);
  editor.addRFEntry(key, LineupEntryKind::EMPTY);
  return key;
}

void putDvbService(LineupEditor& editor, int32_t key, const std::string& name, int32_t type) {
  auto& service = lineupOf(editor).dvbInputServices[key].service;
  service.name = name;
  service.serviceType = type;
}

// ---- addresses of encoder inputs

TEST(EncAddress, AcceptsTheFirstAndTheLastInput) {
  const auto first = LineupEditor::parseEncAddress({"addenc", "3", "0"});
  EXPECT_EQ(first.slot, 3);
  EXPECT_EQ(first.port, 0);
  const auto last = LineupEditor::parseEncAddress({"addenc", "12", "3"});
  EXPECT_EQ(last.slot, 12);
  EXPECT_EQ(last.port, 3);
}

TEST(EncAddress, IgnoresTrailingJunkAndFurtherWords) {
  const auto address = LineupEditor::parseEncAddress({"addenc", "5x", "2.7", "9"});
  EXPECT_EQ(address.slot, 5);
  EXPECT_EQ(address.port, 2);
}

TEST(EncAddress, ReadsAHdmiIdThatIsNoNumberAsZero) {
  const auto address = LineupEditor::parseEncAddress({"addenc", "5", "hdmi"});
  EXPECT_EQ(address.slot, 5);
  EXPECT_EQ(address.port, 0);
}

TEST(EncAddress, RefusesTooFewWordsBeforeItLooksAtTheNumbers) {
  LineupEditor editor;
  const std::string message = "Please give a SLOT_ID and HDMI_ID";
  expectRefused(editor, message, [&] { addEnc(editor, {}); });
  expectRefused(editor, message, [&] { addEnc(editor, {"addenc"}); });
  expectRefused(editor, message, [&] { addEnc(editor, {"addenc", "5"}); });
  expectRefused(editor, message, [&] { addEnc(editor, {"addenc", "99"}); });
}

TEST(EncAddress, RefusesASlotOutsideThreeToTwelveBeforeItLooksAtTheInput) {
  LineupEditor editor;
  for (const char* slot : {"2", "13", "0", "-5", "", "five", "4294967299", "-4294967293",
                           "99999999999999999999", "-99999999999999999999"}) {
    SCOPED_TRACE(slot);
    expectRefused(editor, "Invalid module id, please enter an integer 3-12", [&] {
      addEnc(editor, {"addenc", slot, "0"});
    });
    expectRefused(editor, "Invalid module id, please enter an integer 3-12", [&] {
      addEnc(editor, {"addenc", slot, "9"});
    });
  }
}

TEST(EncAddress, RefusesAnInputOutsideZeroToThree) {
  LineupEditor editor;
  for (const char* input : {"4", "-1", "100", "4294967296", "99999999999999999999"}) {
    SCOPED_TRACE(input);
    expectRefused(editor, "Invalid HDMI id, please enter an integer 0-3", [&] {
      addEnc(editor, {"addenc", "5", input});
    });
  }
}

TEST(EncAddress, RefusalLeavesEarlierEditsPending) {
  LineupEditor editor;
  addEnc(editor, {"addenc", "5", "2"});
  expectRefused(editor, "Invalid HDMI id, please enter an integer 0-3", [&] {
    addEnc(editor, {"addenc", "5", "4"});
  });
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

TEST(ServiceKeys, DVBServicesGetTheSmallestFreeKey) {
  LineupEditor editor;
  EXPECT_EQ(editor.storeDVBService({}), 1);
  EXPECT_EQ(editor.storeDVBService({}), 2);
  lineupOf(editor).dvbInputServices[4].service.name = "four";
  EXPECT_EQ(editor.storeDVBService({}), 3);
  EXPECT_EQ(editor.storeDVBService({}), 5);
  EXPECT_EQ(lineupOf(editor).dvbInputServices.at(4).service.name, "four");
}

TEST(ServiceKeys, ADVBServiceIsStoredAsItIsBesideTheOthers) {
  LineupEditor editor;
  lineupOf(editor).encInputServices[1].label = "encoder";
  lineupOf(editor).emptyInputServices[1].service.serviceType = 2;
  hub_module::DVBInputServiceConfig service;
  service.service.name = "Channel One";
  service.service.__set_ipMuxUUID("uuid");
  EXPECT_EQ(editor.storeDVBService(service), 1);
  EXPECT_TRUE(editor.pendingChanges);
  EXPECT_EQ(lineupOf(editor).dvbInputServices.at(1), service);
  EXPECT_EQ(lineupOf(editor).encInputServices.size(), 1U);
  EXPECT_EQ(lineupOf(editor).emptyInputServices.size(), 1U);
}

TEST(ServiceKeys, EncoderServicesGetTheSmallestFreeKey) {
  LineupEditor editor;
  const auto enc = LineupEditor::makeEncService({"addenc", "5", "2"});
  EXPECT_EQ(editor.addEncService(enc), 1);
  EXPECT_TRUE(editor.pendingChanges);
  EXPECT_EQ(editor.addEncService(enc), 2);
  EXPECT_EQ(editor.addEncService(enc), 3);
  lineupOf(editor).encInputServices.erase(2);
  const auto other = LineupEditor::makeEncService({"addenc", "7", "1"});
  EXPECT_EQ(editor.addEncService(other), 2);
  EXPECT_EQ(editor.addEncService(other), 4);
  EXPECT_EQ(lineupOf(editor).encInputServices.at(1), enc);
  EXPECT_EQ(lineupOf(editor).encInputServices.at(2), other);
}

TEST(ServiceKeys, ReservationsGetTheSmallestFreeKeyOfTheirOwnMap) {
  LineupEditor editor;
  lineupOf(editor).encInputServices[1];
  lineupOf(editor).dvbInputServices[1];
  EXPECT_EQ(editor.addEmptyService(25), 1);
  EXPECT_TRUE(editor.pendingChanges);
  EXPECT_EQ(editor.addEmptyService(1), 2);
  lineupOf(editor).emptyInputServices.erase(1);
  EXPECT_EQ(editor.addEmptyService(25), 1);
  hub_module::EmptyInputServiceConfig expected;
  expected.service.serviceType = 25;
  EXPECT_EQ(lineupOf(editor).emptyInputServices.at(1), expected);
}

TEST(EntryServiceType, IsTheServicesOwnOrOneForEveryEncoder) {
  LineupEditor editor;
  putDvbService(editor, 4, "Radio", 2);
  lineupOf(editor).emptyInputServices[4].service.serviceType = 25;
  EXPECT_EQ(editor.entryServiceType(4, LineupEntryKind::DVB), 2);
  EXPECT_EQ(editor.entryServiceType(4, LineupEntryKind::EMPTY), 25);
  EXPECT_EQ(editor.entryServiceType(4, LineupEntryKind::ENC), 1);
}

TEST(EntryServiceType, IsZeroForAMissingServiceOrAnUnknownKind) {
  LineupEditor editor;
  putDvbService(editor, 4, "Radio", 2);
  EXPECT_EQ(editor.entryServiceType(5, LineupEntryKind::DVB), 0);
  EXPECT_EQ(editor.entryServiceType(5, LineupEntryKind::EMPTY), 0);
  EXPECT_EQ(editor.entryServiceType(4, kNoKind), 0);
  EXPECT_FALSE(editor.pendingChanges);
}

TEST(EntryName, IsTheServicesName) {
  LineupEditor editor;
  putDvbService(editor, 4, "Télé \"1\" ✓", 1);
  lineupOf(editor).encInputServices[4] = LineupEditor::makeEncService({"addenc", "12", "3"});
  lineupOf(editor).emptyInputServices[4];
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

TEST(EntryName, IsEmptyForAMissingServiceOrAnUnknownKind) {
  LineupEditor editor;
  putDvbService(editor, 4, "Radio", 2);
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

TEST(Entries, AddEncStartsBothLineups) {
  LineupEditor editor;
  EXPECT_EQ(addEnc(editor, {"addenc", "5", "2"}), 1);
  EXPECT_TRUE(editor.pendingChanges);
  LineupEditor expected;
  lineupOf(expected).encInputServices[1] = LineupEditor::makeEncService({"addenc", "5", "2"});
  lineupOf(expected).ipEntries = {ipEntry(1, LineupEntryKind::ENC, "ENC 5/2")};
  lineupOf(expected).rfEntries = {rfEntry(1, LineupEntryKind::ENC, "ENC 5/2")};
  EXPECT_EQ(editor.config, expected.config);
}

TEST(Entries, TheSameEncoderInputTwiceGivesTwoServicesAndTwoEntries) {
  LineupEditor editor;
  EXPECT_EQ(rfAddEnc(editor, {"rfaddenc", "5", "2"}), 1);
  EXPECT_EQ(rfAddEnc(editor, {"rfaddenc", "5", "2"}), 2);
  EXPECT_EQ(lineupOf(editor).encInputServices.size(), 2U);
  const std::vector<hub_module::LineupRFEntryConfig> expected = {
      rfEntry(1, LineupEntryKind::ENC, "ENC 5/2"), rfEntry(2, LineupEntryKind::ENC, "ENC 5/2")};
  EXPECT_EQ(lineupOf(editor).rfEntries, expected);
  EXPECT_TRUE(lineupOf(editor).ipEntries.empty());
}

TEST(Entries, IPEntriesAreAlwaysAppended) {
  LineupEditor editor;
  lineupOf(editor).emptyInputServices[1].service.serviceType = 1;
  lineupOf(editor).ipEntries = {ipEntry(1, LineupEntryKind::EMPTY, "EMPTY SLOT")};
  putDvbService(editor, 7, "Uno", 1);
  editor.addIPEntry(7, LineupEntryKind::DVB);
  EXPECT_TRUE(editor.pendingChanges);
  const std::vector<hub_module::LineupIPEntryConfig> expected = {
      ipEntry(1, LineupEntryKind::EMPTY, "EMPTY SLOT"), ipEntry(7, LineupEntryKind::DVB, "Uno")};
  EXPECT_EQ(lineupOf(editor).ipEntries, expected);
  EXPECT_EQ(lineupOf(editor).emptyInputServices.size(), 1U);
}

TEST(Entries, AnEncoderFillsASlotReservedForTelevision) {
  LineupEditor editor;
  rfAddEmpty(editor, 1);
  rfAddEnc(editor, {"rfaddenc", "4", "0"});
  const std::vector<hub_module::LineupRFEntryConfig> expected = {
      rfEntry(1, LineupEntryKind::ENC, "EMPTY SLOT")};
  EXPECT_EQ(lineupOf(editor).rfEntries, expected);
  EXPECT_TRUE(lineupOf(editor).emptyInputServices.empty());
}

TEST(Entries, AnEncoderPassesOverASlotReservedForAnotherType) {
  LineupEditor editor;
  rfAddEmpty(editor, 2);
  rfAddEnc(editor, {"rfaddenc", "4", "0"});
  const std::vector<hub_module::LineupRFEntryConfig> expected = {
      rfEntry(1, LineupEntryKind::EMPTY, "EMPTY SLOT"),
      rfEntry(1, LineupEntryKind::ENC, "ENC 4/0")};
  EXPECT_EQ(lineupOf(editor).rfEntries, expected);
  EXPECT_EQ(lineupOf(editor).emptyInputServices.size(), 1U);
}

TEST(Entries, ADvbServiceFillsTheSlotReservedForItsTypeAndKeepsTheRestOfIt) {
  LineupEditor editor;
  rfAddEmpty(editor, 1);
  rfAddEmpty(editor, 2);
  rfAddEmpty(editor, 1);
  lineupOf(editor).rfEntries[1].lcn = 17;
  lineupOf(editor).rfEntries[1].channelInfo.frequency = 474000;
  auto expected = lineupOf(editor).rfEntries;
  expected[1].serviceKey = 9;
  expected[1].serviceKind = LineupEntryKind::DVB;
  putDvbService(editor, 9, "Radio", 2);
  editor.pendingChanges = false;
  editor.addRFEntry(9, LineupEntryKind::DVB);
  EXPECT_TRUE(editor.pendingChanges);
  EXPECT_EQ(lineupOf(editor).rfEntries, expected);
  EXPECT_EQ(lineupOf(editor).emptyInputServices.count(1), 1U);
  EXPECT_EQ(lineupOf(editor).emptyInputServices.count(2), 0U);
  EXPECT_EQ(lineupOf(editor).emptyInputServices.count(3), 1U);
}

TEST(Entries, SlotsOfOneTypeAreFilledInListOrder) {
  LineupEditor editor;
  rfAddEmpty(editor, 1);
  rfAddEmpty(editor, 1);
  std::swap(lineupOf(editor).rfEntries[0], lineupOf(editor).rfEntries[1]);
  rfAddEnc(editor, {"rfaddenc", "4", "0"});
  EXPECT_EQ(lineupOf(editor).rfEntries[0], rfEntry(1, LineupEntryKind::ENC, "EMPTY SLOT"));
  EXPECT_EQ(lineupOf(editor).rfEntries[1], rfEntry(1, LineupEntryKind::EMPTY, "EMPTY SLOT"));
  EXPECT_EQ(lineupOf(editor).emptyInputServices.count(1), 1U);
  rfAddEnc(editor, {"rfaddenc", "4", "1"});
  EXPECT_EQ(lineupOf(editor).rfEntries[1], rfEntry(2, LineupEntryKind::ENC, "EMPTY SLOT"));
  EXPECT_TRUE(lineupOf(editor).emptyInputServices.empty());
  rfAddEnc(editor, {"rfaddenc", "4", "2"});
  EXPECT_EQ(lineupOf(editor).rfEntries[2], rfEntry(3, LineupEntryKind::ENC, "ENC 4/2"));
}

TEST(Entries, AReservationNeverFillsAReservedSlot) {
  LineupEditor editor;
  EXPECT_EQ(rfAddEmpty(editor, 1), 1);
  EXPECT_EQ(rfAddEmpty(editor, 1), 2);
  const std::vector<hub_module::LineupRFEntryConfig> expected = {
      rfEntry(1, LineupEntryKind::EMPTY, "EMPTY SLOT"),
      rfEntry(2, LineupEntryKind::EMPTY, "EMPTY SLOT")};
  EXPECT_EQ(lineupOf(editor).rfEntries, expected);
}

TEST(Entries, AServiceOfTypeZeroFillsASlotWhoseReservationIsMissing) {
  LineupEditor editor;
  lineupOf(editor).rfEntries = {rfEntry(8, LineupEntryKind::EMPTY, "EMPTY SLOT")};
  putDvbService(editor, 1, "Data", 0);
  editor.addRFEntry(1, LineupEntryKind::DVB);
  const std::vector<hub_module::LineupRFEntryConfig> expected = {
      rfEntry(1, LineupEntryKind::DVB, "EMPTY SLOT")};
  EXPECT_EQ(lineupOf(editor).rfEntries, expected);
}

TEST(Entries, AServiceOfAReservedTypeIsAppendedIfNoEntryHoldsTheReservation) {
  LineupEditor editor;
  editor.addEmptyService(1);
  rfAddEnc(editor, {"rfaddenc", "4", "0"});
  const std::vector<hub_module::LineupRFEntryConfig> expected = {
      rfEntry(1, LineupEntryKind::ENC, "ENC 4/0")};
  EXPECT_EQ(lineupOf(editor).rfEntries, expected);
  EXPECT_EQ(lineupOf(editor).emptyInputServices.size(), 1U);
}

// ---- clearing

TEST(ClearLineup, EmptiesTheLineupsAndTheirServicesButNoReservation) {
  LineupEditor editor;
  addEnc(editor, {"addenc", "5", "2"});
  putDvbService(editor, 1, "Uno", 1);
  rfAddEmpty(editor, 1);
  editor.config.lineupConfig.ipConfig.port = 5000;
  editor.pendingChanges = false;
  editor.clearLineup();
  EXPECT_TRUE(editor.pendingChanges);
  LineupEditor expected;
  expected.config.lineupConfig.ipConfig.port = 5000;
  lineupOf(expected).emptyInputServices[1].service.serviceType = 1;
  EXPECT_EQ(editor.config, expected.config);
}

TEST(ClearLineup, IsNoChangeIfThereIsNothingButReservations) {
  LineupEditor editor;
  editor.addEmptyService(1);
  editor.pendingChanges = false;
  editor.clearLineup();
  EXPECT_FALSE(editor.pendingChanges);
  EXPECT_EQ(lineupOf(editor).emptyInputServices.size(), 1U);
  editor.pendingChanges = true;
  editor.clearLineup();
  EXPECT_TRUE(editor.pendingChanges);
}

TEST(ClearLineup, IsAChangeIfAnyOneOfTheFourHeldSomething) {
  LineupEditor entriesOfIP;
  entriesOfIP.config.lineupConfig.ipEntries.emplace_back();
  LineupEditor entriesOfRF;
  entriesOfRF.config.lineupConfig.rfEntries.emplace_back();
  LineupEditor dvb;
  dvb.config.lineupConfig.dvbInputServices[3];
  LineupEditor enc;
  enc.config.lineupConfig.encInputServices[3];
  for (LineupEditor* editor : {&entriesOfIP, &entriesOfRF, &dvb, &enc}) {
    editor->clearLineup();
    EXPECT_TRUE(editor->pendingChanges);
    EXPECT_EQ(editor->config, hub_module::HeadendConfig());
  }
}

// ---- the search for a reserved slot against the plainest one

/// What addRFEntry() does, by a walk of the whole lineup.
void addRFEntryByWalk(LineupEditor& editor, int32_t key, LineupEntryKind::type kind) {
  if (kind != LineupEntryKind::EMPTY) {
    const int32_t type = editor.entryServiceType(key, kind);
    for (auto& entry : lineupOf(editor).rfEntries) {
      if (entry.serviceKind == LineupEntryKind::EMPTY &&
          editor.entryServiceType(entry.serviceKey, LineupEntryKind::EMPTY) == type) {
        lineupOf(editor).emptyInputServices.erase(entry.serviceKey);
        entry.serviceKey = key;
        entry.serviceKind = kind;
        return;
      }
    }
  }
  auto entry = rfEntry(key, kind, "");
  editor.entryName(entry);
  lineupOf(editor).rfEntries.push_back(entry);
}

TEST(Entries, TheSearchForAReservedSlotAgreesWithAWalkOfTheLineup) {
  std::mt19937 random(20260617);
  const auto upTo = [&random](int highest) {
    return std::uniform_int_distribution<int32_t>(0, highest)(random);
  };
  for (int round = 0; round < 2000; ++round) {
    SCOPED_TRACE(round);
    LineupEditor editor;
    // Few keys and types, so that entries share a reservation, or lack theirs.
    for (int i = upTo(4); i > 0; --i) {
      lineupOf(editor).emptyInputServices[upTo(5)].service.serviceType = upTo(3) - 1;
    }
    for (int32_t key = 0; key <= 4; ++key) {
      putDvbService(editor, key, "service " + std::to_string(key), upTo(3) - 1);
    }
    for (int i = upTo(8); i > 0; --i) {
      lineupOf(editor).rfEntries.push_back(
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
