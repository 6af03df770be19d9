// The commands for scan settings, as an installer sees them.

#include <gtest/gtest.h>

#include <string>

#include "tests/console/editing_commands.h"
#include "tests/console/prompt_steps.h"
#include "tests/support/console_texts.h"
#include "tests/support/records.h"

namespace lineup::test {
namespace {

using namespace korvel::thrift::hub_module;

const std::string kTooFew = kPlsQuestion + kTooFewParameters + "\n";

using ScanCommands = EditingCommands;

TEST_F(ScanCommands, TypesAreSwitchedAndCommitted) {
  HeadendConfig expected;
  expected.lineupConfig.globalConfig.qamsScanEnabled = true;
  EXPECT_EQ(
      committedAfter({{"tdtscan enable dvb-t", "Scan type not supported \n", false},
                      {"tdtscan disable cofdm", "It has the same configuration: DISABLED\n", false},
                      {"tdtscan enable cofdm", kScanUpdated},
                      {"tdtscan status", scanTable(true, false)},
                      {"tdtscan enable Qams", kScanUpdated},
                      {"tdtscan disable COFDM ignored", kScanUpdated},
                      {"tdtscan status", scanTable(false, true)}}),
      expected);
}

TEST_F(ScanCommands, PlsItemsAreReadFromTheNextLineAndKeptInOrder) {
  HeadendConfig expected;
  expected.rfInputsScanConfig.__set_plsItemList({plsItem(2, 131070), plsItem(0, 12)});
  EXPECT_EQ(committedAfter({{"addpls\nquit", kTooFew, false},
                            {"addpls\n2 131070", kPlsQuestion},
                            {"addpls 1 1\n 12 quit", kPlsQuestion}}),
            expected);
}

TEST_F(ScanCommands, APlsItemIsRefusedAtTheEndOfInput) {
  const Outcome outcome = runConsole({}, "addpls");
  EXPECT_EQ(outcome.out, printedBy({{"addpls", kTooFew, false}}) + "\n");
  EXPECT_EQ(outcome.status, 0);
}

TEST_F(ScanCommands, APlsItemIsTakenFromALastLineWithoutALineFeed) {
  const Outcome outcome = runConsole({}, "addpls\n2 131070");
  EXPECT_EQ(outcome.out, printedBy({{"addpls", kPlsQuestion}}) + "\n" + kNote);
  EXPECT_EQ(outcome.status, 0);
}

TEST_F(ScanCommands, ThePlsQuestionIsOutBeforeItsLineIsTyped) {
  ProgramProcess console(Start{});
  console.readUntil("> ");
  console.send("addpls\n");
  EXPECT_EQ(console.readUntil("131070 \n"), kPlsQuestion);
  console.send("1 5\n");
  EXPECT_EQ(console.readUntil("> "), kPending);
}

TEST_F(ScanCommands, RmplsEmptiesTheListAndIsAChangeEachTime) {
  HeadendConfig expected;
  expected.rfInputsScanConfig.__set_plsItemList({});
  const HeadendConfig committed = committedAfter({{"rmpls", "", false},
                                                  {"addpls\n1 1", kPlsQuestion},
                                                  {"rmpls"},
                                                  {"commit", "", false},
                                                  {"rmpls 1"}});
  EXPECT_EQ(committed, expected);
  EXPECT_TRUE(committed.rfInputsScanConfig.__isset.plsItemList);
}

}  // namespace
}  // namespace lineup::test
