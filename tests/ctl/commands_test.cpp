// Each command of lineupctl and each of its statuses, through the built program.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "support/descriptor.h"
#include "tests/ctl/ctl_process.h"
#include "tests/support/encoding.h"
#include "tests/support/fake_controller.h"
#include "tests/support/random_records.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;
namespace general = korvel::thrift::general;
using korvel::thrift::hub_module::HeadendConfig;
using korvel::thrift::hub_module::HeadendStatus;
using nlohmann::json;
using Words = std::vector<std::string>;

const std::string kAway = "127.0.0.1:9190: socket open() error: Connection refused";

HeadendConfig withId(int32_t id) {
  HeadendConfig config;
  config.headendGlobalConfig.headendId = id;
  return config;
}

class Ctl : public testing::Test {
 protected:
  /// A file with the configuration.
  std::string fileWith(const HeadendConfig& config, const std::string& name = "config.json") {
    fill(folder_.file(name), toJson(config));
    return folder_.file(name);
  }

  std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
      names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  TemporaryFolder folder_;
};

class CtlWithController : public Ctl {
 protected:
  /// An answer that comes once the controller is released.
  static Answer lateAnswer() {
    Answer late;
    late.sentBytes = 0;
    late.stalls = true;
    late.goesOn = true;
    return late;
  }

  FakeController controller_;
};

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
            "/etc/korvel/conf/ControllerTask/ControllerTask.sqlite: unable to open database file");
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

