// The command "rfinput", as an installer and the controller see it.

#include "tests/support/rf_inputs.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <csignal>
#include <string>
#include <vector>

#include "tests/console/session.h"
#include "tests/support/fake_controller.h"

namespace lineup::test {
namespace {

using namespace korvel::thrift;
using namespace korvel::thrift::hub_module;
using general::RFInputId;
using Clock = std::chrono::steady_clock;
using Sent = std::vector<std::string>;

constexpr std::chrono::microseconds kSwitchingTime{1'250'000};

constexpr char kNoSubcommand[] = "If you don't give me a parameter, there is little I can do\n";
constexpr char kWhichInput[] =
    "Please enter RF input [TDT1, TDT2 | SAT1...SAT8 | TDTALL | SATALL]\n";
constexpr char kNoConfig[] = "ERROR: Could not get current config from ControllerTask\n";
constexpr char kTdtNotSent[] = "ERROR: Could not set TDTRFInputConfig to ControllerTask\n";
constexpr char kNoInputs[] = "\n\n   \n    \n\n\n";
constexpr char kEnd[] =
    "terminate called after throwing an instance of 'std::out_of_range'\n  what():  map::at\n";

std::string satNotSent(int id) {
  return "ERROR: Could not set SATRFInputConfig for RFInput (" + std::to_string(id) +
         ") to ControllerTask\n";
}

/// A controller with ten inputs, TDT1 alone switched on.
class RFInputCommands : public ::testing::Test {
 protected:
  RFInputCommands() {
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    controller.setStatus(status);
  }

