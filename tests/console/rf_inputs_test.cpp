// The command "rfinput", as an installer and the controller see it.

#include "tests/support/rf_inputs.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <string>
#include <vector>

#include "tests/console/prompt_steps.h"
#include "tests/support/fake_controller.h"

namespace lineup::test {
namespace {

using namespace korvel::thrift;
using namespace korvel::thrift::hub_module;
using general::RFInputId;

constexpr char kEnd[] =
    "terminate called after throwing an instance of 'std::out_of_range'\n  what():  map::at\n";

/// A controller with ten inputs, TDT1 alone switched on.
class RFInputCommands : public ::testing::Test {
 protected:
  RFInputCommands() {
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    controller.setStatus(status);
  }

  /// Expects that `line`, typed after `before`, ends the program by the failed look-up, with all
  /// earlier output arrived and `printed` by the line itself.
  static void expectAbort(const std::vector<Step>& before, const std::string& line,
                          const std::string& printed) {
    const Outcome outcome = runConsole({}, typed(before) + line + "\nhelp\n");
    EXPECT_EQ(outcome.out, printedBy(before) + printed);
    EXPECT_EQ(outcome.err, kEnd);
    EXPECT_EQ(outcome.signal, SIGABRT);
  }

  FakeController controller;
  HeadendStatus status = tenInputs("+---------");
};

// ---- switching

TEST_F(RFInputCommands, LeavesTheConfigurationAndItsPendingChangesAlone) {
  HeadendConfig config;
  config.headendGlobalConfig.headendName = "Hôtel";
  controller.setConfig(config);
  expectSession({{"rfinput enable SAT8", inputTable("+--------+"), false},
                 {"rfaddempty 1"},
                 {"rfinput disable SAT8", inputTable("+---------"), true},
                 {"commit", "", false}});
  const std::vector<ReceivedCall> calls = controller.calls();
  EXPECT_EQ(calls.back().method, "setHeadendConfig");
  EXPECT_EQ(calls.back().config.lineupConfig.rfEntries.size(), 1U);
  EXPECT_EQ(calls.back().config.headendGlobalConfig, config.headendGlobalConfig);
}

// ---- an input that the status lacks ends the program

TEST_F(RFInputCommands, StopsAtASatelliteInputThatTheStatusLacks) {
  status.satRFInputs.erase(RFInputId::SAT5);
  controller.setStatus(status);
  const std::string nine =
      "\n\n   TDT1   TDT2   SAT1   SAT2   SAT3   SAT4   SAT6   SAT7   SAT8   \n"
      "    ✓      ✕      ✕      ✕      ✕      ✕      ✕      ✕      ✕      \n\n\n";
  expectAbort({{"tdtscan status", scanTable(false, false), false},
               {"rfinput status", nine, false},
               {"rfinput enable SAT9", kBadInput, false}},
              "rfinput enable SATALL", "");
}

// ---- no controller

TEST(RFInputCommandsWithoutController, SwitchingEndsTheProgramAfterItsErrorLine) {
  const Outcome outcome = runConsole({}, "rfinput enable SAT1\n");
  EXPECT_EQ(outcome.out, kFetchFailed + printedBy({}) + kStatusFailed);
  EXPECT_EQ(outcome.err, kEnd);
  EXPECT_EQ(outcome.signal, SIGABRT);
}

}  // namespace
}  // namespace lineup::test
