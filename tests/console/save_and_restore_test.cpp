// Saving and restoring with the built console: at the prompt and by options.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/console/prompt_steps.h"
#include "tests/support/encoding.h"
#include "tests/support/fake_controller.h"
#include "tests/support/file_content.h"
#include "tests/support/random_records.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

using korvel::thrift::hub_module::HeadendConfig;

class ConsoleFiles : public testing::Test {
 protected:
  ConsoleFiles() { controller_.setConfig(randomHeadendConfig(1)); }

  FakeController controller_;
  TemporaryFolder folder_;
  const std::string path_ = folder_.file("config.json");
};

TEST_F(ConsoleFiles, SaveModeWritesTheControllersConfiguration) {
  expectOutcome(runConsole({"--save", path_}), savedTo(path_));
  EXPECT_EQ(contentOf(path_), toJson(randomHeadendConfig(1)));
  EXPECT_EQ(controller_.methods(), std::vector<std::string>{"getHeadendConfig"});
}

TEST_F(ConsoleFiles, SaveToARelativePathWritesIntoTheWorkingFolder) {
  expectOutcome(run({.arguments = {"-s", "a.json"}, .folder = folder_.path()}), savedTo("a.json"));
  EXPECT_EQ(contentOf(folder_.file("a.json")), toJson(randomHeadendConfig(1)));
}

TEST_F(ConsoleFiles, SaveThenRestoreSendsTheIdenticalConfigurationAtOnce) {
  expectSession({{"id 7", idChanged(7)},
                 {"save " + path_ + " ignored", savedTo(path_)},
                 {"reset", "", false},
                 {"restore " + path_, restoredFrom(path_), false}});
  HeadendConfig expected = randomHeadendConfig(1);
  expected.headendGlobalConfig.headendId = 7;
  EXPECT_EQ(contentOf(path_), toJson(expected));
  EXPECT_EQ(controller_.methods().back(), "setHeadendConfig");
  EXPECT_EQ(controller_.calls().back().config, expected);
}

TEST_F(ConsoleFiles, RestoreModeSendsTheFileWithoutAFetch) {
  writeFile(path_, toJson(randomHeadendConfig(3)));
  expectOutcome(runConsole({"--restore", path_}), restoredFrom(path_));
  EXPECT_EQ(controller_.methods(), std::vector<std::string>{"setHeadendConfig"});
  EXPECT_EQ(controller_.config(), randomHeadendConfig(3));
}

}  // namespace
}  // namespace lineup::test
