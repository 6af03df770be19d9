// The command line of lineupctl, and "show", "diff", "save" and "wait", through the built program.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "model/headend_places.h"
#include "tests/ctl/ctl_process.h"
#include "tests/support/expect_for_owner_alone.h"
#include "tests/support/random_records.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;
namespace general = korvel::thrift::general;
using korvel::thrift::hub_module::HeadendConfig;
using korvel::thrift::hub_module::HeadendStatus;
using nlohmann::json;
using Words = std::vector<std::string>;

// ---- usage

TEST_F(Ctl, RefusesAWrongCommandLine) {
  expectCtl({}, 2, "", "a command is missing; \"lineupctl --help\" lists them");
  expectCtl({"frob"}, 2, "", "there is no command \"frob\"; \"lineupctl --help\" lists them");
  expectCtl({"show", "--colour"}, 2, "", "show: there is no option --colour");
  expectCtl({"show", "-x"}, 2, "", "show: there is no option -x");
  expectCtl({"show", "a", "-xy"}, 2, "", "show: there is no option -xy");
  expectCtl({"show", "--format", "-xy", "b", "-xyz"}, 2, "", "show: there is no option -xyz");
  expectCtl({"show", "-é"}, 2, "", "show: there is no option -é");
  expectCtl({"show", "-\xe9"}, 2, "", "show: there is no option -\\xe9");
  expectCtl({"show", "--format"}, 2, "", "show: --format needs a value");
  expectCtl({"show", "--format", "xml"}, 2, "", "--format: \"xml\" is none of text, json, csv");
  expectCtl({"show", "--section", "x"}, 2, "",
            "--section: \"x\" is none of settings, rf, ip, slots, ipinputs, rfinputs, scan");
  expectCtl({"show", "--format=json", "--section=rf"}, 2, "",
            "show: json is of the whole configuration, without --section");
  expectCtl({"show", "--format=csv", "--section=rf", "--section=ip"}, 2, "",
            "show: csv is of one lineup, --section rf or --section ip");
  expectCtl({"show", "--format=csv", "--section=scan"}, 2, "",
            "show: csv is of one lineup, --section rf or --section ip");
  expectCtl({"show", "a", "b"}, 2, "", "show: \"b\" is one operand too many");
  expectCtl({"diff"}, 2, "", "diff: an operand is missing");
  expectCtl({"diff", "-", "-"}, 2, "", "diff: only one of the two can be standard input");
  expectCtl({"diff", "--format", "csv", "a"}, 2, "", "--format: \"csv\" is none of text, json");
  expectCtl({"save"}, 2, "", "save: an operand is missing");
  expectCtl({"apply", "--dry-run=yes", "a"}, 2, "", "apply: there is no option --dry-run=yes");
  expectCtl({"apply", "--keep", "3", "a"}, 2, "", "apply: --keep goes with --backup");
  for (const Words& twice : std::vector<Words>{{"apply", "--expect", "-", "-"},
                                               {"apply", "--patch", "-", "-"},
                                               {"apply", "--expect", "-", "--patch", "-", "a"},
                                               {"apply", "--patch", "-", "--patch", "-", "a"}}) {
    expectCtl(twice, 2, "", "apply: only one file can be standard input");
  }
  expectCtl({"backup", "--keep", "0", "d"}, 2, "", "--keep: \"0\" is no whole number from 1");
  expectCtl({"backup", "--keep", "3x", "d"}, 2, "", "--keep: \"3x\" is no whole number from 1");
  expectCtl({"wait", "--timeout", "0"}, 2, "", "--timeout: \"0\" is no number of seconds");
  expectCtl({"wait", "--timeout", "soon"}, 2, "", "--timeout: \"soon\" is no number of seconds");
  expectCtl({"wait", "now"}, 2, "", "wait: \"now\" is one operand too many");
  expectCtl({"--help", "show"}, 2, "", "--help: \"show\" is one operand too many");
  expectCtl({"--version", ""}, 2, "", "--version: \"\" is one operand too many");
}

