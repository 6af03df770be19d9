// The commands for scan settings, as an installer sees them.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/console/session.h"
#include "tests/support/fake_controller.h"

namespace lineup::test {
namespace {

using namespace korvel::thrift::hub_module;

constexpr char kUpdated[] = "Updated scan type. Please remember to commit the changes.\n";
constexpr char kSameEnabled[] = "It has the same configuration: ENABLED\n";
constexpr char kSameDisabled[] = "It has the same configuration: DISABLED\n";
constexpr char kNotSupported[] = "Scan type not supported \n";
constexpr char kNoSubcommand[] = "If you don't give me a parameter, there is little I can do\n";
constexpr char kWhichScan[] = "Please select the type of scan [COFDM|QAMS]\n";
constexpr char kPlsQuestion[] =
    "Enter the information of the non-standard PLS item:\n"
    " plsType                      plsCode\n"
    " (0 Auto | 1 Gold | 2 Root)   131070 \n";
const std::string kTooFew = std::string(kPlsQuestion) + "Please enter all the parameters\n";

std::string scanTable(const char* cofdm, const char* qams) {
  return std::string("\n\n    DVB-T   DVB-C   \n      ") + cofdm + "       " + qams + "\n\n\n";
}

PLSItem plsItem(int32_t type, int32_t code) {
  PLSItem item;
  item.plsType = type;
  item.plsCode = code;
  return item;
}

class ScanCommands : public ::testing::Test {
 protected:
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
  HeadendConfig config;
};

TEST_F(ScanCommands, StatusMarksTheTypesThatAreScannedFor) {
  config.lineupConfig.globalConfig.cofdmScanEnabled = true;
  EXPECT_EQ(committedAfter({{"tdtscan status", scanTable("✓", "✕"), false}}), config);
}

TEST_F(ScanCommands, TypesAreSwitchedAndCommitted) {
  HeadendConfig expected;
  expected.lineupConfig.globalConfig.qamsScanEnabled = true;
  EXPECT_EQ(committedAfter({{"tdtscan enable cofdm", kUpdated},
                            {"tdtscan status", scanTable("✓", "✕")},
                            {"tdtscan enable Qams", kUpdated},
                            {"tdtscan status", scanTable("✓", "✓")},
                            {"tdtscan disable COFDM ignored", kUpdated},
                            {"tdtscan status", scanTable("✕", "✓")}}),
            expected);
}

TEST_F(ScanCommands, CofdmThatIsAsRequestedIsNoChange) {
  config.lineupConfig.globalConfig.cofdmScanEnabled = true;
  EXPECT_EQ(committedAfter({{"tdtscan enable cofdm", kSameEnabled, false},
                            {"tdtscan disable cofdm", kUpdated},
                            {"tdtscan disable cofdm", kSameDisabled}}),
            HeadendConfig());
}

TEST_F(ScanCommands, QamsThatIsAsRequestedIsMarkedAsAChange) {
  EXPECT_EQ(committedAfter({{"tdtscan disable qams", kSameDisabled}}), config);
}

TEST_F(ScanCommands, UnknownTypesAndSubcommandsAreRefused) {
  EXPECT_EQ(committedAfter({{"tdtscan", kNoSubcommand, false},
                            {"tdtscan enable", kWhichScan, false},
                            {"tdtscan disable", kWhichScan, false},
                            {"tdtscan enable ", kWhichScan, false},
                            {"tdtscan enable dvb-t", kNotSupported, false},
                            {"tdtscan disable é", kNotSupported, false},
                            {"tdtscan enable  qams", kNotSupported, false},
                            {"tdtscan Status", "unknown subcommand \n", false},
                            {"tdtscan ", kNoSubcommand, false},
                            {"tdtscan  ", "unknown subcommand \n", false}}),
            config);
}

TEST_F(ScanCommands, PlsItemsAreReadFromTheNextLineAndKeptInOrder) {
  HeadendConfig expected;
  expected.rfInputsScanConfig.__set_plsItemList(
      {plsItem(2, 131070), plsItem(0, 0), plsItem(7, -5), plsItem(0, 12)});
  EXPECT_EQ(committedAfter({{"addpls\n2 131070", kPlsQuestion},
                            {"addpls\nx y", kPlsQuestion},
                            {"addpls 1 1\n7z -5 quit", kPlsQuestion},
                            {"addpls\n 12", kPlsQuestion}}),
            expected);
}

TEST_F(ScanCommands, AnIncompletePlsItemIsRefused) {
  EXPECT_EQ(committedAfter({{"addpls\n1", kTooFew, false},
                            {"addpls\n", kTooFew, false},
                            {"addpls\nquit", kTooFew, false},
                            {"addpls\n1\t5", kTooFew, false}}),
            config);
}

TEST_F(ScanCommands, APlsItemIsRefusedAtTheEndOfInput) {
  const Outcome outcome = runConsole({}, "addpls");
  EXPECT_EQ(outcome.out, printedBy({{"addpls", kTooFew, false}}) + "\n");
  EXPECT_EQ(outcome.status, 0);
}

TEST_F(ScanCommands, APlsItemIsTakenFromALastLineWithoutALineFeed) {
  const Outcome outcome = runConsole({}, "addpls\n2 131070");
  EXPECT_EQ(outcome.out,
            printedBy({{"addpls", kPlsQuestion}}) + "\nNOTE: Changes have not been committed\n");
  EXPECT_EQ(outcome.status, 0);
}

TEST_F(ScanCommands, ThePlsQuestionIsOutBeforeItsLineIsTyped) {
  ConsoleProcess console(Start{});
  console.readUntil("> ");
  console.send("addpls\n");
  EXPECT_EQ(console.readUntil("131070 \n"), kPlsQuestion);
  console.send("1 5\n");
  EXPECT_EQ(console.readUntil("> "), promptFor(true));
}

TEST_F(ScanCommands, RmplsEmptiesTheListAndIsAChangeEachTime) {
  HeadendConfig expected;
  expected.rfInputsScanConfig.__set_plsItemList({});
  const HeadendConfig committed = committedAfter({{"addpls\n1 1", kPlsQuestion},
                                                  {"addpls\n1 2", kPlsQuestion},
                                                  {"addpls\n1 3", kPlsQuestion},
                                                  {"rmpls"},
                                                  {"commit", "", false},
                                                  {"rmpls 1"}});
  EXPECT_EQ(committed, expected);
  EXPECT_TRUE(committed.rfInputsScanConfig.__isset.plsItemList);
}

TEST_F(ScanCommands, RmplsDoesNothingIfTheListWasNeverSet) {
  const HeadendConfig committed = committedAfter({{"rmpls", "", false}});
  EXPECT_EQ(committed, config);
  EXPECT_FALSE(committed.rfInputsScanConfig.__isset.plsItemList);
}

}  // namespace
}  // namespace lineup::test
