// lineupctl and a controller that is away, refuses, hangs, tears or lies, at each call of each
// command: the status says so, and nothing is printed as done that was not.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "model/headend_places.h"
#include "tests/ctl/ctl_process.h"
#include "tests/simulator/simulator_process.h"
#include "tests/support/encoding.h"
#include "tests/support/fake_controller.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

using korvel::thrift::hub_module::HeadendConfig;
using korvel::thrift::hub_module::HeadendStatus;
using Words = std::vector<std::string>;

constexpr char kGetConfig[] = "getHeadendConfig";
constexpr char kGetStatus[] = "getHeadendStatus";
constexpr char kSetConfig[] = "setHeadendConfig";

/// A command, the calls that it makes, and what it prints before the last of them.
struct Command {
  Words words;
  Words calls;
  std::string printedBeforeSending;
};

class CtlWithFaultyController : public testing::Test {
 protected:
  CtlWithFaultyController() {
    writeFile(file_, toJson(withId(7)));
    std::filesystem::create_directory(folder_.file("copies"));
  }

  std::vector<Command> commands() const {
    return {{{"show"}, {kGetConfig, kGetStatus}, ""},
            {{"show", "--format=json"}, {kGetConfig}, ""},
            {{"show", "--format=csv"}, {kGetConfig}, ""},
            {{"diff", file_}, {kGetConfig}, ""},
            {{"diff", "--format=json", file_, "running"}, {kGetConfig}, ""},
            {{"save", folder_.file("saved.json")}, {kGetConfig}, ""},
            {{"backup", folder_.file("copies")}, {kGetConfig}, ""},
            {{"apply", "--dry-run", file_}, {kGetConfig}, ""},
            {{"apply", "--expect", file_, file_}, {kGetConfig}, ""},
            {{"apply", file_}, {kGetConfig, kSetConfig, kGetConfig}, "id: 1 -> 7\n"}};
  }

  /// Runs each command with each of its calls answered by `fault`, and expects status 4.
  void expectEachCallToFail(const Answer& fault) {
    expectEachCallToFail([&](const std::string& /*call*/) { return fault; });
  }

  /// Likewise, with the faults that `faultFor` returns for the calls.
  void expectEachCallToFail(const std::function<Answer(const std::string& call)>& faultFor) {
    for (const Command& command : commands()) {
      for (std::size_t call = 0; call < command.calls.size(); ++call) {
        FakeController controller;
        controller.answerRightly(call);
        controller.answerNext(faultFor(command.calls[call]));
        const Outcome outcome = runCtl(command.words);
        expectFailure(outcome, call == 0 ? "" : command.printedBeforeSending);
        EXPECT_EQ(controller.calls().size(), call + 1) << command.words[0];
      }
    }
    expectNothingWritten();
    expectWaitToGoOn(faultFor(kGetConfig));
  }

