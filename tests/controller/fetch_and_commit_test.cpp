// The editor's remote calls on the controller's own port: their effects, their lines, and what they
// leave behind when they fail.

#include <gtest/gtest.h>
#include <poll.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "controller/thrift_log.h"
#include "model/lineup_editor.h"
#include "support/log.h"
#include "tests/support/console_texts.h"
#include "tests/support/encoding.h"
#include "tests/support/fake_controller.h"
#include "tests/support/random_records.h"
#include "tests/support/rf_inputs.h"
#include "tests/support/streams.h"

namespace {

/// Where the time-outs of this thread's polls are recorded, in seconds; null for nowhere.
thread_local std::vector<int>* waits = nullptr;

}  // namespace

// Takes the place of the C library's. A wait that is noted passes a hundred times as fast.
int poll(pollfd* files, nfds_t count, int milliseconds) {
  if (waits != nullptr) {
    waits->push_back((milliseconds + 500) / 1000);
    milliseconds /= 100;
  }
  const timespec time{milliseconds / 1000, milliseconds % 1000 * 1'000'000L};
  return ppoll(files, count, milliseconds < 0 ? nullptr : &time, nullptr);
}

namespace lineup::test {
namespace {

using hub_module::HeadendConfig;
using hub_module::HeadendStatus;
using hub_module::SATRFInputConfig;
using hub_module::TDTRFInputConfig;

/// What is left in a new record that was read from `bytes` as far as they go.
template <class Record>
Record readAsFarAsItGoes(const std::string& bytes) {
  Record record;
  EXPECT_THROW(decode<apache::thrift::protocol::TBinaryProtocol>(bytes, record),
               apache::thrift::TException);
  return record;
}

class RemoteCalls : public testing::Test {
 protected:
  RemoteCalls() {
    routeThriftOutputToLog();
    editor_.config = randomHeadendConfig(1);
    editor_.status = randomHeadendStatus(2);
    editor_.pendingChanges = true;
  }

  void expectUnchanged() const {
    EXPECT_EQ(editor_.config, randomHeadendConfig(1));
    EXPECT_EQ(editor_.status, randomHeadendStatus(2));
    EXPECT_TRUE(editor_.pendingChanges);
  }

  /// Makes all five calls and expects that each fails with its line and changes nothing.
  void expectAllFail() {
    EXPECT_EQ(printed([this] { editor_.fetchHeadendConfig(); }), kFetchFailed);
    EXPECT_EQ(printed([this] { editor_.fetchHeadendStatus(); }), kStatusFailed);
    EXPECT_EQ(printed([this] { editor_.commitHeadendConfig(); }), kCommitFailed);
    EXPECT_EQ(printed([this] { editor_.sendTDTRFInputConfig({}, {}); }), kTdtFailed);
    EXPECT_EQ(printed([this] { editor_.sendSATRFInputConfig(general::RFInputId::SAT5, {}); }),
              satFailed(7));
    expectUnchanged();
  }

  LineupEditor editor_;
};

class ReachableController : public RemoteCalls {
 protected:
  ReachableController() {
    controller_.setConfig(randomHeadendConfig(3));
    controller_.setStatus(randomHeadendStatus(4));
  }

  void answerAllWithBytes(const std::string& bytes) {
    controller_.answerAll({.kind = Answer::kBytes, .bytes = bytes, .hangsUp = true});
  }

