// The RF inputs, with the remote calls replaced by a controller that lives in this file. The real
// calls report no failure to their caller; these can raise what a call might.

#include "lineup/rf_inputs.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "model/lineup_editor.h"
#include "support/log.h"

namespace {

/// The controller: what it answers, and what it was asked in order.
struct Controller {
  std::function<void(lineup::LineupEditor&)> answerStatus = [](lineup::LineupEditor&) {};
  std::function<void()> answerSend = [] {};
  std::vector<std::string> calls;
};

Controller controller;
std::vector<std::string> logRecords;

std::string onOff(bool enabled) {
  return enabled ? " on" : " off";
}

}  // namespace

void log_function(int level, const char* module, const char* format, ...) {
  char message[200];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(message, sizeof message, format, arguments);
  va_end(arguments);
  logRecords.push_back(std::to_string(level) + " " + (module == nullptr ? "null" : module) + " " +
                       message);
}

namespace lineup {

void LineupEditor::fetchHeadendStatus() {
  controller.calls.emplace_back("status");
  controller.answerStatus(*this);
}

void LineupEditor::sendTDTRFInputConfig(const hub_module::TDTRFInputConfig& tdt1,
                                        const hub_module::TDTRFInputConfig& tdt2) {
  controller.calls.push_back("TDT " + std::to_string(tdt1.antennaVoltage) + onOff(tdt1.enabled) +
                             ", " + std::to_string(tdt2.antennaVoltage) + onOff(tdt2.enabled));
  controller.answerSend();
}

void LineupEditor::sendSATRFInputConfig(general::RFInputId::type id,
                                        const hub_module::SATRFInputConfig& sat) {
  controller.calls.push_back("SAT " + std::to_string(id) + " " + std::to_string(sat.lnb.voltage) +
                             onOff(sat.enabled));
  controller.answerSend();
}

namespace {

using general::RFInputId;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;
using Calls = std::vector<std::string>;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::microseconds kSwitchingTime{1'250'000};

const char* const kNamesRow =
    "   TDT1   TDT2   SAT1   SAT2   SAT3   SAT4   SAT5   SAT6   SAT7   SAT8   \n";

template <class Operation>
std::string outputOf(Operation operation) {
  CaptureStdout();
  try {
    operation();
  } catch (...) {
    GetCapturedStdout();
    throw;
  }
  return GetCapturedStdout();
}

/// Ten inputs, TDT1 alone switched on. Voltages tell the configurations apart.
hub_module::HeadendStatus fullStatus() {
  hub_module::HeadendStatus status;
  for (int id = RFInputId::TDT1; id <= RFInputId::TDT2; ++id) {
    auto& input = status.tdtRFInputs[static_cast<RFInputId::type>(id)].config;
    input.antennaVoltage = id * 11;
    input.enabled = id == RFInputId::TDT1;
  }
  for (int id = RFInputId::SAT1; id <= RFInputId::SAT8; ++id) {
    status.satRFInputs[static_cast<RFInputId::type>(id)].config.lnb.voltage = 100 + id;
  }
  return status;
}

class RFInputs : public ::testing::Test {
 protected:
  RFInputs() {
    controller = {};
    logRecords.clear();
    editor.config.headendGlobalConfig.headendId = 4;
  }

  ~RFInputs() override {
    hub_module::HeadendConfig expected;
    expected.headendGlobalConfig.headendId = 4;
    EXPECT_EQ(editor.config, expected);
    EXPECT_FALSE(editor.pendingChanges);
  }

  /// The controller has `status`, and answers with it.
  void answerWith(const hub_module::HeadendStatus& status) {
    controller.answerStatus = [status](LineupEditor& asking) { asking.status = status; };
  }

  std::string state() {
    return outputOf([this] { editor.getRFInputState(); });
  }

  std::string set(bool enable, const std::string& name) {
    return outputOf([&] { editor.setRFInputState(enable, name); });
  }

