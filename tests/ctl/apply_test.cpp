// "lineupctl apply", through the built program.

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/ctl/ctl_process.h"
#include "tests/support/random_records.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;
namespace general = korvel::thrift::general;
using korvel::thrift::hub_module::HeadendConfig;
using Words = std::vector<std::string>;

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
  controller_.answerRightly();
  controller_.answerNext({.kind = Answer::kNotReady});
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

TEST_F(CtlWithController, AppliesAPatchOfAFile) {
  const std::string patch = folder_.file("patch.json");
  writeFile(patch, R"([{"op": "replace", "path": "/headendGlobalConfig/headendId", "value": 9},
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
  writeFile(patch, runCtl({"diff", "--format=json", fileWith(withId(2), "a"),
                           fileWith(randomHeadendConfig(1), "b")})
                       .out);
  EXPECT_EQ(runCtl({"apply", "--patch", patch, folder_.file("a")}).status, 0);
  EXPECT_EQ(controller_.config(), randomHeadendConfig(1));
}

class CtlApplyPatch : public CtlWithController {
 protected:
  /// Applies a patch of this text to `file_` and expects a message that begins with `why`.
  void expectRefused(const std::string& text, const std::string& why) const {
    const std::string patch = folder_.file("patch.json");
    writeFile(patch, text);
    const Outcome outcome = runCtl({"apply", "--patch", patch, file_});
    EXPECT_EQ(outcome.status, 3) << text;
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.substr(0, 11 + patch.size() + 2 + why.size()),
              "lineupctl: " + patch + ": " + why);
    EXPECT_EQ(controller_.connections(), 0U);
  }

  const std::string file_ = fileWith(withId(7));
};

TEST_F(CtlApplyPatch, RefusesOneThatDoesNotFit) {
  const std::string id = "/headendGlobalConfig/headendId";
  const std::string okay = R"({"op": "test", "path": ")" + id + R"(", "value": 7}, )";
  expectRefused("[" + okay + R"({"op": "test", "path": ")" + id + R"(", "value": 8}])",
                "operation 2, " + id + ": unsuccessful: ");
  expectRefused(R"([{"op": "remove", "path": "/installerInfo/fax"}])",
                "operation 1, /installerInfo/fax: key 'fax' not found\n");
  const std::string noMembers = "operation 2, " + id + "/x: " + id + " has no members\n";
  expectRefused("[" + okay + R"({"op": "add", "path": ")" + id + R"(/x", "value": 1}])", noMembers);
  expectRefused("[" + okay + R"({"op": "remove", "path": ")" + id + R"(/x"}])", noMembers);
  expectRefused(R"([{"op": "add", "path": "/ipInputs/a~1b~0", "value": 7}])",
                "leaves no complete configuration: /ipInputs/a~1b~0 is no object\n");
  expectRefused(R"([{"op": "remove", "path": "/installerInfo/name"}])",
                "leaves no complete configuration: /installerInfo lacks \"name\"\n");
}

TEST_F(CtlApplyPatch, RefusesOneThatIsNoPatch) {
  const std::string id = "/headendGlobalConfig/headendId";
  expectRefused("[", "parse error at line 1, column 2: ");
  expectRefused("", "parse error at line 1, column 1: ");
  expectRefused("{}", "is no array of operations\n");
  expectRefused(R"([{"op": "add", "path": ")" + id + R"(", "value": 1, "value": 2}])",
                "has an object with \"value\" twice\n");
  expectRefused(
      R"([{"op": "add", "path": "/installerInfo", "value": {"name": "", "na\u006de": ""}}])",
      "has an object with \"name\" twice\n");
  expectRefused("[{}]", "operation 1: parse error: operation must have");
  expectRefused("[7]", "operation 1: parse error: JSON patch must be an array of objects\n");
  expectRefused(R"([{"op": "remove", "path": "x"}])",
                "operation 1, x: parse error at byte 1: JSON pointer must be empty or begin");
  expectCtl({"apply", "--patch", folder_.file("none"), file_}, 3, "",
            folder_.file("none") + ": No such file or directory");
  expectCtl({"apply", "--patch", folder_.path(), file_}, 3, "",
            folder_.path() + ": Is a directory");
}

TEST_F(CtlWithController, RefusesAPatchThatIsNestedTooDeep) {
  const std::string file = fileWith(withId(7));
  const std::string patch = folder_.file("patch.json");
  const auto nested = [&](int levels) {
    const auto count = static_cast<std::size_t>(levels);
    writeFile(patch, R"([{"op": "add", "path": "/installerInfo/fax", "value": )" +
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

TEST_F(CtlWithController, TheLastOfTwoConcurrentAppliesSucceeds) {
  const std::string expected = fileWith(withId(1), "expected.json");
  const std::string one = fileWith(withId(7), "one.json");
  const std::string two = fileWith(withId(8), "two.json");
  for (int round = 0; round < 20; ++round) {
    controller_.setConfig(withId(1));
    ProgramProcess first(ctl({"apply", "--expect", expected, one}));
    ProgramProcess second(ctl({"apply", "--expect", expected, two}));
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

}  // namespace
}  // namespace lineup::test