  FakeController controller_;
};

// ---- success

TEST_F(ReachableController, FetchReplacesTheConfigurationAndClearsPendingChanges) {
  EXPECT_EQ(printed([this] { editor_.fetchHeadendConfig(); }), "");
  EXPECT_EQ(editor_.config, randomHeadendConfig(3));
  EXPECT_FALSE(editor_.pendingChanges);
  EXPECT_EQ(editor_.status, randomHeadendStatus(2));
  EXPECT_EQ(controller_.methods(), std::vector<std::string>{"getHeadendConfig"});
}

TEST_F(ReachableController, FetchOfTheStatusReplacesTheStatusAlone) {
  EXPECT_EQ(printed([this] { editor_.fetchHeadendStatus(); }), "");
  EXPECT_EQ(editor_.status, randomHeadendStatus(4));
  EXPECT_EQ(editor_.config, randomHeadendConfig(1));
  EXPECT_TRUE(editor_.pendingChanges);
  EXPECT_EQ(controller_.methods(), std::vector<std::string>{"getHeadendStatus"});
}

TEST_F(ReachableController, CommitSendsTheConfigurationAndClearsPendingChanges) {
  EXPECT_EQ(printed([this] { editor_.commitHeadendConfig(); }), "");
  ASSERT_EQ(controller_.methods(), std::vector<std::string>{"setHeadendConfig"});
  EXPECT_EQ(controller_.calls()[0].config, randomHeadendConfig(1));
  EXPECT_FALSE(editor_.pendingChanges);
  EXPECT_EQ(editor_.config, randomHeadendConfig(1));
  EXPECT_EQ(editor_.status, randomHeadendStatus(2)) << "the returned status is discarded";
}

TEST_F(ReachableController, TerrestrialInputsAreSentAsAPair) {
  TDTRFInputConfig tdt1;
  tdt1.antennaVoltage = 24;
  TDTRFInputConfig tdt2;
  tdt2.enabled = true;
  EXPECT_EQ(printed([&] { editor_.sendTDTRFInputConfig(tdt1, tdt2); }), "");
  ASSERT_EQ(controller_.methods(), std::vector<std::string>{"setTDTRFInputConfig"});
  EXPECT_EQ(controller_.calls()[0].tdt1, tdt1);
  EXPECT_EQ(controller_.calls()[0].tdt2, tdt2);
  expectUnchanged();
}

TEST_F(ReachableController, SatelliteInputIsSentWithItsNumber) {
  SATRFInputConfig sat;
  sat.enabled = true;
  sat.lnb.voltage = 18;
  EXPECT_EQ(printed([&] { editor_.sendSATRFInputConfig(general::RFInputId::SAT8, sat); }), "");
  ASSERT_EQ(controller_.methods(), std::vector<std::string>{"setSATRFInputConfig"});
  EXPECT_EQ(controller_.calls()[0].satId, 10);
  EXPECT_EQ(controller_.calls()[0].satConfig, sat);
  expectUnchanged();
}

TEST_F(ReachableController, TwoCommitsOpenTwoConnectionsAndCloseBoth) {
  EXPECT_EQ(printed([this] {
              editor_.commitHeadendConfig();
              editor_.commitHeadendConfig();
            }),
            "");
  controller_.waitForClosed(2);
  EXPECT_EQ(controller_.connections(), 2U);
  EXPECT_EQ(controller_.calls()[0].connection, 1U);
  EXPECT_EQ(controller_.calls()[1].connection, 2U);
}

// ---- exactly the reply

TEST_F(ReachableController, FetchLeavesNoCountryWhenTheControllerHasNone) {
  HeadendConfig without = randomHeadendConfig(3);
  without.headendGlobalConfig.countryCode = general::CountryCode::OTHER;
  without.headendGlobalConfig.__isset.countryCode = false;
  without.rfInputsScanConfig.plsItemList.clear();
  without.rfInputsScanConfig.__isset.plsItemList = false;
  controller_.setConfig(without);
  editor_.fetchHeadendConfig();
  EXPECT_EQ(editor_.config, without);
  EXPECT_FALSE(editor_.config.headendGlobalConfig.__isset.countryCode);
  EXPECT_EQ(editor_.config.headendGlobalConfig.countryCode, 0);
  EXPECT_FALSE(editor_.config.rfInputsScanConfig.__isset.plsItemList);
  EXPECT_TRUE(editor_.config.rfInputsScanConfig.plsItemList.empty());
}

TEST_F(ReachableController, FetchOfAReplyWithoutAnyFieldLeavesTheDefaults) {
  controller_.answerAll(recordAnswer("getHeadendConfig", std::string(1, kFieldStop)));
  EXPECT_EQ(printed([this] { editor_.fetchHeadendConfig(); }), "");
  EXPECT_EQ(editor_.config, HeadendConfig());
  EXPECT_FALSE(editor_.pendingChanges);
}

TEST_F(ReachableController, FetchOfAStatusWithoutAnyFieldLeavesTheDefaults) {
  controller_.answerAll(recordAnswer("getHeadendStatus", std::string(1, kFieldStop)));
  EXPECT_EQ(printed([this] { editor_.fetchHeadendStatus(); }), "");
  EXPECT_EQ(editor_.status, HeadendStatus());
}

TEST_F(ReachableController, FetchSkipsFieldsThatTheConsoleDoesNotKnow) {
  std::string record = toBinary(randomHeadendConfig(3));
  record.insert(0, std::string("\x0b\0\x63\0\0\0\4text", 11));
  controller_.answerAll(recordAnswer("getHeadendConfig", record));
  EXPECT_EQ(printed([this] { editor_.fetchHeadendConfig(); }), "");
  EXPECT_EQ(editor_.config, randomHeadendConfig(3));
}

// ---- failure before the record

TEST_F(RemoteCalls, WithoutAControllerEachPrintsItsLineAndChangesNothing) {
  expectAllFail();
}

TEST_F(ReachableController, ThatIsNotReadyMakesEachPrintItsLineAndChangeNothing) {
  controller_.answerAll({.kind = Answer::kNotReady});
  expectAllFail();
  EXPECT_EQ(controller_.connections(), 5U) << "nothing is tried again";
}

TEST_F(ReachableController, ThatAnswersWronglyMakesEachPrintItsLineAndChangeNothing) {
  const Answer answers[] = {{.kind = Answer::kApplicationException},
                            {.sentBytes = 0},   // hangs up at once
                            {.sentBytes = 20},  // within the header
                            {.name = "resetHeadend"},
                            {.type = apache::thrift::protocol::T_CALL}};
  for (const Answer& answer : answers) {
    SCOPED_TRACE(&answer - answers);
    controller_.answerAll(answer);
    expectAllFail();
  }
}

TEST_F(ReachableController, ThatAnswersGarbageMakesEachPrintItsLineAndChangeNothing) {
  for (const std::string& garbage :
       {std::string("\r\n"), std::string("HTTP/1.1 200 OK\r\n\r\n<html/>"), std::string(64, '\0'),
        std::string(64, '\xff'), std::string("\x7f\xff\xff\xff", 4), framed("not a message"),
        framed("")}) {
    answerAllWithBytes(garbage);
    expectAllFail();
  }
}

// ---- failure within or after the record

/// A configuration with much in it but no text: of a string cut short the library itself would
/// leave a string of the claimed length.
HeadendConfig configWithoutText() {
  HeadendConfig config;
  for (int32_t key = 1; key <= 4; ++key) {
    config.lineupConfig.rfConfig.carrierFrequencies[key] = 474000 + 8000 * key;
    config.lineupConfig.rfEntries.emplace_back().serviceKey = key;
    auto& service = config.lineupConfig.dvbInputServices[key].service;
    service.sid = 100 + key;
    service.intItems = {key, -key};
    config.lineupConfig.emptyInputServices[key].service.serviceType = key;
  }
  config.lineupConfig.globalConfig.eitMode = 2;
  config.lineupConfig.ipConfig.mcastRangeStart.clear();
  config.lineupConfig.ipConfig.mcastRangeEnd.clear();
  config.headendGlobalConfig.__set_countryCode(general::CountryCode::ITALY);
  config.rfInputsScanConfig.__set_plsItemList({{}, {}});
  config.ipInputs[""].__set_slot(3);
  return config;
}

/// The frame of a reply of `method` whose message ends after the first `bytes` bytes of `record`.
std::string brokenOff(const std::string& method, const std::string& record, std::size_t bytes) {
  std::string message = recordReply(method, record.substr(0, bytes)).substr(4);
  message.pop_back();  // the end of the result
  return framed(message);
}

TEST_F(ReachableController, FetchThatBreaksOffLeavesWhatHadBeenRead) {
  const std::string record = toBinary(configWithoutText());
  for (std::size_t bytes = 0; bytes < record.size(); ++bytes) {
    answerAllWithBytes(brokenOff("getHeadendConfig", record, bytes));
    editor_.config = randomHeadendConfig(1);
    ASSERT_EQ(printed([this] { editor_.fetchHeadendConfig(); }), kFetchFailed);
    ASSERT_EQ(editor_.config, readAsFarAsItGoes<HeadendConfig>(record.substr(0, bytes)));
    ASSERT_TRUE(editor_.pendingChanges);
  }
}

TEST_F(ReachableController, FetchOfAStatusThatBreaksOffLeavesWhatHadBeenRead) {
  HeadendStatus status;
  status.tdtRFInputs[general::RFInputId::TDT1].config.enabled = true;
  status.satRFInputs[general::RFInputId::SAT2].config.enabled = true;
  status.lineupStatus.carrierBitrates[1] = 2;
  const std::string record = toBinary(status);
  const std::size_t behindTheBitrate = record.find(std::string("\0\0\0\1\0\0\0\2", 8)) + 8;
  answerAllWithBytes(brokenOff("getHeadendStatus", record, behindTheBitrate));
  EXPECT_EQ(printed([this] { editor_.fetchHeadendStatus(); }), kStatusFailed);
  EXPECT_TRUE(editor_.status.tdtRFInputs.at(general::RFInputId::TDT1).config.enabled);
  EXPECT_TRUE(editor_.status.satRFInputs.at(general::RFInputId::SAT2).config.enabled);
  EXPECT_EQ(editor_.status.lineupStatus.carrierBitrates.at(1), 2);
  EXPECT_EQ(editor_.status.baseStatus, hub_module::BaseStatus());
  EXPECT_EQ(editor_.config, randomHeadendConfig(1));
}

TEST_F(ReachableController, FetchWhoseConnectionBreaksInsideTheFrameChangesNothing) {
  controller_.setConfig(HeadendConfig());
  const std::size_t size = recordReply("getHeadendConfig", toBinary(HeadendConfig())).size();
  for (std::size_t bytes = 0; bytes < size; ++bytes) {
    controller_.answerAll({.sentBytes = bytes});
    ASSERT_EQ(printed([this] { editor_.fetchHeadendConfig(); }), kFetchFailed);
    expectUnchanged();
  }
}

TEST_F(ReachableController, CommitIsDoneOnlyWhenTheWholeReplyHasArrived) {
  controller_.setStatus(HeadendStatus());
  const std::size_t size = recordReply("setHeadendConfig", toBinary(HeadendStatus())).size();
  for (std::size_t bytes = 0; bytes < size; ++bytes) {
    controller_.answerAll({.sentBytes = bytes});
    ASSERT_EQ(printed([this] { editor_.commitHeadendConfig(); }), kCommitFailed);
    ASSERT_TRUE(editor_.pendingChanges);
  }
  controller_.answerAll({.byteByByte = true});
  EXPECT_EQ(printed([this] { editor_.commitHeadendConfig(); }), "");
  EXPECT_FALSE(editor_.pendingChanges);
}

TEST_F(ReachableController, AnotherSequenceNumberAndBytesAfterTheReplyLeaveTheCallDone) {
  controller_.setConfig(randomHeadendConfig(2));
  controller_.answerAll({.sequenceOffset = 3, .after = framed("more")});
  EXPECT_EQ(printed([this] { editor_.fetchHeadendConfig(); }), "");
  EXPECT_EQ(editor_.config, randomHeadendConfig(2));
  EXPECT_FALSE(editor_.pendingChanges);
  editor_.pendingChanges = true;
  EXPECT_EQ(printed([this] { editor_.commitHeadendConfig(); }), "");
  EXPECT_FALSE(editor_.pendingChanges);
  EXPECT_EQ(printed([this] { editor_.sendTDTRFInputConfig({}, {}); }), "");
}

// ---- time

TEST_F(RemoteCalls, ControllerMayComeAndGoBetweenCalls) {
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(printed([this] { editor_.commitHeadendConfig(); }), kCommitFailed);
    EXPECT_TRUE(editor_.pendingChanges);
    FakeController controller;
    EXPECT_EQ(printed([this] { editor_.commitHeadendConfig(); }), "");
    EXPECT_FALSE(editor_.pendingChanges);
    editor_.pendingChanges = true;
  }
}

TEST_F(ReachableController, ThatStaysSilentIsGivenASecondToConnectAndTwentyForEachWait) {
  controller_.answerAll(stalled(false, 0));
  std::vector<int> seconds;
  waits = &seconds;
  EXPECT_EQ(printed([this] { editor_.fetchHeadendConfig(); }), kFetchFailed);
  waits = nullptr;
  EXPECT_EQ(seconds, (std::vector<int>{1, 20, 20}));
  expectUnchanged();
}

// ---- the library's own words

TEST_F(RemoteCalls, ReasonOfAFailedConnectionGoesToTheLogAndNotToStandardError) {
  log_setup(7, 1);
  const auto fetch = [this] { printed([this] { editor_.fetchHeadendConfig(); }); };
  EXPECT_EQ(errorsOf(fetch), "");

  log_setup(3, 3);  // the log also on standard error: now it is seen
  const std::string log = errorsOf(fetch);
  EXPECT_NE(log.find("[thrift] TSocket::open()"), std::string::npos) << log;
  EXPECT_NE(log.find("Connection refused"), std::string::npos) << log;
}

}  // namespace
}  // namespace lineup::test
