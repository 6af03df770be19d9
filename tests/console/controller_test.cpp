// The built console and a controller that fails it: the lines that a user sees, what stays staged,
// and that the next command works.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/console/session.h"
#include "tests/support/encoding.h"
#include "tests/support/fake_controller.h"
#include "tests/support/random_records.h"
#include "tests/support/rf_inputs.h"

namespace lineup::test {
namespace {

using korvel::thrift::hub_module::HeadendConfig;
using korvel::thrift::hub_module::HeadendStatus;

const std::string kFetchError = "ERROR: Could not get current config from ControllerTask\n";
const std::string kStatusError = "ERROR: Could not get current status from ControllerTask\n";
const std::string kCommitError = "ERROR: Could not set LineupConfig to ControllerTask\n";
const std::string kIdChanged = "Headend id changed to: 7. Please remember to commit the changes.\n";

class ConsoleAndController : public testing::Test {
 protected:
  /// Runs a session in which the controller answers everything behind the first fetch so.
  void expectSessionWith(const Answer& answer, const std::vector<Step>& steps) {
    controller_.answerNext({});
    controller_.answerAll(answer);
    expectSession(steps);
  }

  FakeController controller_;
};

/// The ways in which an answer can be no answer, none of which takes the console a wait.
std::vector<Answer> uselessAnswers() {
  return {{.kind = Answer::kNotReady},
          {.kind = Answer::kApplicationException},
          {.name = "resetFactoryDefaults"},
          {.type = apache::thrift::protocol::T_CALL},
          {.sentBytes = 0},
          {.sentBytes = 3},
          {.sentBytes = 30},
          {.kind = Answer::kBytes, .bytes = "HTTP/1.1 200 OK\r\n\r\n", .hangsUp = true},
          {.kind = Answer::kBytes, .bytes = framed("garbage")},
          {.kind = Answer::kBytes, .bytes = framed("")},
          {.kind = Answer::kBytes, .bytes = std::string("\xff\xff\xff\xff", 4)},
          {.kind = Answer::kBytes, .bytes = std::string("\x7f\xff\xff\xff", 4), .hangsUp = true}};
}

TEST_F(ConsoleAndController, EveryUselessAnswerIsAnErrorLineAndLeavesTheEditsStaged) {
  for (const Answer& answer : uselessAnswers()) {
    controller_.setConfig(HeadendConfig());
    expectSessionWith(answer, {{"id 7", kIdChanged},
                               {"commit", kCommitError},
                               {"c", kCommitError},
                               {"reset", kFetchError}});
  }
}

TEST_F(ConsoleAndController, UselessAnswerToTheFirstFetchLeavesTheDefaults) {
  controller_.setConfig(randomHeadendConfig(1));
  for (const Answer& answer : uselessAnswers()) {
    controller_.answerNext(answer);
    const Outcome outcome = runConsole({}, "vlan 2\neit off\ncommit\n");
    EXPECT_EQ(outcome.out.substr(0, kFetchError.size() + 41),
              kFetchError + "Enter 'help' and press return for help\n> ");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
    HeadendConfig expected;
    expected.lineupConfig.globalConfig.eitMode = 0;
    EXPECT_EQ(controller_.config(), expected);
  }
}

TEST_F(ConsoleAndController, ReplyWithAnotherSequenceNumberAndMoreBehindItIsUnderstood) {
  expectSessionWith({.sequenceOffset = 3, .behind = framed("more")},
                    {{"id 7", kIdChanged}, {"commit", "", false}, {"reset", "", false}});
  EXPECT_EQ(controller_.config().headendGlobalConfig.headendId, 7);
}

TEST_F(ConsoleAndController, ReplyInSinglePacketsOfAByteIsUnderstood) {
  controller_.setConfig(randomHeadendConfig(1));
  controller_.answerAll({.byteByByte = true});
  expectSession({{"id 7", kIdChanged}, {"commit", "", false}, {"reset", "", false}});
  HeadendConfig expected = randomHeadendConfig(1);
  expected.headendGlobalConfig.headendId = 7;
  EXPECT_EQ(controller_.config(), expected);
}

TEST_F(ConsoleAndController, FetchCutAtAnyByteIsAnErrorLineAndTheNextOneWorks) {
  const size_t size = recordReply("getHeadendConfig", toBinary(HeadendConfig())).size();
  controller_.answerNext({});
  std::vector<Step> steps = {{"id 7", kIdChanged}};
  for (size_t bytes = 0; bytes < size; ++bytes) {
    controller_.answerNext({.sentBytes = bytes});
    steps.push_back({"reset", kFetchError});
  }
  steps.push_back({"reset", "", false});
  expectSession(steps);
}

TEST_F(ConsoleAndController, CommitWhoseReplyIsCutAtAnyByteStaysPendingAndTheNextOneWorks) {
  const size_t size = recordReply("setHeadendConfig", toBinary(HeadendStatus())).size();
  controller_.answerNext({});
  std::vector<Step> steps = {{"id 7", kIdChanged}};
  for (size_t bytes = 0; bytes < size; ++bytes) {
    controller_.answerNext({.sentBytes = bytes});
    steps.push_back({"commit", kCommitError});
  }
  steps.push_back({"commit", "", false});
  expectSession(steps);
  EXPECT_EQ(controller_.config().headendGlobalConfig.headendId, 7);
}

TEST_F(ConsoleAndController, FailedSwitchOfASatelliteInputNamesIt) {
  HeadendStatus status;
  switchInputs(status, "----------");
  controller_.setStatus(status);
  controller_.answerNext({});                           // the first fetch
  controller_.answerNext({});                           // the status
  controller_.answerNext({.kind = Answer::kNotReady});  // the switch
  const Outcome outcome = runConsole({}, "rfinput enable SAT5\n");
  EXPECT_NE(
      outcome.out.find("ERROR: Could not set SATRFInputConfig for RFInput (7) to ControllerTask\n"),
      std::string::npos)
      << outcome.out;
  EXPECT_EQ(outcome.status, 0);
}

TEST_F(ConsoleAndController, FailedFetchOfTheStatusIsAnErrorLine) {
  controller_.answerNext({});
  controller_.answerNext({.sentBytes = 10});
  const Outcome outcome = runConsole({}, "rfinput status\n");
  EXPECT_NE(outcome.out.find(kStatusError), std::string::npos) << outcome.out;
}

TEST_F(ConsoleAndController, FortyMegabytesAreFetchedAndCommitted) {
  HeadendConfig config = randomHeadendConfig(1);
  for (int32_t key = 1; key <= 10000; ++key) {
    config.lineupConfig.dvbInputServices[key].service.name = std::string(4096, 'n');
  }
  controller_.setConfig(config);
  expectSession({{"id 7", kIdChanged}, {"commit", "", false}});
  config.headendGlobalConfig.headendId = 7;
  EXPECT_TRUE(controller_.config() == config);
}

TEST(ConsoleWithoutController, FindsOneThatComesLate) {
  ConsoleProcess console(Start{});
  console.readUntil(kFetchError + "Enter 'help' and press return for help\n> ");
  console.send("id 7\n");
  console.readUntil(kIdChanged + "(changes to commit) > ");
  console.send("commit\n");
  console.readUntil(kCommitError + "(changes to commit) > ");
  const FakeController controller;
  console.send("commit\n");
  EXPECT_EQ(console.readUntil("> "), "> ");
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 7);
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.status, 0);
}

}  // namespace
}  // namespace lineup::test