// Which of the two is meant is not for the program to guess.
TEST_F(Ctl, RefusesAnOptionThatIsGivenTwice) {
  for (const Words& words : std::vector<Words>{{"show", "--format=json", "--format=csv", "a"},
                                               {"apply", "--expect", "a", "--expect", "b", "c"},
                                               {"apply", "--backup=a", "--backup=a", "c"},
                                               {"backup", "--keep=3", "--keep=30", "a"},
                                               {"wait", "--timeout=3", "--timeout=30"}}) {
    const std::string option = words[1].substr(0, words[1].find('='));
    expectCtl(words, 2, "", words[0] + ": " + option + " is given twice");
  }
  const std::string file = fileWith(withId(7));
  EXPECT_EQ(runCtl({"show", "--section=rf", "--section=ip", file}).status, 0);
}

TEST_F(Ctl, EscapesWhatATerminalWouldObeyInItsFailures) {
  expectCtl({"show", "\x1b[2J\n\u2028\xe9 é \\"}, 3, "",
            "\\x1b[2J\\n\\xe2\\x80\\xa8\\xe9 é \\: No such file or directory");
}

// As of a script's variable that is not set.
TEST_F(Ctl, RefusesEmptyNames) {
  for (const Words& words : std::vector<Words>{{"show", ""},
                                               {"diff", ""},
                                               {"diff", "", "a"},
                                               {"diff", "a", ""},
                                               {"save", ""},
                                               {"apply", ""},
                                               {"backup", ""}}) {
    expectCtl(words, 2, "", words[0] + ": an operand is empty");
  }
  expectCtl({"apply", "--expect", "", "a"}, 2, "", "apply: --expect needs a value");
  expectCtl({"apply", "--patch=", "a"}, 2, "", "apply: --patch needs a value");
  expectCtl({"apply", "--backup=", "a"}, 2, "", "apply: --backup needs a value");
}

