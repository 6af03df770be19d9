// The RF inputs, switched on a controller in the test's own process.

#include "tests/support/rf_inputs.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <iostream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

#include "model/lineup_editor.h"
#include "tests/support/fake_controller.h"
#include "tests/support/logged.h"
#include "tests/support/streams.h"

namespace lineup::test {
namespace {

using general::RFInputId;
using Calls = std::vector<std::string>;
using Records = std::vector<std::string>;
using Clock = std::chrono::steady_clock;

/// An editor with a configuration that no operation on RF inputs may change.
class RFInputs : public ::testing::Test {
 protected:
  RFInputs() { editor.config.headendGlobalConfig.headendId = 4; }

  ~RFInputs() override {
    hub_module::HeadendConfig expected;
    expected.headendGlobalConfig.headendId = 4;
    EXPECT_EQ(editor.config, expected);
    EXPECT_FALSE(editor.pendingChanges);
  }

  std::string state() {
    return printed([this] { editor.getRFInputState(); });
  }

  std::string set(bool enable, const std::string& name) {
    return printed([&] { editor.setRFInputState(enable, name); });
  }

  LineupEditor editor;
};

/// A controller with ten inputs, TDT1 alone switched on.
class RFInputsOfAHeadend : public RFInputs {
 protected:
  RFInputsOfAHeadend() { controller.setStatus(status); }

  Calls calls() const { return describe(controller.calls()); }

  void failNext() { controller.answerNext({.kind = Answer::kNotReady}); }

  /// Expects that switching ends with the failed look-up, without a table, after `expected` calls.
  void expectFailedLookup(bool enable, const std::string& name, const Calls& expected) {
    SCOPED_TRACE(name);
    const std::size_t before = controller.calls().size();
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(printed([&] {
                try {
                  editor.setRFInputState(enable, name);
                  ADD_FAILURE() << "found " << name;
                } catch (const std::out_of_range& failure) {
                  EXPECT_STREQ(failure.what(), "map::at");
                }
              }),
              "");
    EXPECT_LT(Clock::now() - start, kSwitchingTime);
    const Calls all = calls();
    EXPECT_EQ(Calls(all.begin() + static_cast<std::ptrdiff_t>(before), all.end()), expected);
  }

