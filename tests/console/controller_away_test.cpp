// The built console and a controller that goes away and comes back between and during the calls of
// every command that talks to it: the lines that a user sees, and that the next command works.

#include <gtest/gtest.h>

#include <cstddef>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tests/console/prompt_steps.h"
#include "tests/support/encoding.h"
#include "tests/support/fake_controller.h"
#include "tests/support/file_content.h"
#include "tests/support/records.h"
#include "tests/support/rf_inputs.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

using korvel::thrift::hub_module::HeadendConfig;
using korvel::thrift::hub_module::HeadendStatus;

/// What is printed for a call that fails.
const std::map<std::string, std::string> kErrors = {{"getHeadendConfig", kFetchFailed},
                                                    {"getHeadendStatus", kStatusFailed},
                                                    {"setHeadendConfig", kCommitFailed},
                                                    {"setTDTRFInputConfig", kTdtFailed},
                                                    {"setSATRFInputConfig", satFailed(7)}};

/// The inputs of the controller that is there at the start: SAT8, which no command switches, tells
/// them from those of later ones.
constexpr char kFirstInputs[] = "+--------+";

struct Command {
  std::string name;
  std::string line;                   ///< PATH in it stands for a file
  std::vector<std::string> calls;     ///< what it asks of the controller
  bool hasEdit = false;               ///< whether an edit is pending before it, and none after it
  std::string printed{};              ///< after the lines of the calls that fail
  std::string inputs = "+---------";  ///< those of the controller before it
  std::string inputsAfter = inputs;   ///< and after it
  bool showsInputs = false;
};

const std::vector<std::string> kSwitchTdt = {"getHeadendStatus", "setTDTRFInputConfig",
                                             "getHeadendStatus"};
const std::vector<std::string> kSwitchSat = {"getHeadendStatus", "setSATRFInputConfig",
                                             "getHeadendStatus"};

const Command kCommands[] = {
    {.name = "Commit", .line = "commit", .calls = {"setHeadendConfig"}, .hasEdit = true},
    {.name = "C", .line = "c", .calls = {"setHeadendConfig"}, .hasEdit = true},
    {.name = "Reset", .line = "reset", .calls = {"getHeadendConfig"}, .hasEdit = true},
    {.name = "Save",
     .line = "save PATH",
     .calls = {"getHeadendConfig"},
     .printed = savedTo("PATH")},
    {.name = "Restore",
     .line = "restore PATH",
     .calls = {"setHeadendConfig"},
     .printed = restoredFrom("PATH")},
    {.name = "ShowInputs",
     .line = "rfinput status",
     .calls = {"getHeadendStatus"},
     .showsInputs = true},
    {.name = "EnableTDT2",
     .line = "rfinput enable TDT2",
     .calls = kSwitchTdt,
     .inputsAfter = "++--------",
     .showsInputs = true},
    {.name = "DisableTDT1",
     .line = "rfinput disable TDT1",
     .calls = kSwitchTdt,
     .inputsAfter = "----------",
     .showsInputs = true},
    {.name = "EnableSAT5",
     .line = "rfinput enable SAT5",
     .calls = kSwitchSat,
     .inputsAfter = "+-----+---",
     .showsInputs = true},
    {.name = "DisableSAT5",
     .line = "rfinput disable SAT5",
     .calls = kSwitchSat,
     .inputs = "+-----+---",
     .inputsAfter = "+---------",
     .showsInputs = true}};

/// Names a test that fails.
void PrintTo(const Command& command, std::ostream* out) {
  *out << command.line;
}

/// What a controller holds that has come back.
HeadendConfig startedConfig() {
  HeadendConfig config;
  config.headendGlobalConfig.headendName = "North";
  return config;
}

HeadendStatus withInputs(const std::string& states) {
  HeadendStatus status;
  switchInputs(status, states);
  return status;
}

/// A console that has seen a controller's inputs and then lost it.
class EveryCommandOfAController : public testing::TestWithParam<Command> {
 protected:
  /// The numbers of the command's calls that fail.
  using Failures = std::set<std::size_t>;

  EveryCommandOfAController() {
    FakeController first;
    first.setStatus(withInputs(kFirstInputs));
    console_.readUntil("> ");
    console_.send("rfinput status\n");
    EXPECT_EQ(console_.readUntil("> "), inputTable(heldInputs_) + "> ");
  }

