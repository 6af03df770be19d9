// The prompt loop and the dispatcher as an installer sees them.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/console/edits_on_disk.h"
#include "tests/console/prompt_steps.h"
#include "tests/support/fake_controller.h"
#include "tests/support/program_process.h"

namespace lineup::test {
namespace {

using korvel::thrift::hub_module::HeadendConfig;
using Methods = std::vector<std::string>;

/// What "help" prints after its first line.
const std::string kHelp =
    R"text(  help                     This help
  show                     Show current lineup to be commited (also just pressing Return)
  clear                    Clears the whole lineup
  find SERVICE_NAME        Finds a SAT/TDT/Cable service in the DB
  findsat SERVICE_NAME     Finds a SAT service in the DB
  findtdt SERVICE_NAME     Finds a TDT service in the DB
  findcable SERVICE_NAME   Finds a cable service in the DB
  findip SERVICE_NAME      Finds an IP service in the DB
  adddvb SERVICE_ID        Add a DVB input service to the RF and IP lineups
  rfadddvb SERVICE_ID      Add a DVB input service to the RF lineup
  ipadddvb SERVICE_ID      Add a DVB input service to the IP lineup
  addenc SLOT_ID HDMI_ID   Add an ENC input service to the RF and IP lineups
  rfaddenc SLOT_ID HDMI_ID Add an ENC input service to the RF lineup
  ipaddenc SLOT_ID HDMI_ID Add an ENC input service to the IP lineup
  rfaddempty DVB_SVC_TYPE  Add an empty input service to the RF lineup
  addpls                   Add a non-standard PLS freq to the satellite scan params
  rmpls                    Remove a non-standard PLS freq from the satellite scan params
  rfmod [cofdm|qam]        Change RF output carrier modulation
  rfnum [4|6]              Change number of RF output carriers per OUT module
  drm [off/lynk/vsecure]   Change DRM working mode
  eit [off|actual|others]  Change EIT working mode
  type HEADEND_TYPE        Set the headend type
  id HEADEND_ID            Set the headend ID [1-10]
  country COUNTRY          Set the headend country
  vlan [1|2]               Sets the output VLAN 1: TV1, 2: TV1&TV2
  addipmux SLOT_ID IF_ID URL  Add a new mux to an IP input
  stdp DECRYPT_POLICY      Change Stream Type Decrypt Policy to video, sub or ttx
  rfinput                  status  Inputs status 
                           enable  [TDT1|TDT2|SAT1...SAT8|TDTALL|SATALL] enable input 
                           disable [TDT1|TDT2|SAT1...SAT8|TDTALL|SATALL] disable input 
  tdtscan                  status  Inputs status 
                           enable  [COFDM|QAMS] enable type scan 
                           disable [COFDM|QAMS] disable type scan 
 
  save CONFIG_FILE         Saves the configuration to a JSON file
  restore CONFIG_FILE      Restores the configuration from a JSON file
  reset                    Reset the lineup with the currently running lineup from ControllerTask
  commit                   Send the lineup to ControllerTask
  quit                     Quit the program (also just pressing Ctrl-D)
)text";

/// A controller that answers, and what the console writes to its prompt.
class Prompt : public testing::Test {
 protected:
  /// Expects that the line prints the message and that nothing is staged by it.
  void expectMessage(const std::string& line, const std::string& message) {
    EXPECT_EQ(outputOf(line + "\n"), "> " + message + "\n> \n") << line;
    EXPECT_EQ(controller.methods().back(), "getHeadendConfig") << line;
  }