  /// "wait" does not take the fault for an answer: it asks again, until its time has run out.
  static void expectWaitToGoOn(const Answer& fault) {
    FakeController controller;
    controller.answerNext(fault);
    controller.answerNext(fault);
    expectCtl({"wait"}, 0, "");
    EXPECT_EQ(controller.calls().size(), 3U);
    controller.answerAll(fault);
    const Outcome outcome = runCtl({"wait", "--timeout", "0.3"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err.find("lineupctl: " + kController), 0U) << outcome.err;
  }

  static void expectFailure(const Outcome& outcome, const std::string& out) {
    EXPECT_EQ(outcome.status, 4) << outcome.signal;
    EXPECT_EQ(outcome.out, out);
    EXPECT_EQ(outcome.err.find("lineupctl: " + kController), 0U) << outcome.err;
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
  }

  void expectNothingWritten() const {
    EXPECT_FALSE(std::filesystem::exists(folder_.file("saved.json")));
    EXPECT_TRUE(std::filesystem::is_empty(folder_.file("copies")));
  }

  TemporaryFolder folder_;
  const std::string file_ = folder_.file("config.json");
};

TEST_F(CtlWithFaultyController, ThatIsAwayMakesEachCommandSaySo) {
  for (const Command& command : commands()) {
    expectFailure(runCtl(command.words), "");
  }
  expectNothingWritten();
  expectCtl({"wait", "--timeout", "0.3"}, 1, "", kController + "no answer within 0.3 s");
}

TEST_F(CtlWithFaultyController, ThatIsNotReadyIsSaidToBe) {
  FakeController controller;
  controller.answerNext({.kind = Answer::kNotReady});
  expectCtl({"diff", file_}, 4, "", kController + "the controller is not ready: starting");
}

TEST_F(CtlWithFaultyController, ThatRefusesIsNotSaidToBeSilent) {
  FakeController controller;
  controller.answerNext({.kind = Answer::kNotReady});
  controller.answerAll(stalled(false, 0));
  expectCtl({"wait", "--timeout", "3"}, 1, "",
            kController + "the controller is not ready: starting; no better answer within 3 s");
}

/// A fault that any call may meet.
struct Fault {
  const char* name;
  Answer answer;
};

void PrintTo(const Fault& fault, std::ostream* out) {
  *out << fault.name;
}

class CtlWithFault : public CtlWithFaultyController, public testing::WithParamInterface<Fault> {};

TEST_P(CtlWithFault, SaysSoAtEachCallOfEachCommand) {
  expectEachCallToFail(GetParam().answer);
}

// What else a reply may have that it should not, is refused where replies are read.
INSTANTIATE_TEST_SUITE_P(
    Controller, CtlWithFault,
    testing::Values(Fault{"NotReady", {.kind = Answer::kNotReady}},
                    Fault{"ApplicationException", {.kind = Answer::kApplicationException}},
                    Fault{"HangUpAtOnce", {.sentBytes = 0, .hangsUp = true}},
                    Fault{"HangUpInTheMiddle", {.sentBytes = 40, .hangsUp = true}},
                    Fault{"AnotherCall", {.name = "getSomethingElse"}},
                    Fault{"Nonsense", {.kind = Answer::kBytes, .bytes = framed("no message")}}),
    [](const auto& instance) { return instance.param.name; });

// What is sent back with a configuration is not used.
TEST_F(CtlWithFaultyController, ThatSendsAnotherRecordThanItIsAskedForIsRefused) {
  expectEachCallToFail([](const std::string& call) {
    const std::string record =
        call == kGetConfig ? toBinary(HeadendStatus()) : toBinary(HeadendConfig());
    return recordAnswer(call == kSetConfig ? "setHeadendSomething" : call, record);
  });
}

// What it sends back with the configuration says nothing of what runs; reading back does.
TEST_F(CtlWithFaultyController, ThatSaysItHasTakenOverWhatItHasNotIsFoundOut) {
  const Answer lie = recordAnswer(kSetConfig, toBinary(HeadendStatus()));
  for (const Words& words : {Words{"apply", file_}, Words{"apply", "--expect", "running", file_}}) {
    FakeController controller;
    controller.answerRightly();
    controller.answerNext(lie);
    expectCtl(words, 5, "id: 1 -> 7\nid: 7 -> 1\n", file_ + ": was sent, but something else runs");
    EXPECT_EQ(controller.methods(), (Words{kGetConfig, kSetConfig, kGetConfig}));
  }
}

/// Applies a file to a controller that answers the first `good` calls and the next with `fault`;
/// expects a complaint that ends with `ending`.
void expectApplyToEndWith(const std::string& file, std::size_t good, const Answer& fault,
                          const std::string& ending) {
  FakeController controller;
  controller.answerRightly(good);
  controller.answerNext(fault);
  const Outcome outcome = runCtl({"apply", file});
  EXPECT_EQ(outcome.status, 4);
  EXPECT_EQ(outcome.out, "id: 1 -> 7\n");
  EXPECT_TRUE(outcome.err.starts_with("lineupctl: " + kController)) << outcome.err;
  EXPECT_TRUE(outcome.err.ends_with(ending + "\n")) << outcome.err;
}

TEST_F(CtlWithFaultyController, SaysWhatIsKnownOfWhatWasSent) {
  const Answer refusal{.kind = Answer::kNotReady};
  expectApplyToEndWith(file_, 1, {.sentBytes = 10, .hangsUp = true},
                       "; whether " + file_ + " was taken over is not known");
  expectApplyToEndWith(file_, 1, refusal, ": starting; " + file_ + " was not taken over");
}

// Its output is more than a pipe holds, so that it waits before it sends.
TEST_F(CtlWithFaultyController, SaysThatNothingWasTakenOverWhereItCouldNotConnect) {
  HeadendConfig config;
  config.installerInfo.name = std::string(200'000, 'x');
  writeFile(file_, toJson(config));
  auto controller = std::make_unique<FakeController>();
  ProgramProcess applying(ctl({"apply", file_}));
  controller->waitForClosed(1);
  controller.reset();
  const Outcome outcome = applying.finish();
  EXPECT_EQ(outcome.status, 4);
  EXPECT_EQ(outcome.err, "lineupctl: " + kAway + "; " + file_ + " was not taken over\n");
}

TEST_F(CtlWithFaultyController, SaysThatWhatWasSentCouldNotBeReadBack) {
  FakeController controller;
  controller.answerRightly(2);
  controller.answerNext({.kind = Answer::kNotReady});
  expectCtl({"apply", file_}, 4, "id: 1 -> 7\n",
            kController + "the controller is not ready: starting; " + file_ +
                " was sent, but could not be read back");
}

// Each wait of a call has a time-out of 20 seconds. No other test here lets it run out, and the
// processes wait side by side.
TEST_F(CtlWithFaultyController, ThatHangsIsGivenUp) {
  std::vector<std::string> faults = {"--in-memory", "--no-catalogue",
                                     "--delay",     "getHeadendStatus=600",
                                     "--delay",     "setHeadendConfig:1=600"};
  for (int call = 4; call < 20; ++call) {  // the first three are answered
    faults.insert(faults.end(), {"--delay", "getHeadendConfig:" + std::to_string(call) + "=600"});
  }
  SimulatorProcess simulator(folder_, faults, kControllerPort);
  const auto begin = std::chrono::steady_clock::now();
  // At their later calls: the status, the sending and the reading back.
  std::deque<ProgramProcess> late;
  for (const Words& words : {Words{"show"}, Words{"apply", file_}, Words{"apply", file_}}) {
    late.emplace_back(ctl(words));
    EXPECT_EQ(simulator.nextLine().find("getHeadendConfig: "), 0U);
  }
  std::deque<ProgramProcess> early;
  for (const Command& command : commands()) {
    early.emplace_back(ctl(command.words));
  }
  expectCtl({"wait", "--timeout", "1"}, 1, "", kController + "no answer within 1 s");
  for (ProgramProcess& process : early) {
    expectFailure(process.finish(), "");
  }
  expectFailure(late[0].finish(), "");
  std::set<std::string> said;
  for (ProgramProcess* const process : {&late[1], &late[2]}) {
    const Outcome outcome = process->finish();
    EXPECT_EQ(outcome.status, 4);
    EXPECT_EQ(outcome.out.find("id: 1 -> 7\n"), 0U) << outcome.out;
    said.insert(outcome.err.substr(outcome.err.find("; ")));
  }
  EXPECT_EQ(said,
            (std::set<std::string>{"; whether " + file_ + " was taken over is not known\n",
                                   "; " + file_ + " was sent, but could not be read back\n"}));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(90));
  expectNothingWritten();
}

// Each byte begins the time-out anew, whether a signal is pending or not.
TEST_F(CtlWithFaultyController, ThatAnswersSlowlyIsHeardToTheEndAlsoAfterASignal) {
  FakeController controller;
  controller.answerRightly();
  controller.answerNext({.byteByByte = true, .pause = std::chrono::milliseconds(30)});
  ProgramProcess applying(ctl({"apply", file_}));
  controller.waitForCalls(2);
  const auto begin = std::chrono::steady_clock::now();
  applying.signal(SIGTERM);
  const Outcome outcome = applying.finish();
  EXPECT_EQ(outcome.signal, SIGTERM);
  EXPECT_EQ(outcome.out, "id: 1 -> 7\n");
  EXPECT_EQ(outcome.err, "lineupctl: " + file_ + kEndedBeforeReadBack + "\n");
  EXPECT_GT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

}  // namespace
}  // namespace lineup::test