  std::unique_ptr<FakeController> startController() const {
    auto controller = std::make_unique<FakeController>();
    controller->setConfig(startedConfig());
    controller->setStatus(withInputs(command_.inputs));
    return controller;
  }

  Failures everyCall() const {
    Failures all;
    for (std::size_t call = 0; call < command_.calls.size(); ++call) {
      all.insert(call);
    }
    return all;
  }

  /// Types the command, with a headend id of its own in the edit or the file that it sends, and
  /// expects what it prints when these calls fail.
  void expectCommand(const Failures& failures) {
    ++id_;
    writeFile(path_, toJson(withId(id_)));
    if (command_.hasEdit) {
      console_.send("id " + std::to_string(id_) + "\n");
      EXPECT_EQ(console_.readUntil("> "), idChanged(id_) + promptFor(true));
    }
    console_.send(withPath(command_.line) + "\n");
    EXPECT_EQ(console_.readUntil("> "),
              outputWith(failures) + promptFor(command_.hasEdit && !failures.empty()));
  }

  /// Expects that the controller, fresh from startController(), was sent the command as it was last
  /// typed, and the file was written if the command does so.
  void expectEffectOn(const FakeController& controller) const {
    const bool sends = command_.calls[0] == "setHeadendConfig";
    EXPECT_EQ(controller.methods(), command_.calls);
    EXPECT_EQ(controller.config(), sends ? withId(id_) : startedConfig());
    EXPECT_EQ(inputStates(controller.status()), command_.inputsAfter);
    if (command_.name == "Save") {
      EXPECT_EQ(contentOf(path_), toJson(startedConfig()));
    }
  }

  void expectProperEnd() {
    const Outcome outcome = console_.finish();
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.status, 0);
  }

 private:
  /// All that the command prints, and in heldInputs_ the inputs of the status that it holds then.
  std::string outputWith(const Failures& failures) {
    std::string text;
    std::string inputs = command_.inputs;
    for (std::size_t call = 0; call < command_.calls.size(); ++call) {
      const std::string& method = command_.calls[call];
      if (failures.contains(call)) {
        text += kErrors.at(method);
      } else if (method == "getHeadendStatus") {
        heldInputs_ = inputs;
      } else {
        inputs = command_.inputsAfter;
      }
    }
    return text + withPath(command_.printed) +
           (command_.showsInputs ? inputTable(heldInputs_) : "");
  }

  /// `text` with the file for the word PATH.
  std::string withPath(std::string text) const {
    const std::size_t place = text.find("PATH");
    return place == std::string::npos ? text : text.replace(place, 4, path_);
  }

  std::string heldInputs_ = kFirstInputs;
  int id_ = 1;
  TemporaryFolder folder_;
  const std::string path_ = folder_.file("config.json");

 protected:
  const Command command_ = GetParam();
  ProgramProcess console_{Start{}};
};

TEST_P(EveryCommandOfAController, WorksWheneverThereIsOne) {
  // Away, there, at once another in its place, away, there.
  for (const bool there : {false, true, true, false, true}) {
    const auto controller = there ? startController() : nullptr;
    expectCommand(there ? Failures() : everyCall());
    if (there) {
      expectEffectOn(*controller);
    }
  }
  expectProperEnd();
}

TEST_P(EveryCommandOfAController, WorksAfterOneThatDiedDuringAnyOfItsCalls) {
  const Answer hangUp{.kind = Answer::kBytes, .hangsUp = true};
  const Answer hangUpInReply{.kind = Answer::kBytes, .bytes = {'\0', '\0', '\0'}, .hangsUp = true};
  for (std::size_t call = 0; call < command_.calls.size(); ++call) {
    for (const Answer& death : {hangUp, hangUpInReply}) {
      const auto dying = startController();
      dying->answerRightly(call);
      dying->answerNext(death);
      expectCommand({call});
      EXPECT_EQ(dying->methods(), command_.calls);
    }
    const auto controller = startController();
    expectCommand({});
    expectEffectOn(*controller);
  }
  expectProperEnd();
}

INSTANTIATE_TEST_SUITE_P(Commands, EveryCommandOfAController, testing::ValuesIn(kCommands),
                         [](const auto& instance) { return instance.param.name; });

}  // namespace
}  // namespace lineup::test