TEST_F(Ctl, SaysWhatItCanDo) {
  const Outcome help = runCtl({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(help.out.substr(0, 55), "usage: lineupctl COMMAND [OPTION]... [OPERAND]...\n\n  sh");
  expectCtl({"apply", "--help"}, 0, help.out);
  expectCtl({"apply", "a", "b", "--help"}, 0, help.out);
  expectCtl({"apply", "--patch", "--help", "none"}, 3, "", "none: No such file or directory");
  expectCtl({"apply", "--patch", "--help"}, 2, "", "apply: an operand is missing");
  expectCtl({"frob", "--help"}, 2, "",
            "there is no command \"frob\"; \"lineupctl --help\" lists them");
  expectCtl({"catalogue", "--", "--help"}, 3, "",
            std::string(kCataloguePath) + ": unable to open database file");
  EXPECT_EQ(runCtl({"--version"}).out.substr(0, 10), "lineupctl ");
}

// ---- show

TEST_F(CtlWithController, ShowsTheSectionsOfWhatRuns) {
  HeadendConfig config = withId(7);
  config.lineupConfig.emptyInputServices[1].service.serviceType = 2;
  controller_.setConfig(config);
  HeadendStatus status;
  status.satRFInputs[general::RFInputId::SAT1].config.enabled = true;
  controller_.setStatus(status);
  expectCtl(
      {"show"}, 0,
      "Settings\nSETTING        VALUE\ntype           standard\nid             7\n"
      "country        not set\nrfmod          cofdm\nrfnum          4\ndrm            off\n"
      "eit            actual\nstdp           video\nvlan           2\n"
      "tdtscan cofdm  disabled\ntdtscan qams   disabled\n\nRF lineup: none\n\n"
      "IP lineup: none\n\nReserved slots\nSLOT  TYPE  POSITION\n1     2\n\nIP inputs: none\n\n"
      "RF inputs\nINPUT  STATE    LOCKED\nSAT1   enabled  no\n\nSatellite scan: none\n");
  expectCtl({"show", "--section", "slots", "--section=rfinputs", "running"}, 0,
            "Reserved slots\nSLOT  TYPE  POSITION\n1     2\n\n"
            "RF inputs\nINPUT  STATE    LOCKED\nSAT1   enabled  no\n");
}

TEST_F(Ctl, ShowsAFileWithoutAController) {
  HeadendConfig config;
  config.lineupConfig.rfEntries.resize(1);
  config.lineupConfig.rfEntries[0].name = "News, \"One\"";
  const std::string file = fileWith(config);
  const Outcome whole = runCtl({"show", file});
  EXPECT_EQ(whole.status, 0);
  EXPECT_NE(whole.out.find("\nIP inputs: none\n\nSatellite scan: none\n"), std::string::npos);
  expectCtl({"show", "--section=rf", "--section=rfinputs", file}, 2, "",
            "--section: \"rfinputs\" is only of what runs");
  expectCtl({"show", "--section=rf", file}, 0,
            "RF lineup\nPOSITION  NAME         KIND  SOURCE        SID  TYPE\n"
            "1         News, \"One\"  DVB   no service 0\n");
  expectCtl({"show", "--format=csv", file}, 0,
            "position,name,kind,source,SID,type\n1,\"News, \"\"One\"\"\",DVB,no service 0,,\n");
  expectCtl({"show", "--format=csv", "--section=ip", "-"}, 0,
            "position,name,kind,source,SID,type\n", "", toJson(config));
}

TEST_F(Ctl, ShowsTheWholeRecordAsJson) {
  HeadendConfig config = randomHeadendConfig(3);
  config.installerInfo.name = "Latin-1 \xe9";
  const Outcome outcome = runCtl({"show", "--format", "json", fileWith(config)});
  EXPECT_EQ(outcome.status, 0);
  const json value = json::parse(outcome.out);
  EXPECT_EQ(value["headendGlobalConfig"]["networkId"], config.headendGlobalConfig.networkId);
  EXPECT_EQ(value["lineupConfig"]["rfEntries"].size(), config.lineupConfig.rfEntries.size());
  EXPECT_EQ(value["installerInfo"]["name"], "Latin-1 \xef\xbf\xbd");
}

TEST_F(CtlWithController, RefusesAFileBeforeItConnects) {
  const std::string file = fileWith(withId(7));
  writeFile(file, contentOf(file).substr(0, 100));
  for (const Words& words : std::vector<Words>{{"apply", file},
                                               {"apply", "--dry-run", file},
                                               {"diff", file},
                                               {"diff", file, "running"},
                                               {"show", file},
                                               {"apply", "--expect", file, file}}) {
    const Outcome outcome = runCtl(words);
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(outcome.err.starts_with("lineupctl: " + file + ": is no complete configuration: "))
        << outcome.err;
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
  }
  const std::string none = folder_.file("none");
  expectCtl({"apply", none}, 3, "", none + ": No such file or directory");
  expectCtl({"apply", folder_.path()}, 3, "", folder_.path() + ": Is a directory");
  EXPECT_EQ(controller_.connections(), 0U);
}

TEST_F(Ctl, TakesDotSlashRunningForAFile) {
  fileWith(withId(4), "running");
  Start start = ctl({"show", "--format=json", "./running"});
  start.folder = folder_.path();
  EXPECT_EQ(json::parse(run(start).out)["headendGlobalConfig"]["headendId"], 4);
}

// ---- diff

TEST_F(CtlWithController, SaysWhatDiffersAndInItsStatusWhetherAnythingDoes) {
  controller_.setConfig(withId(1));
  const std::string file = fileWith(withId(7));
  expectCtl({"diff", file}, 1, "id: 1 -> 7\n");
  expectCtl({"diff", file, "running"}, 1, "id: 7 -> 1\n");
  expectCtl({"diff", "-", file}, 1, "id: 3 -> 7\n", "", toJson(withId(3)));
  expectCtl({"diff", "running", "running"}, 0, "");
  expectCtl({"diff", "--format=json", file, file}, 0, "");
  const Outcome patch = runCtl({"diff", "--format=json", file});
  EXPECT_EQ(patch.status, 1);
  EXPECT_EQ(json::parse(patch.out),
            json::parse(R"([{"op": "replace", "path": "/headendGlobalConfig/headendId",
                             "value": 7}])"));
}

TEST_F(Ctl, RefusesAPatchOfTextNotInUtf8) {
  const std::string why = ": is not in UTF-8 and cannot be said in JSON";
  const std::string before = fileWith(HeadendConfig(), "a");
  HeadendConfig config;
  config.installerInfo.name = "\xe9";
  expectCtl({"diff", "--format=json", before, fileWith(config, "b")}, 3, "",
            "diff: /installerInfo/name" + why);
  expectCtl({"diff", before, folder_.file("b")}, 1, "/installerInfo/name: \"\" -> \"\\xe9\"\n");
  // What is left out is said, whatever it was.
  EXPECT_EQ(runCtl({"diff", "--format=json", folder_.file("b"), before}).status, 1);
  // Within a value that is put in as a whole, and as the key of a map.
  config = HeadendConfig();
  config.lineupConfig.dvbInputServices[7].service.providerName = "\xe9";
  expectCtl({"diff", "--format=json", before, fileWith(config, "b")}, 3, "",
            "diff: /lineupConfig/dvbInputServices/7/service/providerName" + why);
  config = HeadendConfig();
  config.ipInputs["\xe9"];
  expectCtl({"diff", "--format=json", before, fileWith(config, "b")}, 3, "",
            "diff: /ipInputs/\\xe9" + why);
  expectCtl({"diff", "--format=json", folder_.file("b"), before}, 3, "",
            "diff: /ipInputs/\\xe9" + why);
}

// ---- save

TEST_F(CtlWithController, SavesWhatRunsForItsOwnerAlone) {
  controller_.setConfig(randomHeadendConfig(5));
  const std::string file = folder_.file("saved.json");
  writeFile(file, "old");
  chmod(file.c_str(), 0644);
  expectCtl({"save", file}, 0, "");
  EXPECT_EQ(contentOf(file), toJson(randomHeadendConfig(5)));
  expectForOwnerAlone(file);
  EXPECT_EQ(namesIn(folder_.path()), Words{"saved.json"});
}

TEST_F(CtlWithController, SavesToTheFileThatALinkNames) {
  writeFile(folder_.file("file"), "old");
  fs::create_symlink("file", folder_.file("link"));
  expectCtl({"save", folder_.file("link")}, 0, "");
  EXPECT_TRUE(fs::is_symlink(folder_.file("link")));
  EXPECT_EQ(contentOf(folder_.file("file")), toJson(HeadendConfig()));
}

TEST_F(CtlWithController, SaysWhyAFileCannotBeWritten) {
  expectCtl({"save", "/dev/null"}, 3, "", "/dev/null: is no regular file");
}

TEST_F(CtlWithController, SavesNothingInAFileOfTheNameOfStandardOutput) {
  Start start = ctl({"save", "-"});
  start.folder = folder_.path();
  const Outcome outcome = run(start);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "lineupctl: save: \"-\" is no file; one of that name is \"./-\"\n");
  EXPECT_EQ(namesIn(folder_.path()), Words{});
  start.arguments = {"save", "./-"};
  EXPECT_EQ(run(start).status, 0);
  EXPECT_EQ(contentOf(folder_.file("-")), toJson(HeadendConfig()));
}

