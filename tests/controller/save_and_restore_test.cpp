// The editor's saving and restoring, with the controller at hand.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "controller/config_file.h"
#include "model/lineup_editor.h"
#include "tests/support/console_texts.h"
#include "tests/support/encoding.h"
#include "tests/support/fake_controller.h"
#include "tests/support/file_content.h"
#include "tests/support/random_records.h"
#include "tests/support/streams.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

using hub_module::HeadendConfig;

class SaveAndRestore : public testing::Test {
 protected:
  /// What is printed when the editor saves, or restores.
  std::string saved(LineupEditor& editor) const {
    return printed([&] { editor.saveConfig(path_); });
  }
  std::string restored(LineupEditor& editor) const {
    return printed([&] { editor.restoreConfig(path_); });
  }

  const TemporaryFolder folder_;
  const std::string path_ = folder_.file("config.json");
  const std::string kSaved = savedTo(path_);
  const std::string kRestored = restoredFrom(path_);
  const HeadendConfig some_ = randomHeadendConfig(1);
};

TEST_F(SaveAndRestore, SaveWithNothingPendingWritesTheControllersConfiguration) {
  FakeController controller;
  controller.setConfig(randomHeadendConfig(3));
  LineupEditor editor;
  editor.config = some_;
  EXPECT_EQ(saved(editor), kSaved);
  EXPECT_EQ(contentOf(path_), toJson(randomHeadendConfig(3)));
  EXPECT_EQ(editor.config, randomHeadendConfig(3));
  EXPECT_EQ(controller.methods(), std::vector<std::string>{"getHeadendConfig"});
}

TEST_F(SaveAndRestore, SaveWithPendingChangesWritesTheEditedConfigurationAndLeavesThemPending) {
  FakeController controller;
  controller.setConfig(randomHeadendConfig(3));
  LineupEditor editor;
  editor.config = some_;
  editor.pendingChanges = true;
  EXPECT_EQ(saved(editor), kSaved);
  EXPECT_EQ(contentOf(path_), toJson(some_));
  EXPECT_TRUE(editor.pendingChanges);
  EXPECT_EQ(controller.connections(), 0U);
}

TEST_F(SaveAndRestore, SaveWithoutAControllerSaysSoAndWritesWhatTheEditorHas) {
  LineupEditor editor;
  EXPECT_EQ(saved(editor), kFetchFailed + kSaved);
  EXPECT_EQ(contentOf(path_), toJson(HeadendConfig()));
}

TEST_F(SaveAndRestore, SaveThatFailsSaysSavedAllTheSame) {
  LineupEditor editor;
  editor.pendingChanges = true;
  const std::string missing = folder_.file("missing/config.json");
  for (const std::string& path :
       {missing, folder_.path(), std::string("/dev/full"), std::string()}) {
    EXPECT_EQ(printed([&] { editor.saveConfig(path); }), savedTo(path));
    EXPECT_EQ(editor.config, HeadendConfig());
    EXPECT_TRUE(editor.pendingChanges);
  }
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
}

TEST_F(SaveAndRestore, RestoreOfASavedFileSendsTheIdenticalConfiguration) {
  FakeController controller;
  LineupEditor saving;
  saving.config = some_;
  saving.pendingChanges = true;
  saved(saving);

  LineupEditor restoring;
  restoring.pendingChanges = true;
  EXPECT_EQ(restored(restoring), kRestored);
  ASSERT_EQ(controller.methods(), std::vector<std::string>{"setHeadendConfig"});
  EXPECT_EQ(controller.calls()[0].config, some_);
  EXPECT_FALSE(restoring.pendingChanges) << "a restore is committed at once";
}

TEST_F(SaveAndRestore, RestoreFromAPathThatDoesNotExistSendsWhatTheEditorHas) {
  FakeController controller;
  LineupEditor editor;
  editor.config = some_;
  EXPECT_EQ(restored(editor), kRestored);
  ASSERT_EQ(controller.calls().size(), 1U);
  EXPECT_EQ(controller.calls()[0].config, some_);
  EXPECT_FALSE(std::filesystem::exists(path_));
}

TEST_F(SaveAndRestore, RestoreOfABrokenFileSendsTheMixture) {
  FakeController controller;
  writeFile(path_, R"({"2":{"rec":{"1":{"i32":7},"2":{"i32":)");
  LineupEditor editor;
  editor.config = some_;
  EXPECT_EQ(restored(editor), kRestored);
  HeadendConfig mixture = some_;
  mixture.headendGlobalConfig.headendId = 7;
  ASSERT_EQ(controller.calls().size(), 1U);
  EXPECT_EQ(controller.calls()[0].config, mixture);
}

TEST_F(SaveAndRestore, RestoreWithoutAControllerKeepsTheLoadedConfigurationAndTheFlag) {
  ASSERT_EQ(writeConfigFile(path_, some_), 0);
  for (const bool pending : {false, true}) {
    LineupEditor editor;
    editor.pendingChanges = pending;
    EXPECT_EQ(restored(editor), kCommitFailed + kRestored);
    EXPECT_EQ(editor.config, some_);
    EXPECT_EQ(editor.pendingChanges, pending);
  }
}

}  // namespace
}  // namespace lineup::test