  FakeController controller;
  hub_module::HeadendStatus status = tenInputs("+---------");
};

// ---- the table

TEST_F(RFInputsOfAHeadend, TableShowsTenInputsWithTheirMarksBelow) {
  EXPECT_EQ(state(),
            "\n\n   TDT1   TDT2   SAT1   SAT2   SAT3   SAT4   SAT5   SAT6   SAT7   SAT8   \n"
            "    ✓      ✕      ✕      ✕      ✕      ✕      ✕      ✕      ✕      ✕\n\n\n");
  EXPECT_EQ(calls(), Calls{"status"});
}

TEST_F(RFInputsOfAHeadend, TableMarksEveryEnabledInput) {
  controller.setStatus(tenInputs("---+-----+"));
  EXPECT_EQ(state(), inputTable("---+-----+"));
}

TEST_F(RFInputsOfAHeadend, TableShowsOnlyTheInputsOfTheStatus) {
  status.tdtRFInputs.erase(RFInputId::TDT2);
  status.satRFInputs.clear();
  status.satRFInputs[RFInputId::SAT3].config.enabled = true;
  controller.setStatus(status);
  EXPECT_EQ(state(), "\n\n   TDT1   SAT3   \n    ✓      ✓      \n\n\n");
}

TEST_F(RFInputsOfAHeadend, TableOfAnEmptyStatusIsBlank) {
  controller.setStatus({});
  EXPECT_EQ(state(), "\n\n   \n    \n\n\n");
}

TEST_F(RFInputs, TableShowsTheStatusHeldFromBeforeIfTheFetchFails) {
  editor.status.satRFInputs[RFInputId::SAT3].config.enabled = true;
  EXPECT_EQ(state(), std::string(kStatusFailed) + "\n\n   SAT3   \n    ✓      \n\n\n");
}

TEST_F(RFInputsOfAHeadend, TableKeepsTheTerrestrialStateOfAnIdThatBothMapsHave) {
  hub_module::HeadendStatus twice;
  twice.tdtRFInputs[RFInputId::SAT1].config.enabled = true;
  twice.satRFInputs[RFInputId::SAT1].config.enabled = false;
  controller.setStatus(twice);
  EXPECT_EQ(state(), "\n\n   SAT1   \n    ✓      \n\n\n");
}

TEST_F(RFInputsOfAHeadend, TableTakesMoreThanTenInputs) {
  for (const int id : {0, 11, 240}) {
    status.satRFInputs[static_cast<RFInputId::type>(id)].config.enabled = true;
  }
  controller.setStatus(status);
  EXPECT_EQ(
      state(),
      "\n\n   UNKNOWN   TDT1   TDT2   SAT1   SAT2   SAT3   SAT4   SAT5   SAT6   SAT7   SAT8   "
      "UNKNOWN   UNKNOWN   \n"
      "    ✓      ✓      ✕      ✕      ✕      ✕      ✕      ✕      ✕      ✕✕✓✓\n\n\n");
}

// ---- switching

TEST_F(RFInputsOfAHeadend, SwitchesASatelliteInputThenShowsTheTable) {
  const Clock::time_point start = Clock::now();
  EXPECT_EQ(set(true, "sat1"), inputTable("+-+-------"));
  EXPECT_GE(Clock::now() - start, kSwitchingTime);
  EXPECT_EQ(calls(), (Calls{"status", "SAT 3 103 on", "status"}));
}

TEST_F(RFInputsOfAHeadend, SwitchesTheLastSatelliteInputOff) {
  controller.setStatus(tenInputs("+--------+"));
  EXPECT_EQ(set(false, "SAT8"), inputTable("+---------"));
  EXPECT_EQ(calls(), (Calls{"status", "SAT 10 110 off", "status"}));
}

TEST_F(RFInputsOfAHeadend, SendsTheTerrestrialInputsAsAPair) {
  EXPECT_EQ(set(false, "TDT2"), inputTable("+---------"));
  EXPECT_EQ(set(true, "tdt2"), inputTable("++--------"));
  EXPECT_EQ(set(false, "TDT1"), inputTable("-+--------"));
  EXPECT_EQ(calls(), (Calls{"status", "TDT 11 on, 22 off", "status",  //
                            "status", "TDT 11 on, 22 on", "status",   //
                            "status", "TDT 11 off, 22 on", "status"}));
}

TEST_F(RFInputsOfAHeadend, SendsThePairTwiceForAllTerrestrialInputs) {
  EXPECT_EQ(set(true, "TDTALL"), inputTable("++--------"));
  EXPECT_EQ(set(false, "TdtAll"), inputTable("----------"));
  EXPECT_EQ(calls(), (Calls{"status", "TDT 11 on, 22 on", "TDT 11 on, 22 on", "status",  //
                            "status", "TDT 11 off, 22 off", "TDT 11 off, 22 off", "status"}));
}

TEST_F(RFInputsOfAHeadend, SendsEachOfAllSatelliteInputsInOrder) {
  EXPECT_EQ(set(true, "SATALL"), inputTable("+-++++++++"));
  EXPECT_EQ(calls(),
            (Calls{"status", "SAT 3 103 on", "SAT 4 104 on", "SAT 5 105 on", "SAT 6 106 on",
                   "SAT 7 107 on", "SAT 8 108 on", "SAT 9 109 on", "SAT 10 110 on", "status"}));
  EXPECT_EQ(controller.connections(), 10U);
}

TEST_F(RFInputsOfAHeadend, StopsAtASatelliteInputThatTheStatusLacks) {
  status.satRFInputs.erase(RFInputId::SAT5);
  controller.setStatus(status);
  expectFailedLookup(true, "SATALL",
                     {"status", "SAT 3 103 on", "SAT 4 104 on", "SAT 5 105 on", "SAT 6 106 on"});
}

TEST_F(RFInputsOfAHeadend, SendsNothingIfTheStatusLacksTheInput) {
  controller.setStatus({});
  for (const char* name : {"SAT3", "SATALL", "TDT1", "TDT2", "TDTALL"}) {
    expectFailedLookup(false, name, {"status"});
  }
}

TEST_F(RFInputsOfAHeadend, SendsNoTerrestrialInputIfTheOtherIsMissing) {
  status.tdtRFInputs.erase(RFInputId::TDT2);
  controller.setStatus(status);
  for (const char* name : {"TDT1", "TDTALL"}) {
    expectFailedLookup(true, name, {"status"});
  }
}

TEST_F(RFInputsOfAHeadend, UsesTheStatusHeldFromBeforeIfTheFetchFails) {
  editor.status = status;
  failNext();
  EXPECT_EQ(set(true, "SAT2"), kStatusFailed + inputTable("+--+------"));
  EXPECT_EQ(calls(), (Calls{"status", "SAT 4 104 on", "status"}));
}

TEST_F(RFInputsOfAHeadend, GoesOnAfterACallThatFails) {
  controller.answerRightly();  // the status
  failNext();
  controller.answerRightly();
  failNext();
  EXPECT_EQ(set(true, "SATALL"), satFailed(3) + satFailed(5) + inputTable("+--+-+++++"));
  EXPECT_EQ(calls().size(), 10U);
  controller.answerRightly();
  failNext();
  EXPECT_EQ(set(false, "TDT1"), kTdtFailed + inputTable("+--+-+++++"));
}

TEST_F(RFInputsOfAHeadend, RefusesAnUnknownNameWithoutACall) {
  for (const char* name : {"SAT9", "TDT", "ALL", "", "sat1 "}) {
    EXPECT_EQ(set(true, name), kBadInput);
  }
  EXPECT_EQ(calls(), Calls{});
}

// ---- a remote call that throws
//
// The remote calls print their failures and do not throw them. An exception leaves one only from
// standard output, while the line of a failure is printed.

template <class Exception>
class RaisingOutput : std::streambuf {
 public:
  RaisingOutput() : replaced_(std::cout.rdbuf(this)) { std::cout.exceptions(std::ios::badbit); }
  ~RaisingOutput() override {
    std::cout.exceptions(std::ios::goodbit);
    std::cout.rdbuf(replaced_);  // clears the state
  }
  RaisingOutput(const RaisingOutput&) = delete;
  RaisingOutput& operator=(const RaisingOutput&) = delete;