TEST_F(Ctl, LeavesTheFileAsItIsIfTheControllerIsAway) {
  const std::string file = folder_.file("saved.json");
  writeFile(file, "old");
  expectCtl({"save", file}, 4, "", kAway);
  EXPECT_EQ(contentOf(file), "old");
  EXPECT_EQ(namesIn(folder_.path()), Words{"saved.json"});
}

// ---- wait

TEST_F(Ctl, WaitsUntilTheControllerAnswers) {
  ProgramProcess waiting(ctl({"wait"}));
  waiting.waitUntilBlocked();
  FakeController controller;
  EXPECT_EQ(waiting.finish().status, 0);
  controller.answerNext({.kind = Answer::kNotReady});
  controller.answerNext({.kind = Answer::kNotReady});
  expectCtl({"wait", "--timeout", "60"}, 0, "");
}

TEST_F(Ctl, WaitsNoLongerThanItIsTold) {
  expectCtl({"wait", "--timeout", "0.2"}, 1, "", kController + "no answer within 0.2 s");
  FakeController controller;
  controller.answerNext(stalled(false, 0));
  expectCtl({"wait", "--timeout", "0.2"}, 1, "", kController + "no answer within 0.2 s");
}

// As a service manager or "env --block-signal" may have it.
TEST_F(Ctl, WaitsNoLongerThanItIsToldWhateverBecameOfTheAlarmBefore) {
  for (const std::string option : {"--block-signal=ALRM", "--ignore-signal=ALRM"}) {
    const Start start{.program = "env",
                      .arguments = {option, kCtlProgram, "wait", "--timeout", "0.2"}};
    const Outcome outcome = run(start);
    EXPECT_EQ(outcome.status, 1) << option;
    EXPECT_EQ(outcome.err, "lineupctl: " + kController + "no answer within 0.2 s\n");
  }
}

}  // namespace
}  // namespace lineup::test