  FakeController controller;
};

TEST_F(Prompt, EndOfInputEndsTheLoop) {
  EXPECT_EQ(outputOf(""), "> \n");
}

TEST_F(Prompt, QuitEndsTheLoop) {
  EXPECT_EQ(outputOf("quit\nrfmod qam\n"), "> \n");
}

TEST_F(Prompt, ALastLineWithoutALineFeedRuns) {
  EXPECT_EQ(outputOf("rfmod"), "> Current RF modulation is: COFDM\n> \n");
}

TEST_F(Prompt, HelpIsPrintedToTheByte) {
  EXPECT_EQ(outputOf("help\n"), "> Available commands:\n" + kHelp + "> \n");
}

TEST_F(Prompt, ShowsPendingChangesAndTheNote) {
  EXPECT_EQ(outputOf("rfmod qam\n"), "> Changed RF modulation to qam\n" + kPending + "\n" + kNote);
  EXPECT_EQ(outputOf("rfmod qam\nquit\n"),
            "> Changed RF modulation to qam\n" + kPending + "\n" + kNote);
  EXPECT_EQ(controller.methods(), (Methods{"getHeadendConfig", "getHeadendConfig"}));
}

TEST_F(Prompt, AnEmptyLineShowsTheConfiguration) {
  const std::string shown = outputOf("\n");
  EXPECT_EQ(shown.find("> Current lineup:\nHeadendConfig {\n"), 0U) << shown;
  EXPECT_EQ(shown, outputOf("show\n"));
}

TEST_F(Prompt, UnknownWordsAreInvalidCommands) {
  for (const char* line : {" ", " help", "QUIT", "Help", "co", "help\t", "quit\r", "x"}) {
    EXPECT_EQ(outputOf(std::string(line) + "\n"), "> " + kInvalidCommand + "> \n") << line;
  }
}

TEST_F(Prompt, OneTrailingBlankAndFurtherWordsAreIgnored) {
  EXPECT_EQ(outputOf("rfmod \neit off x y\n"),
            "> Current RF modulation is: COFDM\n> Changed EIT working mode to: off\n" + kPending +
                "\n" + kNote);
}

TEST_F(Prompt, TwoBlanksHaveAnEmptyWordBetweenThem) {
  expectMessage("rfmod  qam", "Please give a valid modulation type: cofdm or qam");
}

constexpr char kNoService[] = "Please give a SERVICE_ID";
constexpr char kNoEncoder[] = "Please give a SLOT_ID and HDMI_ID";
constexpr char kNoFile[] = "Please a configuration file";
constexpr char kNoParameter[] = "If you don't give me a parameter, there is little I can do";
constexpr char kNoInput[] = "Please enter RF input [TDT1, TDT2 | SAT1...SAT8 | TDTALL | SATALL]";
constexpr char kNoScan[] = "Please select the type of scan [COFDM|QAMS]";
constexpr char kNoMux[] = "Please give a SLOT_ID, IF_ID and URL";

/// Lines that lack a word, and what each says. The settings have their own messages.
constexpr std::pair<const char*, const char*> kTooFewWords[] = {
    {"adddvb", kNoService},       {"rfadddvb", kNoService},
    {"ipadddvb", kNoService},     {"addenc", kNoEncoder},
    {"addenc 5", kNoEncoder},     {"rfaddenc", kNoEncoder},
    {"rfaddenc 5", kNoEncoder},   {"ipaddenc", kNoEncoder},
    {"ipaddenc 5", kNoEncoder},   {"rfaddempty", "Please give a DVB service type"},
    {"addipmux", kNoMux},         {"addipmux 1", kNoMux},
    {"addipmux 1 2", kNoMux},     {"rfinput", kNoParameter},
    {"rfinput enable", kNoInput}, {"rfinput disable", kNoInput},
    {"tdtscan", kNoParameter},    {"tdtscan enable", kNoScan},
    {"tdtscan disable", kNoScan}, {"save", kNoFile},
    {"restore", kNoFile},
};

TEST_F(Prompt, EveryCommandSaysWhenItHasTooFewWords) {
  std::string lines;
  std::string expected;
  for (const auto& [line, message] : kTooFewWords) {
    lines += std::string(line) + "\n";
    expected += std::string("> ") + message + "\n";
  }
  EXPECT_EQ(outputOf(lines + "commit\n"), expected + "> > \n");
  EXPECT_EQ(controller.config(), HeadendConfig());
}

TEST_F(Prompt, UnknownSubcommandsAreRefusedWithoutNamingThem) {
  expectMessage("rfinput on", "unknown subcommand ");
  expectMessage("rfinput Status", "unknown subcommand ");
  expectMessage("tdtscan on TDT1", "unknown subcommand ");
  expectMessage("tdtscan ENABLE COFDM", "unknown subcommand ");
}

TEST_F(Prompt, CommitSendsTheConfigurationAndClearsThePrompt) {
  const std::string expected =
      "> " + idChanged(7) + kPending + "> " + idChanged(1) + kPending + "> \n";
  for (const char* word : {"commit", "c"}) {
    EXPECT_EQ(outputOf(std::string("id 7\n") + word + "\nid 1\ncommit\n"), expected);
  }
  const auto calls = controller.calls();
  ASSERT_EQ(calls.size(), 6U);
  EXPECT_EQ(calls[1].method, "setHeadendConfig");
  EXPECT_EQ(calls[1].config.headendGlobalConfig.headendId, 7);
}

TEST_F(Prompt, AFailedCommitKeepsTheChangesPending) {
  EditedConsole console(Start{});
  controller.answerNext({.kind = Answer::kNotReady});
  console.send("commit\n");
  EXPECT_EQ(console.readUntil(kPending), kCommitFailed + kPending);
  console.send("commit\n");
  EXPECT_EQ(console.readUntil("> "), "> ");
  EXPECT_EQ(console.finish().status, 0);
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 7);
}

TEST_F(Prompt, ResetDropsTheEditsAndClearsThePrompt) {
  HeadendConfig config;
  config.headendGlobalConfig.headendId = 3;
  controller.setConfig(config);
  EXPECT_EQ(outputOf("id 7\nreset\nid 3\n"),
            "> " + idChanged(7) + kPending + "> Headend was already set to: 3\n> \n");
}

TEST_F(Prompt, AFailedResetKeepsTheEdits) {
  EditedConsole console(Start{});
  controller.answerNext({.sentBytes = 0});
  console.send("reset\n");
  EXPECT_EQ(console.readUntil(kPending), kFetchFailed + kPending);
  console.send("id 7\n");
  EXPECT_EQ(console.readUntil(kPending), "Headend was already set to: 7\n" + kPending);
}

TEST(PromptWithoutController, WorksOnTheDefaultConfiguration) {
  const Outcome outcome = runConsole({}, "id\nvlan 2\nid 2\ncommit\nreset\n");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out, kFetchFailed + kGreeting +
                             "> Please give a headend id [1-10]\n> Output port was already: 2\n"
                             "> " +
                             idChanged(2) + kPending + kCommitFailed + kPending + kFetchFailed +
                             kPending + "\n" + kNote);
}

TEST(PromptWithoutController, CommitsToOneThatComesLate) {
  ProgramProcess console(Start{});
  console.readUntil(kFetchFailed + kGreeting + "> ");
  console.send("id 7\n");
  console.readUntil(idChanged(7) + kPending);
  const FakeController controller;
  console.send("commit\n");
  EXPECT_EQ(console.readUntil("> "), "> ");
  EXPECT_EQ(controller.config().headendGlobalConfig.headendId, 7);
  EXPECT_EQ(console.finish().status, 0);
}

}  // namespace
}  // namespace lineup::test