  /// The calls after the fetch at the start.
  Sent sent() const {
    Sent calls = describe(controller.calls());
    EXPECT_EQ(calls.at(0), "getHeadendConfig");
    calls.erase(calls.begin());
    return calls;
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

// ---- the table

TEST_F(RFInputCommands, StatusShowsWhichInputsAreSwitchedOn) {
  expectSession({{"rfinput status", inputTable("+---------"), false}});
  EXPECT_EQ(sent(), Sent{"status"});
}

TEST_F(RFInputCommands, StatusShowsTheInputsHeldFromBeforeIfTheFetchFails) {
  controller.answerNext({});
  controller.answerNext({});
  Answer notReady;
  notReady.kind = Answer::kNotReady;
  controller.answerNext(notReady);
  expectSession({{"rfinput status", inputTable("+---------"), false},
                 {"rfinput status", kNoStatus + inputTable("+---------"), false}});
}

// ---- switching

TEST_F(RFInputCommands, SwitchesASatelliteInputAndShowsTheTableAfterTheWait) {
  ConsoleProcess console(Start{});
  console.readUntil("> ");
  console.send("rfinput enable sat1\n");
  controller.waitForCalls(3);
  const Clock::time_point switched = Clock::now();
  controller.waitForCalls(4);
  // The moment that the controller was seen to be asked may lag behind the asking.
  EXPECT_GE(Clock::now() - switched, kSwitchingTime - std::chrono::milliseconds(250));
  EXPECT_EQ(console.readUntil("> "), inputTable("+-+-------") + "> ");
  EXPECT_EQ(sent(), (Sent{"status", "SAT 3 103 on", "status"}));
}

TEST_F(RFInputCommands, ASwitchTakesNoLessThanTheWait) {
  const Clock::time_point start = Clock::now();
  expectSession({{"rfinput enable SAT1", inputTable("+-+-------"), false}});
  EXPECT_GE(Clock::now() - start, kSwitchingTime);
}

TEST_F(RFInputCommands, RefusesUnknownInputsAndSubcommandsAndSendsNothing) {
  expectSession({{"rfinput", kNoSubcommand, false},
                 {"rfinput enable", kWhichInput, false},
                 {"rfinput disable", kWhichInput, false},
                 {"rfinput toggle SAT1", "unknown subcommand \n", false},
                 {"rfinput Status", "unknown subcommand \n", false},
                 {"rfinput enable SAT9", kBadInput, false},
                 {"rfinput disable TDT", kBadInput, false},
                 {"rfinput enable ALL", kBadInput, false},
                 {"rfinput enable  SAT1", kBadInput, false},
                 {"rfinput enable SAT1\r", kBadInput, false}});
  EXPECT_EQ(sent(), Sent{});
}

TEST_F(RFInputCommands, LeavesTheConfigurationAndItsPendingChangesAlone) {
  HeadendConfig config;
  config.headendGlobalConfig.headendName = "Hôtel";
  controller.setConfig(config);
  expectSession({{"rfinput status", inputTable("+---------"), false},
                 {"rfinput enable SAT8", inputTable("+--------+"), false},
                 {"commit", "", false},
                 {"rfaddempty 1"},
                 {"rfinput disable SAT8", inputTable("+---------"), true},
                 {"commit", "", false}});
  const std::vector<ReceivedCall> calls = controller.calls();
  EXPECT_EQ(calls.at(5).method, "setHeadendConfig");
  EXPECT_EQ(calls.at(5).config, config);
  EXPECT_EQ(calls.back().method, "setHeadendConfig");
  EXPECT_EQ(calls.back().config.lineupConfig.rfEntries.size(), 1U);
  EXPECT_EQ(calls.back().config.headendGlobalConfig, config.headendGlobalConfig);
}

TEST_F(RFInputCommands, GoesOnAfterACallThatFails) {
  controller.answerNext({});  // the configuration
  controller.answerNext({});  // the status
  Answer notReady;
  notReady.kind = Answer::kNotReady;
  controller.answerNext(notReady);
  controller.answerNext({});
  controller.answerNext(notReady);
  expectSession(
      {{"rfinput enable SATALL", satNotSent(3) + satNotSent(5) + inputTable("+--+-+++++"), false}});
  EXPECT_EQ(sent().size(), 10U);
}

TEST_F(RFInputCommands, SaysThatTheTerrestrialPairWasNotSent) {
  controller.answerNext({});
  controller.answerNext({});
  Answer notReady;
  notReady.kind = Answer::kNotReady;
  controller.answerNext(notReady);
  expectSession({{"rfinput disable TDT1", kTdtNotSent + inputTable("+---------"), false}});
}

// ---- an input that the status lacks ends the program

TEST_F(RFInputCommands, StopsAtASatelliteInputThatTheStatusLacks) {
  status.satRFInputs.erase(RFInputId::SAT5);
  controller.setStatus(status);
  const std::string nine =
      "\n\n   TDT1   TDT2   SAT1   SAT2   SAT3   SAT4   SAT6   SAT7   SAT8   \n"
      "    ✓      ✕      ✕      ✕      ✕      ✕      ✕      ✕      ✕      \n\n\n";
  expectAbort({{"tdtscan status", "\n\n    DVB-T   DVB-C   \n      ✕       ✕\n\n\n", false},
               {"rfinput status", nine, false},
               {"rfinput enable SAT9", kBadInput, false}},
              "rfinput enable SATALL", "");
  EXPECT_EQ(sent(), (Sent{"status", "status", "SAT 3 103 on", "SAT 4 104 on", "SAT 5 105 on",
                          "SAT 6 106 on"}));
}

TEST_F(RFInputCommands, AnErrorLineArrivesBeforeTheEnd) {
  status.satRFInputs.clear();
  controller.setStatus(status);
  controller.answerNext({});
  Answer notReady;
  notReady.kind = Answer::kNotReady;
  controller.answerNext(notReady);
  expectAbort({}, "rfinput enable SAT3", kNoStatus);
  EXPECT_EQ(sent(), Sent{"status"});
}

// ---- no controller

TEST(RFInputCommandsWithoutController, StatusShowsNothing) {
  const Outcome outcome = runConsole({}, "rfinput status\n");
  EXPECT_EQ(outcome.out,
            kNoConfig + printedBy({{"", std::string(kNoStatus) + kNoInputs, false}}) + "\n");
  EXPECT_EQ(outcome.status, 0);
}

TEST(RFInputCommandsWithoutController, SwitchingEndsTheProgramAfterItsErrorLine) {
  for (const char* name : {"SAT1", "TDT1", "SATALL", "TDTALL"}) {
    SCOPED_TRACE(name);
    const Outcome outcome = runConsole({}, std::string("rfinput enable ") + name + "\n");
    EXPECT_EQ(outcome.out, kNoConfig + printedBy({}) + kNoStatus);
    EXPECT_EQ(outcome.err, kEnd);
    EXPECT_EQ(outcome.signal, SIGABRT);
  }
}

TEST(RFInputCommandsWithoutController, SwitchingUsesTheStatusHeldFromBefore) {
  ConsoleProcess console(Start{});
  {
    FakeController late;
    HeadendStatus status;
    status.satRFInputs[RFInputId::SAT3].config.enabled = true;
    late.setStatus(status);
    console.readUntil("> ");
    console.send("rfinput status\n");
    console.readUntil("> ");
  }
  console.send("rfinput disable SAT3\n");
  EXPECT_EQ(console.readUntil("> "),
            kNoStatus + satNotSent(5) + kNoStatus + "\n\n   SAT3   \n    ✓      \n\n\n> ");
}

}  // namespace
}  // namespace lineup::test
