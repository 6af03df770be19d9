#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "lineup/scan_types.h"
#include "model/lineup_editor.h"
#include "terminal/line_input.h"
#include "tests/support/console_texts.h"
#include "tests/support/expect_refused.h"
#include "tests/support/records.h"
#include "tests/support/streams.h"

namespace lineup::test {
namespace {

using PlsItems = std::vector<hub_module::PLSItem>;

// ---- terrestrial scan types

TEST(ShowTdtScan, PutsAMarkUnderEachType) {
  LineupEditor editor;
  auto& global = editor.config.lineupConfig.globalConfig;
  for (const bool cofdm : {false, true}) {
    for (const bool qams : {false, true}) {
      global.cofdmScanEnabled = cofdm;
      global.qamsScanEnabled = qams;
      EXPECT_EQ(printed([&] { editor.showTdtScan(); }), scanTable(cofdm, qams));
    }
  }
  EXPECT_FALSE(editor.pendingChanges);
}

/// Runs setTdtScan() on an editor without pending changes and expects its output and the flags it
/// leaves.
void expectScan(bool cofdm, bool qams, bool enable, std::string type, const std::string& output,
                bool cofdmAfter, bool qamsAfter, bool pendingAfter) {
  SCOPED_TRACE(type);
  LineupEditor editor;
  editor.config.lineupConfig.globalConfig.cofdmScanEnabled = cofdm;
  editor.config.lineupConfig.globalConfig.qamsScanEnabled = qams;
  auto expected = editor.config;
  expected.lineupConfig.globalConfig.cofdmScanEnabled = cofdmAfter;
  expected.lineupConfig.globalConfig.qamsScanEnabled = qamsAfter;
  EXPECT_EQ(printed([&] { editor.setTdtScan(enable, type); }), output);
  EXPECT_EQ(editor.config, expected);
  EXPECT_EQ(editor.pendingChanges, pendingAfter);
}

const char* const kSameEnabled = "It has the same configuration: ENABLED\n";
const char* const kSameDisabled = "It has the same configuration: DISABLED\n";

TEST(SetTdtScan, ChangesTheFlagOfTheType) {
  expectScan(false, false, true, "COFDM", kScanUpdated, true, false, true);
  expectScan(true, true, false, "COFDM", kScanUpdated, false, true, true);
  expectScan(false, false, true, "QAMS", kScanUpdated, false, true, true);
  expectScan(true, true, false, "QAMS", kScanUpdated, true, false, true);
}

TEST(SetTdtScan, CofdmThatIsAsRequestedIsNoChange) {
  expectScan(true, false, true, "cofdm", kSameEnabled, true, false, false);
  expectScan(false, true, false, "cofdm", kSameDisabled, false, true, false);
}

TEST(SetTdtScan, QamsThatIsAsRequestedStillCountsAsAChange) {
  expectScan(false, true, true, "qams", kSameEnabled, false, true, true);
  expectScan(true, false, false, "qams", kSameDisabled, true, false, true);
}

TEST(SetTdtScan, LeavesEarlierEditsPending) {
  LineupEditor editor;
  editor.pendingChanges = true;
  std::string type = "COFDM";
  EXPECT_EQ(printed([&] { editor.setTdtScan(false, type); }), kSameDisabled);
  EXPECT_TRUE(editor.pendingChanges);
}

TEST(SetTdtScan, TakesTheTypeInAnyCaseAndUpperCasesItInPlace) {
  for (const char* typed : {"qams", "Qams", "QAMs", "QAMS"}) {
    LineupEditor editor;
    std::string type = typed;
    printed([&] { editor.setTdtScan(true, type); });
    EXPECT_EQ(type, "QAMS");
    EXPECT_TRUE(editor.config.lineupConfig.globalConfig.qamsScanEnabled);
  }
}

TEST(SetTdtScan, RefusesEveryOtherType) {
  LineupEditor editor;
  for (const char* typed :
       {"dvb-t", "", "QAM", "COFDMS", " COFDM", "qams\t", "\xC3\xA9\xFF", "ALL"}) {
    SCOPED_TRACE(typed);
    std::string type = typed;
    EXPECT_EQ(printed([&] {
                expectRefused(editor, "Scan type not supported ",
                              [&] { editor.setTdtScan(true, type); });
              }),
              "");
  }
}

TEST(SetTdtScan, LeavesBytesBeyondAsciiAsTheyAre) {
  LineupEditor editor;
  std::string type = "é\xFF\x80z";
  EXPECT_THROW(editor.setTdtScan(true, type), std::runtime_error);
  EXPECT_EQ(type, "é\xFF\x80Z");
}

// ---- PLS items

class PlsItemsTest : public testing::Test {
 protected:
  /// What is printed when `line` answers the question.
  std::string added(const std::string& line) {
    type(line + "\n");
    return printed([this] { editor.addPlsItem(); });
  }

