// "lineupctl backup", through the built program.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/ctl/ctl_process.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;
using korvel::thrift::hub_module::HeadendConfig;
using Words = std::vector<std::string>;

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
  writeFile(folder_.file("notes"), "mine");
  writeFile(folder_.file("lineup-20260101T000000.000Z.json"), "1");
  writeFile(folder_.file("lineup-20260102T000000.000Z.json"), "2");
  writeFile(folder_.file("lineup-20260103T000000.000Z.json"), "3");
  EXPECT_EQ(runCtl({"backup", "--keep", "2", folder_.path()}).status, 0);
  const Words names = namesIn(folder_.path());
  ASSERT_EQ(names.size(), 3U);
  EXPECT_EQ(names[0], "lineup-20260103T000000.000Z.json");
  EXPECT_EQ(contentOf(folder_.file(names[1])), toJson(HeadendConfig()));
  EXPECT_EQ(names[2], "notes");
}

// A clock that was ahead when copies were made, or has not been set yet, as after a cold start.
TEST_F(CtlWithController, NamesCopiesInTheOrderInWhichTheyAreMadeWhateverTheClockSays) {
  writeFile(folder_.file("lineup-29981231T235959.998Z.json"), "1");
  writeFile(folder_.file("lineup-29981231T235959.999Z.json"), "2");
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
  writeFile(folder + "/notes", "mine");
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
    writeFile(folder_.file(name), "mine");
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

}  // namespace
}  // namespace lineup::test
