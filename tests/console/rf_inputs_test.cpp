// The command "rfinput", as an installer and the controller see it.

#include "tests/console/rf_inputs.h"

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
constexpr char kBadInput[] = "Error RF Input value. \n";
constexpr char kNoConfig[] = "ERROR: Could not get current config from ControllerTask\n";
constexpr char kNoStatus[] = "ERROR: Could not get current status from ControllerTask\n";
constexpr char kTdtNotSent[] = "ERROR: Could not set TDTRFInputConfig to ControllerTask\n";
constexpr char kNoInputs[] = "\n\n   \n    \n\n\n";
constexpr char kEnd[] =
    "terminate called after throwing an instance of 'std::out_of_range'\n  what():  map::at\n";

std::string satNotSent(int id) {
  return "ERROR: Could not set SATRFInputConfig for RFInput (" + std::to_string(id) +
         ") to ControllerTask\n";
}

/// A controller with ten inputs, TDT1 alone switched on. Voltages tell the inputs apart.
class RFInputCommands : public ::testing::Test {
 protected:
  RFInputCommands() {
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    for (int id = RFInputId::TDT1; id <= RFInputId::TDT2; ++id) {
      status.tdtRFInputs[static_cast<RFInputId::type>(id)].config.antennaVoltage = id * 11;
    }
    for (int id = RFInputId::SAT1; id <= RFInputId::SAT8; ++id) {
      status.satRFInputs[static_cast<RFInputId::type>(id)].config.lnb.voltage = 100 + id;
    }
    switchInputs(status, "+---------");
    controller.setStatus(status);
  }

  /// The calls after the fetch at the start, switching calls with what they carried.
  Sent sent() const {
    Sent result;
    const auto onOff = [](bool enabled) { return enabled ? " on" : " off"; };
    std::vector<ReceivedCall> calls = controller.calls();
    EXPECT_EQ(calls.at(0).method, "getHeadendConfig");
    calls.erase(calls.begin());
    for (const ReceivedCall& call : calls) {
      if (call.method == "getHeadendStatus") {
        result.emplace_back("status");
      } else if (call.method == "setTDTRFInputConfig") {
        result.push_back("TDT " + std::to_string(call.tdt1.antennaVoltage) +
                         onOff(call.tdt1.enabled) + ", " +
                         std::to_string(call.tdt2.antennaVoltage) + onOff(call.tdt2.enabled));
      } else if (call.method == "setSATRFInputConfig") {
        result.push_back("SAT " + std::to_string(call.satId) + " " +
                         std::to_string(call.satConfig.lnb.voltage) +
                         onOff(call.satConfig.enabled));
      } else {
        result.push_back(call.method);
      }
    }
    return result;
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
  HeadendStatus status;
};

// ---- the table

TEST_F(RFInputCommands, StatusShowsWhichInputsAreSwitchedOn) {
  expectSession({{"rfinput status", inputTable("+---------"), false}});
  EXPECT_EQ(sent(), Sent{"status"});
}

TEST_F(RFInputCommands, StatusTakesMoreThanTenInputs) {
  for (const int id : {11, 240, 255}) {
    status.satRFInputs[static_cast<RFInputId::type>(id)].config.enabled = true;
  }
  status.tdtRFInputs[static_cast<RFInputId::type>(0)];
  controller.setStatus(status);
  expectSession(
      {{"rfinput status",
        "\n\n   UNKNOWN   TDT1   TDT2   SAT1   SAT2   SAT3   SAT4   SAT5   SAT6   SAT7   SAT8   "
        "UNKNOWN   UNKNOWN   UNKNOWN   \n"
        "    ✕      ✓      ✕      ✕      ✕      ✕      ✕      ✕      ✕      ✕✕✓✓✓\n\n\n",
        false}});
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

TEST_F(RFInputCommands, SendsTheTerrestrialInputsAsAPair) {
  expectSession({{"rfinput disable TDT2", inputTable("+---------"), false},
                 {"rfinput enable tdt2", inputTable("++--------"), false},
                 {"rfinput disable Tdt1 ignored", inputTable("-+--------"), false}});
  EXPECT_EQ(sent(), (Sent{"status", "TDT 11 on, 22 off", "status",  //
                          "status", "TDT 11 on, 22 on", "status",   //
                          "status", "TDT 11 off, 22 on", "status"}));
}

TEST_F(RFInputCommands, SendsThePairTwiceForAllTerrestrialInputs) {
  expectSession({{"rfinput enable TDTALL", inputTable("++--------"), false}});
  EXPECT_EQ(sent(), (Sent{"status", "TDT 11 on, 22 on", "TDT 11 on, 22 on", "status"}));
}

TEST_F(RFInputCommands, SendsEachOfAllSatelliteInputsInOrder) {
  expectSession({{"rfinput enable satall", inputTable("+-++++++++"), false}});
  EXPECT_EQ(sent(),
            (Sent{"status", "SAT 3 103 on", "SAT 4 104 on", "SAT 5 105 on", "SAT 6 106 on",
                  "SAT 7 107 on", "SAT 8 108 on", "SAT 9 109 on", "SAT 10 110 on", "status"}));
  EXPECT_EQ(controller.connections(), 11U);
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

TEST_F(RFInputCommands, SendsNoTerrestrialPairIfTheStatusLacksOne) {
  status.tdtRFInputs.erase(RFInputId::TDT2);
  controller.setStatus(status);
  expectAbort({}, "rfinput enable TDT1", "");
  EXPECT_EQ(sent(), Sent{"status"});
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