  LineupEditor editor;
  hub_module::RFInputsScanConfig& scan = editor.config.rfInputsScanConfig;
};

using AddPlsItem = PlsItemsTest;
using ClearPlsItems = PlsItemsTest;

TEST_F(AddPlsItem, AsksForAnItemAndAppendsIt) {
  EXPECT_EQ(added("2 131070\nquit"), kPlsQuestion);
  EXPECT_TRUE(editor.pendingChanges);
  LineupEditor expected;
  expected.config.rfInputsScanConfig.__set_plsItemList({plsItem(2, 131070)});
  EXPECT_EQ(editor.config, expected.config);
  EXPECT_TRUE(scan.plsItemList[0].__isset.plsType);
  EXPECT_TRUE(scan.plsItemList[0].__isset.plsCode);
  std::string next;
  EXPECT_TRUE(readAnswer(next));
  EXPECT_EQ(next, "quit");
}

TEST_F(AddPlsItem, KeepsTheOrderOfEntry) {
  for (const char* line : {"2 3", "0 1", "1 2"}) {
    added(line);
  }
  EXPECT_EQ(scan.plsItemList, (PlsItems{plsItem(2, 3), plsItem(0, 1), plsItem(1, 2)}));
}

TEST_F(AddPlsItem, StoresNumbersUnchecked) {
  const struct {
    const char* line;
    hub_module::PLSItem item;
  } cases[] = {
      {"x y", plsItem(0, 0)},
      {"7 -5", plsItem(7, -5)},
      {"1x 5.9 33", plsItem(1, 5)},
      {" 5", plsItem(0, 5)},
      {"1  5", plsItem(1, 0)},
      {"1 5\r", plsItem(1, 5)},
      {"-3 2147483647", plsItem(-3, 2147483647)},
      {"-9999999999 9999999999", plsItem(-2147483647 - 1, 2147483647)},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.line);
    scan.plsItemList.clear();
    EXPECT_EQ(added(each.line), kPlsQuestion);
    EXPECT_EQ(scan.plsItemList, PlsItems{each.item});
  }
}

TEST_F(AddPlsItem, RefusesALineOfFewerThanTwoWords) {
  for (const char* line : {"1", "", " ", "1 ", "1\t5"}) {
    SCOPED_TRACE(line);
    type(std::string(line) + "\n");
    EXPECT_EQ(
        printed([&] { expectRefused(editor, kTooFewParameters, [&] { editor.addPlsItem(); }); }),
        kPlsQuestion);
    EXPECT_FALSE(scan.__isset.plsItemList);
  }
}

TEST_F(AddPlsItem, AppendsToAListThatIsSetButEmpty) {
  scan.__set_plsItemList({});
  added("1 9");
  EXPECT_EQ(scan.plsItemList, PlsItems{plsItem(1, 9)});
}

TEST_F(AddPlsItem, ReplacesWhatAListThatIsNotSetHolds) {
  scan.plsItemList = {plsItem(2, 2)};
  added("1 9");
  EXPECT_EQ(scan.plsItemList, PlsItems{plsItem(1, 9)});
}

TEST_F(ClearPlsItems, DoesNothingIfTheListWasNeverSet) {
  EXPECT_EQ(printed([&] { editor.clearPlsItems(); }), "");
  EXPECT_FALSE(editor.pendingChanges);
  EXPECT_FALSE(scan.__isset.plsItemList);
}

TEST_F(ClearPlsItems, RemovesEveryItemAndIsAChangeEachTime) {
  scan.__set_plsItemList({plsItem(2, 3), plsItem(0, 1), plsItem(1, 2)});
  LineupEditor expected;
  expected.config.rfInputsScanConfig.__set_plsItemList({});
  for (int i = 0; i < 2; ++i) {
    editor.pendingChanges = false;
    EXPECT_EQ(printed([&] { editor.clearPlsItems(); }), "");
    EXPECT_TRUE(editor.pendingChanges);
    EXPECT_EQ(editor.config, expected.config);
    EXPECT_TRUE(scan.__isset.plsItemList);
  }
}

}  // namespace
}  // namespace lineup::test