  /// Expects that switching ends with the failed look-up, without a table.
  void expectFailedLookup(bool enable, const std::string& name) {
    const Clock::time_point start = Clock::now();
    CaptureStdout();
    try {
      editor.setRFInputState(enable, name);
      ADD_FAILURE() << "found " << name;
    } catch (const std::out_of_range& failure) {
      EXPECT_STREQ(failure.what(), "map::at");
    }
    EXPECT_EQ(GetCapturedStdout(), "");
    EXPECT_LT(Clock::now() - start, kSwitchingTime);
  }

  LineupEditor editor;
};

// ---- names

TEST(RFInputNames, EveryInputHasOne) {
  const std::vector<std::string> names = {"TDT1", "TDT2", "SAT1", "SAT2", "SAT3",
                                          "SAT4", "SAT5", "SAT6", "SAT7", "SAT8"};
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(rfInputName(static_cast<RFInputId::type>(i + 1)), names[i]);
  }
}

TEST(RFInputNames, GroupsAndOtherValuesAreUnknown) {
  for (const int id : {240, 243, 0, 11, 255}) {
    EXPECT_EQ(rfInputName(static_cast<RFInputId::type>(id)), "UNKNOWN");
  }
}

TEST(RFInputNames, AreReadInAnyCaseAndUpperCasedInPlace) {
  const struct {
    const char* typed;
    const char* upperCase;
    int id;
  } cases[] = {{"SAT1", "SAT1", 3},       {"sat2", "SAT2", 4},  {"Sat3", "SAT3", 5},
               {"sAT4", "SAT4", 6},       {"SAT5", "SAT5", 7},  {"SAT6", "SAT6", 8},
               {"SAT7", "SAT7", 9},       {"SAT8", "SAT8", 10}, {"tdtall", "TDTALL", 240},
               {"SatAll", "SATALL", 243}, {"tdt1", "TDT1", 1},  {"TDT2", "TDT2", 2}};
  for (const auto& each : cases) {
    std::string name = each.typed;
    RFInputId::type id{};
    EXPECT_TRUE(parseRFInputName(name, id)) << each.typed;
    EXPECT_EQ(id, each.id);
    EXPECT_EQ(name, each.upperCase);
  }
}

TEST(RFInputNames, OtherTextsAreNotRecognised) {
  for (const char* typed : {"SAT9", "SAT0", "TDT", "ALL", "TDT3", "SAT10", " SAT1", "SAT1 ",
                            "SAT1\t", "", "1", "UNKNOWN", "s\xC3\xA1t1", "\xFF"}) {
    std::string name = typed;
    RFInputId::type id = RFInputId::SAT7;
    EXPECT_FALSE(parseRFInputName(name, id)) << typed;
    EXPECT_EQ(id, RFInputId::SAT7);
  }
}

// ---- the table

TEST_F(RFInputs, TableShowsTenInputsWithTheirMarksBelow) {
  answerWith(fullStatus());
  EXPECT_EQ(state(),
            std::string("\n\n") + kNamesRow +
                "    ✓      ✕      ✕      ✕      ✕      ✕      ✕      ✕      ✕      ✕\n\n\n");
  EXPECT_EQ(controller.calls, Calls{"status"});
}

TEST_F(RFInputs, TableMarksEveryEnabledInput) {
  auto status = fullStatus();
  status.tdtRFInputs[RFInputId::TDT1].config.enabled = false;
  status.satRFInputs[RFInputId::SAT2].config.enabled = true;
  status.satRFInputs[RFInputId::SAT8].config.enabled = true;
  answerWith(status);
  EXPECT_EQ(state(),
            std::string("\n\n") + kNamesRow +
                "    ✕      ✕      ✕      ✓      ✕      ✕      ✕      ✕      ✕      ✓\n\n\n");
}

TEST_F(RFInputs, TableShowsOnlyTheInputsOfTheStatus) {
  auto status = fullStatus();
  status.tdtRFInputs.erase(RFInputId::TDT2);
  status.satRFInputs.clear();
  status.satRFInputs[RFInputId::SAT3].config.enabled = true;
  answerWith(status);
  EXPECT_EQ(state(), "\n\n   TDT1   SAT3   \n    ✓      ✓      \n\n\n");
}

TEST_F(RFInputs, TableOfAnEmptyStatusIsBlank) {
  EXPECT_EQ(state(), "\n\n   \n    \n\n\n");
}

TEST_F(RFInputs, TableShowsTheStatusHeldFromBeforeIfTheFetchFails) {
  editor.status.satRFInputs[RFInputId::SAT3].config.enabled = true;
  EXPECT_EQ(state(), "\n\n   SAT3   \n    ✓      \n\n\n");
}

TEST_F(RFInputs, TableKeepsTheTerrestrialStateOfAnIdThatBothMapsHave) {
  editor.status.tdtRFInputs[RFInputId::SAT1].config.enabled = true;
  editor.status.satRFInputs[RFInputId::SAT1].config.enabled = false;
  EXPECT_EQ(state(), "\n\n   SAT1   \n    ✓      \n\n\n");
}

TEST_F(RFInputs, TableTakesMoreThanTenInputs) {
  auto status = fullStatus();
  for (const int id : {0, 11, 240}) {
    status.satRFInputs[static_cast<RFInputId::type>(id)].config.enabled = true;
  }
  answerWith(status);
  EXPECT_EQ(
      state(),
      "\n\n   UNKNOWN   TDT1   TDT2   SAT1   SAT2   SAT3   SAT4   SAT5   SAT6   SAT7   SAT8   "
      "UNKNOWN   UNKNOWN   \n"
      "    ✓      ✓      ✕      ✕      ✕      ✕      ✕      ✕      ✕      ✕✕✓✓\n\n\n");
}

// ---- switching

TEST_F(RFInputs, SwitchesASatelliteInputThenShowsTheTable) {
  auto status = fullStatus();
  controller.answerStatus = [&](LineupEditor& asking) { asking.status = status; };
  controller.answerSend = [&] { status.satRFInputs[RFInputId::SAT1].config.enabled = true; };
  const Clock::time_point start = Clock::now();
  EXPECT_EQ(set(true, "sat1"),
            std::string("\n\n") + kNamesRow +
                "    ✓      ✕      ✓      ✕      ✕      ✕      ✕      ✕      ✕      ✕\n\n\n");
  EXPECT_GE(Clock::now() - start, kSwitchingTime);
  EXPECT_EQ(controller.calls, (Calls{"status", "SAT 3 103 on", "status"}));
}

TEST_F(RFInputs, SwitchesTheLastSatelliteInputOff) {
  auto status = fullStatus();
  status.satRFInputs[RFInputId::SAT8].config.enabled = true;
  answerWith(status);
  set(false, "SAT8");
  EXPECT_EQ(controller.calls, (Calls{"status", "SAT 10 110 off", "status"}));
}

TEST_F(RFInputs, SendsTheTerrestrialInputsAsAPair) {
  answerWith(fullStatus());
  set(false, "TDT2");
  EXPECT_EQ(controller.calls, (Calls{"status", "TDT 11 on, 22 off", "status"}));
  controller.calls.clear();
  set(true, "tdt2");
  EXPECT_EQ(controller.calls, (Calls{"status", "TDT 11 on, 22 on", "status"}));
  controller.calls.clear();
  set(false, "TDT1");
  EXPECT_EQ(controller.calls, (Calls{"status", "TDT 11 off, 22 off", "status"}));
}

TEST_F(RFInputs, SendsThePairTwiceForAllTerrestrialInputs) {
  answerWith(fullStatus());
  set(true, "TDTALL");
  EXPECT_EQ(controller.calls, (Calls{"status", "TDT 11 on, 22 on", "TDT 11 on, 22 on", "status"}));
  controller.calls.clear();
  set(false, "TdtAll");
  EXPECT_EQ(controller.calls,
            (Calls{"status", "TDT 11 off, 22 off", "TDT 11 off, 22 off", "status"}));
}

TEST_F(RFInputs, SendsEachOfAllSatelliteInputsInOrder) {
  answerWith(fullStatus());
  set(true, "SATALL");
  EXPECT_EQ(controller.calls,
            (Calls{"status", "SAT 3 103 on", "SAT 4 104 on", "SAT 5 105 on", "SAT 6 106 on",
                   "SAT 7 107 on", "SAT 8 108 on", "SAT 9 109 on", "SAT 10 110 on", "status"}));
}

TEST_F(RFInputs, StopsAtASatelliteInputThatTheStatusLacks) {
  auto status = fullStatus();
  status.satRFInputs.erase(RFInputId::SAT5);
  answerWith(status);
  expectFailedLookup(true, "SATALL");
  EXPECT_EQ(controller.calls,
            (Calls{"status", "SAT 3 103 on", "SAT 4 104 on", "SAT 5 105 on", "SAT 6 106 on"}));
}

TEST_F(RFInputs, SendsNothingIfTheStatusLacksTheInput) {
  for (const char* name : {"SAT3", "SATALL", "TDT1", "TDT2", "TDTALL"}) {
    SCOPED_TRACE(name);
    controller.calls.clear();
    expectFailedLookup(false, name);
    EXPECT_EQ(controller.calls, Calls{"status"});
  }
}

TEST_F(RFInputs, SendsNoTerrestrialInputIfTheOtherIsMissing) {
  auto status = fullStatus();
  status.tdtRFInputs.erase(RFInputId::TDT2);
  answerWith(status);
  for (const char* name : {"TDT1", "TDTALL"}) {
    controller.calls.clear();
    expectFailedLookup(true, name);
    EXPECT_EQ(controller.calls, Calls{"status"});
  }
}

TEST_F(RFInputs, UsesTheStatusHeldFromBeforeIfTheFetchFails) {
  editor.status = fullStatus();
  set(true, "SAT2");
  EXPECT_EQ(controller.calls, (Calls{"status", "SAT 4 104 on", "status"}));
}

TEST_F(RFInputs, RefusesAnUnknownNameWithoutACall) {
  answerWith(fullStatus());
  for (const char* name : {"SAT9", "TDT", "ALL", "", "sat1 "}) {
    EXPECT_EQ(set(true, name), "Error RF Input value. \n");
  }
  EXPECT_EQ(controller.calls, Calls{});
}

// ---- a controller that is not ready

const std::function<void()> notReady = [] { throw hub_module::ControllerTaskIsNotReady(); };

TEST_F(RFInputs, TableLogsAControllerThatIsNotReadyAndShowsWhatWasGathered) {
  editor.status = fullStatus();
  controller.answerStatus = [](LineupEditor&) { notReady(); };
  EXPECT_EQ(state(), "\n\n   \n    \n\n\n");
  EXPECT_EQ(logRecords,
            Calls{"7 null getRFInputState: exception hub_module::ControllerTaskIsNotReady"});
}

TEST_F(RFInputs, SwitchingLogsAControllerThatIsNotReadyAndEndsWithoutWaitOrTable) {
  controller.answerStatus = [](LineupEditor&) { notReady(); };
  const Clock::time_point start = Clock::now();
  EXPECT_EQ(set(true, "SAT1"), "");
  EXPECT_LT(Clock::now() - start, kSwitchingTime);
  EXPECT_EQ(controller.calls, Calls{"status"});
  EXPECT_EQ(logRecords,
            Calls{"7 null setRFInputState: exception hub_module::ControllerTaskIsNotReady"});
}

TEST_F(RFInputs, SwitchingManyInputsEndsAtTheCallThatIsNotReady) {
  answerWith(fullStatus());
  controller.answerSend = notReady;
  EXPECT_EQ(set(true, "SATALL"), "");
  EXPECT_EQ(controller.calls, (Calls{"status", "SAT 3 103 on"}));
  EXPECT_EQ(logRecords,
            Calls{"7 null setRFInputState: exception hub_module::ControllerTaskIsNotReady"});
}

TEST_F(RFInputs, OtherFailuresPassThrough) {
  controller.answerStatus = [](LineupEditor&) { throw std::runtime_error("lost"); };
  EXPECT_THROW(state(), std::runtime_error);
  EXPECT_THROW(set(true, "SAT1"), std::runtime_error);
  EXPECT_EQ(logRecords, Calls{});
}

}  // namespace
}  // namespace lineup