TEST_F(Ctl, ShowsColumnsAsWideAsOnATerminalInAnyLocale) {
  HeadendConfig config;
  for (const char* const name : {"漢字ＴＶ", "Espan\u0303a", "a\n", "Canal 1"}) {
    config.lineupConfig.rfEntries.emplace_back().name = name;
  }
  Start start = ctl({"show", "--section=rf", fileWith(config)});
  for (const char* const locale : {"C", "C.UTF-8"}) {
    start.environment["LC_ALL"] = locale;
    EXPECT_EQ(run(start).out,
              "RF lineup\nPOSITION  NAME      KIND  SOURCE        SID  TYPE\n"
              "1         漢字ＴＶ  DVB   no service 0\n"
              "2         Espan\u0303a    DVB   no service 0\n"
              "3         a\\n       DVB   no service 0\n"
              "4         Canal 1   DVB   no service 0\n");
  }
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

TEST_F(Ctl, SaysNoPatchThatWouldNotBeTrue) {
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
  fill(file, "old");
  chmod(file.c_str(), 0644);
  expectCtl({"save", file}, 0, "");
  EXPECT_EQ(contentOf(file), toJson(randomHeadendConfig(5)));
  struct stat status {};
  ASSERT_EQ(stat(file.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
  EXPECT_EQ(namesIn(folder_.path()), Words{"saved.json"});
}

TEST_F(CtlWithController, SavesToTheFileThatALinkNames) {
  fill(folder_.file("file"), "old");
  fs::create_symlink("file", folder_.file("link"));
  expectCtl({"save", folder_.file("link")}, 0, "");
  EXPECT_TRUE(fs::is_symlink(folder_.file("link")));
  EXPECT_EQ(contentOf(folder_.file("file")), toJson(HeadendConfig()));
}

TEST_F(CtlWithController, SaysWhyAFileCannotBeWritten) {
  const std::string nowhere = folder_.file("nowhere/file");
  expectCtl({"save", nowhere}, 3, "", nowhere + ": No such file or directory");
  expectCtl({"save", folder_.path()}, 3, "", folder_.path() + ": is no regular file");
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
  fill(file, "old");
  expectCtl({"save", file}, 4, "", kAway);
  EXPECT_EQ(contentOf(file), "old");
  EXPECT_EQ(namesIn(folder_.path()), Words{"saved.json"});
}

// ---- apply

TEST_F(CtlWithController, AppliesAFileSaysTheDifferenceAndReadsItBack) {
  expectCtl({"apply", fileWith(withId(7))}, 0, "id: 1 -> 7\n");
  EXPECT_EQ(controller_.config(), withId(7));
  EXPECT_EQ(controller_.methods(),
            (Words{"getHeadendConfig", "setHeadendConfig", "getHeadendConfig"}));
}

TEST_F(CtlWithController, AppliesStandardInput) {
  expectCtl({"apply", "-"}, 0, "id: 1 -> 5\n", "", toJson(withId(5)));
  EXPECT_EQ(controller_.config(), withId(5));
}

TEST_F(CtlWithController, CallsStandardInputTheSameEverywhere) {
  const Outcome nothing = runCtl({"show", "-"});
  EXPECT_EQ(nothing.status, 3);
  EXPECT_TRUE(nothing.err.starts_with("lineupctl: standard input: is no complete configuration: "))
      << nothing.err;
  const std::string file = fileWith(withId(7));
  expectCtl({"apply", "--expect", "-", file}, 1, "", "standard input: is not what runs",
            toJson(withId(2)));
  expectCtl({"apply", "--patch", "-", file}, 3, "", "standard input: is no array of operations",
            "{}");
  Answer notReady;
  notReady.kind = Answer::kNotReady;
  controller_.answerNext(Answer());
  controller_.answerNext(notReady);
  const Outcome refused = runCtl({"apply", "-"}, toJson(withId(7)));
  EXPECT_EQ(refused.status, 4);
  EXPECT_TRUE(refused.err.ends_with("; standard input was not taken over\n")) << refused.err;
}

TEST_F(CtlWithController, SendsNothingIfNothingDiffers) {
  controller_.setConfig(withId(7));
  const std::string copies = folder_.file("copies");
  fs::create_directory(copies);
  expectCtl({"apply", "--backup", copies, fileWith(withId(7))}, 0, "");
  EXPECT_EQ(controller_.methods(), Words{"getHeadendConfig"});
  EXPECT_EQ(namesIn(copies), Words{});
}

TEST_F(CtlWithController, SendsAndKeepsNothingInADryRun) {
  const std::string copies = folder_.file("copies");
  fs::create_directory(copies);
  expectCtl({"apply", "--dry-run", "--backup", copies, fileWith(withId(7))}, 1, "id: 1 -> 7\n");
  EXPECT_EQ(controller_.methods(), Words{"getHeadendConfig"});
  EXPECT_EQ(namesIn(copies), Words{});
  controller_.setConfig(withId(7));
  expectCtl({"apply", "--dry-run", folder_.file("config.json")}, 0, "");
}

TEST_F(CtlWithController, RefusesIfWhatRunsIsNotWhatIsExpected) {
  const std::string expected = fileWith(withId(2), "expected.json");
  expectCtl({"apply", "--expect", expected, fileWith(withId(7))}, 1, "",
            expected + ": is not what runs");
  EXPECT_EQ(controller_.methods(), Words{"getHeadendConfig"});
  controller_.setConfig(withId(2));
  expectCtl({"apply", "--expect", expected, fileWith(withId(7))}, 0, "id: 2 -> 7\n");
}

TEST_F(CtlWithController, KeepsWhatRanBeforeItSends) {
  const std::string copies = folder_.file("copies");
  fs::create_directory(copies);
  const Outcome outcome = runCtl({"apply", "--backup", copies, fileWith(withId(7))});
  EXPECT_EQ(outcome.status, 0);
  ASSERT_EQ(namesIn(copies).size(), 1U);
  const std::string copy = copies + "/" + namesIn(copies)[0];
  EXPECT_EQ(outcome.out, "id: 1 -> 7\nkept what ran in " + copy + "\n");
  EXPECT_EQ(contentOf(copy), toJson(withId(1)));
}

TEST_F(CtlWithController, NamesTheCopyOfWhatRanAlsoIfItIsThereAlready) {
  const std::string copies = folder_.file("copies");
  fs::create_directory(copies);
  EXPECT_EQ(runCtl({"backup", copies}).status, 0);
  ASSERT_EQ(namesIn(copies).size(), 1U);
  const std::string copy = copies + "/" + namesIn(copies)[0];
  expectCtl({"apply", "--backup", copies, fileWith(withId(7))}, 0,
            "id: 1 -> 7\nkept what ran in " + copy + "\n");
  EXPECT_EQ(namesIn(copies).size(), 1U);
  // Which undoes it, also when a copy of what runs now has been made meanwhile.
  EXPECT_EQ(runCtl({"backup", copies}).status, 0);
  expectCtl({"apply", copy}, 0, "id: 7 -> 1\n");
}

TEST_F(CtlWithController, SendsNothingIfWhatRanCannotBeKept) {
  const std::string nowhere = folder_.file("nowhere");
  expectCtl({"apply", "--backup", nowhere, fileWith(withId(7))}, 3, "id: 1 -> 7\n",
            nowhere + ": No such file or directory");
  EXPECT_EQ(controller_.methods(), Words{"getHeadendConfig"});
}

TEST_F(CtlWithController, SaysWhatRunsInsteadOfWhatWasSent) {
  const Answer right;
  Answer lie;  // the reading back says that the old one still runs
  lie.kind = Answer::kBytes;
  lie.bytes = recordReply("getHeadendConfig", toBinary(withId(1)));
  controller_.answerNext(right);
  controller_.answerNext(right);
  controller_.answerNext(lie);
  const std::string file = fileWith(withId(7));
  expectCtl({"apply", file}, 5, "id: 1 -> 7\nid: 7 -> 1\n",
            file + ": was sent, but something else runs");
}

TEST_F(CtlWithController, AppliesAPatchOfAFile) {
  const std::string patch = folder_.file("patch.json");
  fill(patch, R"([{"op": "replace", "path": "/headendGlobalConfig/headendId", "value": 9},
                  {"op": "add", "path": "/headendGlobalConfig/countryCode", "value": 5}])");
  expectCtl({"apply", "--patch", patch, fileWith(withId(7))}, 0,
            "id: 1 -> 9\ncountry: not set -> italy\n");
  HeadendConfig expected = withId(9);
  expected.headendGlobalConfig.__set_countryCode(general::CountryCode::ITALY);
  EXPECT_EQ(controller_.config(), expected);
}

TEST_F(CtlWithController, TakesAPatchFromStandardInput) {
  expectCtl({"apply", "--patch", "-", fileWith(withId(7))}, 0, "id: 1 -> 9\n", "",
            R"([{"op": "replace", "path": "/headendGlobalConfig/headendId", "value": 9}])");
  EXPECT_EQ(controller_.config(), withId(9));
}

TEST_F(CtlWithController, TakesTheDifferenceOfOneSiteToAnother) {
  const std::string patch = folder_.file("patch.json");
  fill(patch, runCtl({"diff", "--format=json", fileWith(withId(2), "a"),
                      fileWith(randomHeadendConfig(1), "b")})
                  .out);
  EXPECT_EQ(runCtl({"apply", "--patch", patch, folder_.file("a")}).status, 0);
  EXPECT_EQ(controller_.config(), randomHeadendConfig(1));
}

TEST_F(CtlWithController, RefusesAPatchThatDoesNotFit) {
  const std::string patch = folder_.file("patch.json");
  const std::string file = fileWith(withId(7));
  const auto expectRefused = [&](const std::string& text, const std::string& why) {
    fill(patch, text);
    const Outcome outcome = runCtl({"apply", "--patch", patch, file});
    EXPECT_EQ(outcome.status, 3) << text;
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.substr(0, 11 + patch.size() + 2 + why.size()),
              "lineupctl: " + patch + ": " + why);
  };
  const std::string id = "/headendGlobalConfig/headendId";
  const std::string okay = R"({"op": "test", "path": ")" + id + R"(", "value": 7}, )";
  expectRefused("[", "parse error at line 1, column 2: ");
  expectRefused("", "parse error at line 1, column 1: ");
  expectRefused("{}", "is no array of operations\n");
  expectRefused("[" + okay + R"({"op": "test", "path": ")" + id + R"(", "value": 8}])",
                "operation 2, " + id + ": unsuccessful: ");
  expectRefused(R"([{"op": "remove", "path": "/installerInfo/fax"}])",
                "operation 1, /installerInfo/fax: key 'fax' not found\n");
  const std::string noMembers = "operation 2, " + id + "/x: " + id + " has no members\n";
  expectRefused("[" + okay + R"({"op": "add", "path": ")" + id + R"(/x", "value": 1}])", noMembers);
  expectRefused("[" + okay + R"({"op": "remove", "path": ")" + id + R"(/x"}])", noMembers);
  expectRefused(R"([{"op": "add", "path": "/ipInputs/a~1b~0", "value": 7}])",
                "leaves no complete configuration: /ipInputs/a~1b~0 is no object\n");
  expectRefused(R"([{"op": "add", "path": ")" + id + R"(", "value": 1, "value": 2}])",
                "has an object with \"value\" twice\n");
  expectRefused(
      R"([{"op": "add", "path": "/installerInfo", "value": {"name": "", "na\u006de": ""}}])",
      "has an object with \"name\" twice\n");
  expectRefused("[{}]", "operation 1: parse error: operation must have");
  expectRefused("[7]", "operation 1: parse error: JSON patch must be an array of objects\n");
  expectRefused(R"([{"op": "remove", "path": "x"}])",
                "operation 1, x: parse error at byte 1: JSON pointer must be empty or begin");
  expectRefused(R"([{"op": "remove", "path": "/installerInfo/name"}])",
                "leaves no complete configuration: /installerInfo lacks \"name\"\n");
  expectRefused(R"([{"op": "add", "path": "/installerInfo/fax", "value": ""}])",
                "leaves no complete configuration: /installerInfo has the unknown \"fax\"\n");
  expectRefused(R"([{"op": "replace", "path": "/headendGlobalConfig/headendId", "value": "x"}])",
                "leaves no complete configuration: /headendGlobalConfig/headendId is no whole "
                "number\n");
  expectCtl({"apply", "--patch", folder_.file("none"), file}, 3, "",
            folder_.file("none") + ": No such file or directory");
  expectCtl({"apply", "--patch", folder_.path(), file}, 3, "", folder_.path() + ": Is a directory");
  EXPECT_EQ(controller_.connections(), 0U);
}

TEST_F(CtlWithController, RefusesAPatchThatIsNestedTooDeep) {
  const std::string file = fileWith(withId(7));
  const std::string patch = folder_.file("patch.json");
  const auto nested = [&](int levels) {
    const auto count = static_cast<std::size_t>(levels);
    fill(patch, R"([{"op": "add", "path": "/installerInfo/fax", "value": )" +
                    std::string(count, '[') + std::string(count, ']') + "}]");
  };
  for (const int levels : {1'000, 200'000, 2'000'000}) {
    nested(levels);
    expectCtl({"apply", "--patch", patch, file}, 3, "",
              patch + ": is nested deeper than 1000 levels");
  }
  // Ten times what a configuration has is looked at like any other.
  nested(140);
  expectCtl({"apply", "--patch", patch, file}, 3, "",
            patch + ": leaves no complete configuration: /installerInfo has the unknown \"fax\"");
  EXPECT_EQ(controller_.connections(), 0U);
}

TEST_F(CtlWithController, OfTwoAppliesAtOnceNoneIsWronglyContent) {
  const std::string expected = fileWith(withId(1), "expected.json");
  const std::string one = fileWith(withId(7), "one.json");
  const std::string two = fileWith(withId(8), "two.json");
  for (int round = 0; round < 20; ++round) {
    controller_.setConfig(withId(1));
    ConsoleProcess first(ctl({"apply", "--expect", expected, one}));
    ConsoleProcess second(ctl({"apply", "--expect", expected, two}));
    const Outcome firstOutcome = first.finish();
    const Outcome secondOutcome = second.finish();
    const int firstStatus = firstOutcome.status;
    const int secondStatus = secondOutcome.status;
    // Whoever sent last found that it runs.
    const int last = controller_.config() == withId(7) ? firstStatus : secondStatus;
    const int other = controller_.config() == withId(7) ? secondStatus : firstStatus;
    EXPECT_EQ(last, 0);
    // The other came too late, or found the other's, or was done before it.
    EXPECT_TRUE(other == 1 || other == 5 || other == 0) << other;
  }
}

// ---- backup

TEST_F(CtlWithController, KeepsACopyWhenSomethingHasChanged) {
  const std::string copies = folder_.path();
  for (const int32_t id : {1, 1, 2, 2, 3}) {
    controller_.setConfig(withId(id));
    const Words before = namesIn(copies);
    const Outcome outcome = runCtl({"backup", copies});
    EXPECT_EQ(outcome.status, 0);
    const Words now = namesIn(copies);
    EXPECT_EQ(outcome.out, before == now ? "" : copies + "/" + now.back() + "\n");
    EXPECT_EQ(contentOf(copies + "/" + now.back()), toJson(withId(id)));
  }
  EXPECT_EQ(namesIn(copies).size(), 3U);
}

TEST_F(CtlWithController, RemovesTheOldestCopiesAndNothingElse) {
  fill(folder_.file("notes"), "mine");
  fill(folder_.file("lineup-20260101T000000.000Z.json"), "1");
  fill(folder_.file("lineup-20260102T000000.000Z.json"), "2");
  fill(folder_.file("lineup-20260103T000000.000Z.json"), "3");
  EXPECT_EQ(runCtl({"backup", "--keep", "2", folder_.path()}).status, 0);
  const Words names = namesIn(folder_.path());
  ASSERT_EQ(names.size(), 3U);
  EXPECT_EQ(names[0], "lineup-20260103T000000.000Z.json");
  EXPECT_EQ(contentOf(folder_.file(names[1])), toJson(HeadendConfig()));
  EXPECT_EQ(names[2], "notes");
}

// A clock that was ahead when copies were made, or has not been set yet, as after a cold start.
TEST_F(CtlWithController, NamesCopiesInTheOrderInWhichTheyAreMadeWhateverTheClockSays) {
  fill(folder_.file("lineup-29981231T235959.998Z.json"), "1");
  fill(folder_.file("lineup-29981231T235959.999Z.json"), "2");
  const Words made = {"lineup-29990101T000000.000Z.json", "lineup-29990101T000000.001Z.json",
                      "lineup-29990101T000000.002Z.json"};
  for (const std::string& name : made) {
    controller_.setConfig(withId(controller_.config().headendGlobalConfig.headendId + 1));
    const std::string path = folder_.file(name);
    expectCtl({"backup", "--keep", "2", folder_.path()}, 0, path + "\n");
    EXPECT_EQ(contentOf(path), toJson(controller_.config()));
    expectCtl({"backup", "--keep", "2", folder_.path()}, 0, "");  // nothing has changed
  }
  EXPECT_EQ(namesIn(folder_.path()), Words(made.begin() + 1, made.end()));
}

TEST_F(CtlWithController, TakesRegularFilesAloneForCopies) {
  const std::string folder = folder_.file("lineup-20260101T000000.000Z.json");
  const std::string link = folder_.file("lineup-29990101T000000.000Z.json");
  const std::string fifo = folder_.file("lineup-29990102T000000.000Z.json");
  fs::create_directory(folder);
  fill(folder + "/notes", "mine");
  fs::create_symlink(folder + "/notes", link);
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  for (const int32_t id : {2, 3}) {
    controller_.setConfig(withId(id));
    EXPECT_EQ(runCtl({"backup", "--keep", "1", folder_.path()}).status, 0);
  }
  const Words names = namesIn(folder_.path());
  ASSERT_EQ(names.size(), 4U);
  EXPECT_EQ(contentOf(folder_.file(names[1])), toJson(withId(3)));
  EXPECT_EQ(contentOf(link), "mine");
  EXPECT_TRUE(fs::is_fifo(fifo));
}

TEST_F(CtlWithController, LeavesFilesAloneWhoseNamesAreNoTimes) {
  const Words others = {"lineup-20260000T000000.000Z.json",  "lineup-20260102T000000.000Z.json~",
                        "lineup-20260102T000000.00Z.json",   "lineup-20261399T999999.000Z.json",
                        "lineup-20260102T000000.0000Z.json", "lineup-20260102T000000.-01Z.json"};
  for (const std::string& name : others) {
    fill(folder_.file(name), "mine");
  }
  EXPECT_EQ(runCtl({"backup", "--keep", "1", folder_.path()}).status, 0);
  EXPECT_EQ(namesIn(folder_.path()).size(), others.size() + 1);
  for (const std::string& name : others) {
    EXPECT_EQ(contentOf(folder_.file(name)), "mine") << name;
  }
}

TEST_F(Ctl, SaysThatACopyCannotBeMade) {
  expectCtl({"backup", folder_.path()}, 4, "", kAway);
  EXPECT_EQ(namesIn(folder_.path()), Words{});
  const FakeController controller;
  expectCtl({"backup", folder_.file("nowhere")}, 3, "",
            folder_.file("nowhere") + ": No such file or directory");
}

// ---- wait

TEST_F(Ctl, WaitsUntilTheControllerAnswers) {
  ConsoleProcess waiting(ctl({"wait"}));
  waiting.waitUntilBlocked();
  FakeController controller;
  EXPECT_EQ(waiting.finish().status, 0);
  Answer notReady;
  notReady.kind = Answer::kNotReady;
  controller.answerNext(notReady);
  controller.answerNext(notReady);
  expectCtl({"wait", "--timeout", "60"}, 0, "");
}

TEST_F(Ctl, WaitsNoLongerThanItIsTold) {
  expectCtl({"wait", "--timeout", "0.2"}, 1, "", "127.0.0.1:9190: no answer within 0.2 s");
  FakeController controller;
  Answer silence;
  silence.sentBytes = 0;
  silence.stalls = true;
  controller.answerNext(silence);
  expectCtl({"wait", "--timeout", "0.2"}, 1, "", "127.0.0.1:9190: no answer within 0.2 s");
}

// As a service manager or "env --block-signal" may have it.
TEST_F(Ctl, WaitsNoLongerThanItIsToldWhateverBecameOfTheAlarmBefore) {
  for (const std::string option : {"--block-signal=ALRM", "--ignore-signal=ALRM"}) {
    const Start start{.program = "env",
                      .arguments = {option, kCtlProgram, "wait", "--timeout", "0.2"}};
    const Outcome outcome = run(start);
    EXPECT_EQ(outcome.status, 1) << option;
    EXPECT_EQ(outcome.err, "lineupctl: 127.0.0.1:9190: no answer within 0.2 s\n");
  }
}

// ---- output and signals

/// How to start lineupctl by the shell, with its streams as `redirection` says.
Start redirected(const std::string& words, const std::string& redirection) {
  return Start{.program = "sh",
               .arguments = {"-c", "exec \"$0\" " + words + " " + redirection, kCtlProgram}};
}

Outcome runRedirected(const std::string& words, const std::string& redirection) {
  return run(redirected(words, redirection));
}

/// Everything up to the end of a pipe, which is full most of the time meanwhile.
std::string slowlyRead(int pipe) {
  std::string text;
  std::array<char, 4096> part{};
  for (ssize_t count = 0; (count = read(pipe, part.data(), part.size())) > 0;) {
    text.append(part.data(), static_cast<std::size_t>(count));
    usleep(1'000);
  }
  return text;
}

TEST_F(CtlWithController, FailsIfItsOutputCannotBeWritten) {
  const std::string file = fileWith(withId(7));
  for (const std::string& words :
       Words{"show", "show --format=json", "diff " + file, "apply " + file, "--help"}) {
    const Outcome full = runRedirected(words, ">/dev/full");
    EXPECT_EQ(full.status, 3) << words;
    EXPECT_EQ(full.err, "lineupctl: standard output: No space left on device\n");
    const Outcome closed = runRedirected(words, ">&-");
    EXPECT_EQ(closed.status, 3) << words;
    EXPECT_EQ(closed.err, "lineupctl: standard output: Bad file descriptor\n");
  }
  EXPECT_EQ(controller_.config(), withId(1));  // nothing was sent
}

TEST_F(Ctl, WaitsForAnOutputThatDoesNotBlock) {
  HeadendConfig large;
  large.lineupConfig.rfEntries.resize(3'000);
  const std::string file = fileWith(large);
  const std::string expected = runCtl({"show", "--format=json", file}).out;
  ASSERT_GT(expected.size(), std::size_t{10} << 16);  // ten times what a pipe holds
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  fcntl(ends[0], F_SETFD, FD_CLOEXEC);
  fcntl(ends[1], F_SETFL, O_NONBLOCK);
  const Descriptor reading(ends[0]);
  Descriptor writing(ends[1]);
  ConsoleProcess showing(
      redirected("show --format=json " + file, ">&" + std::to_string(writing.number())));
  writing = Descriptor();
  EXPECT_TRUE(slowlyRead(reading.number()) == expected);
  const Outcome outcome = showing.finish();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
}

TEST_F(Ctl, WaitsForAnInputThatDoesNotBlock) {
  const std::string file = toJson(withId(7));
  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  fcntl(ends[0], F_SETFL, O_NONBLOCK);
  fcntl(ends[1], F_SETFD, FD_CLOEXEC);
  const Descriptor reading(ends[0]);
  Descriptor writing(ends[1]);
  ConsoleProcess showing(redirected("show -", "<&" + std::to_string(reading.number())));
  for (const std::string& part : {file.substr(0, 600), file.substr(600)}) {
    showing.waitUntilBlocked();
    EXPECT_EQ(write(writing.number(), part.data(), part.size()), static_cast<ssize_t>(part.size()));
  }
  writing = Descriptor();
  const Outcome outcome = showing.finish();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_NE(outcome.out.find("id             7\n"), std::string::npos) << outcome.out;
}

TEST_F(CtlWithController, ItsStatusSaysThatSomethingElseRunsAlsoIfNobodyReads) {
  Answer lie;
  lie.kind = Answer::kBytes;
  lie.bytes = recordReply("getHeadendConfig", toBinary(withId(1)));
  controller_.answerNext(Answer());
  controller_.answerNext(lateAnswer());
  controller_.answerNext(lie);
  const std::string file = fileWith(withId(7));
  ConsoleProcess applying(ctl({"apply", file}));
  controller_.waitForCalls(2);
  applying.stopReading();
  controller_.release();
  const Outcome outcome = applying.finish();
  EXPECT_EQ(outcome.status, 5) << outcome.signal;
  EXPECT_EQ(outcome.err, "lineupctl: standard output: Broken pipe\nlineupctl: " + file +
                             ": was sent, but something else runs\n");
}

TEST_F(Ctl, ItsStatusHoldsAlsoIfNobodyReadsItsErrors) {
  const std::string withoutReader =
      "mkfifo fifo; exec 3<>fifo 4>fifo 3<&-; \"$0\" show none 2>&4; echo $?";
  Start start{.program = "sh", .arguments = {"-c", withoutReader, kCtlProgram}};
  start.folder = folder_.path();
  EXPECT_EQ(run(start).out, "3\n");
}

TEST_F(CtlWithController, ASignalEndsIt) {
  Answer silence;
  silence.sentBytes = 0;
  silence.stalls = true;
  controller_.answerAll(silence);
  ConsoleProcess asking(ctl({"diff", fileWith(withId(7))}));
  controller_.waitForCalls(1);
  asking.signal(SIGTERM);
  EXPECT_EQ(asking.finish().signal, SIGTERM);
}

/// Those by which people, systems and their timers end programs.
const int kEndingSignals[] = {SIGHUP,  SIGINT,    SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2,  SIGALRM,
                              SIGXCPU, SIGVTALRM, SIGPROF, SIGPOLL, SIGPWR,  SIGRTMIN, SIGRTMAX};

TEST_F(CtlWithController, ASignalLetsACallThatHasBegunToSendFinish) {
  const std::string file = fileWith(withId(7));
  std::size_t calls = 0;
  for (const int signal : kEndingSignals) {
    controller_.setConfig(withId(1));
    controller_.answerNext(Answer());
    controller_.answerNext(lateAnswer());
    ConsoleProcess applying(ctl({"apply", file}));
    controller_.waitForCalls(calls += 2);
    applying.signal(signal);
    applying.waitUntilHeldBack(signal);
    controller_.release();
    const Outcome outcome = applying.finish();
    EXPECT_EQ(outcome.signal, signal);
    EXPECT_EQ(outcome.out, "id: 1 -> 7\n");
    EXPECT_EQ(outcome.err, "lineupctl: " + file +
                               ": was sent and taken over; a signal ends this before it was "
                               "read back\n");
    EXPECT_EQ(controller_.config(), withId(7));
  }
}

// One that does not end it has not to be spoken of.
TEST_F(CtlWithController, ASignalThatWasBlockedBeforeIsNoEnd) {
  controller_.answerNext(Answer());
  controller_.answerNext(lateAnswer());
  ConsoleProcess applying(
      Start{.program = "env",
            .arguments = {"--block-signal=TERM", kCtlProgram, "apply", fileWith(withId(7))}});
  controller_.waitForCalls(2);
  applying.signal(SIGTERM);
  applying.waitUntilHeldBack(SIGTERM);
  controller_.release();
  const Outcome outcome = applying.finish();
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.err, "");
}

}  // namespace
}  // namespace lineup::test