 private:
  std::streamsize xsputn(const char* /*text*/, std::streamsize /*size*/) override {
    throw Exception();
  }

  std::streambuf* replaced_;
};

TEST_F(RFInputsOfAHeadend, TableLogsAControllerThatIsNotReadyAndIsPrinted) {
  const auto show = [this] {
    failNext();
    const RaisingOutput<hub_module::ControllerTaskIsNotReady> output;
    // Printing the table on the output that is broken by then.
    EXPECT_THROW(editor.getRFInputState(), std::ios::failure);
  };
  EXPECT_EQ(logged(7, show),
            Records{"getRFInputState: exception hub_module::ControllerTaskIsNotReady"});
  EXPECT_EQ(logged(6, show), Records());
}

TEST_F(RFInputsOfAHeadend, SwitchingLogsAControllerThatIsNotReadyAndEndsWithoutWaitOrTable) {
  editor.status = status;
  failNext();
  const Clock::time_point start = Clock::now();
  EXPECT_EQ(logged(7,
                   [this] {
                     const RaisingOutput<hub_module::ControllerTaskIsNotReady> output;
                     editor.setRFInputState(true, "SAT1");
                   }),
            Records{"setRFInputState: exception hub_module::ControllerTaskIsNotReady"});
  EXPECT_LT(Clock::now() - start, kSwitchingTime);
  EXPECT_EQ(calls(), Calls{"status"});
}

TEST_F(RFInputsOfAHeadend, SwitchingManyInputsEndsAtTheCallThatIsNotReady) {
  controller.answerRightly();
  failNext();
  const RaisingOutput<hub_module::ControllerTaskIsNotReady> output;
  editor.setRFInputState(true, "SATALL");
  EXPECT_EQ(calls(), (Calls{"status", "SAT 3 103 on"}));
}

TEST_F(RFInputs, OtherExceptionsPassThrough) {
  struct Other {};
  const RaisingOutput<Other> output;
  EXPECT_THROW(editor.getRFInputState(), Other);
  std::cout.clear();
  EXPECT_THROW(editor.setRFInputState(true, "SAT1"), Other);
}

}  // namespace
}  // namespace lineup::test
