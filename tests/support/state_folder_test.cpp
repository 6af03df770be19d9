// The user's folder for what outlives a run.

#include "support/state_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;

class StateFolder : public testing::Test {
 protected:
  StateFolder() {
    setenv("XDG_STATE_HOME", home.file("state").c_str(), 1);
    setenv("HOME", home.path().c_str(), 1);
    setenv("TMPDIR", "/tmp", 1);
  }
  ~StateFolder() override { setenv("TMPDIR", "/tmp", 1); }  // where the next test makes its folder

  const TemporaryFolder home;
};

TEST_F(StateFolder, IsMadeForTheUserAlone) {
  const mode_t before = umask(0777);
  const auto folder = openStateFolder(IfMissing::Create);
  umask(before);
  ASSERT_TRUE(folder.has_value());
  EXPECT_EQ(folder->path, home.file("state/lineup-console"));
  EXPECT_EQ(fs::status(folder->path).permissions(), fs::perms::owner_all);
  EXPECT_EQ(fs::status(home.file("state")).permissions(), fs::perms::owner_all);
}

TEST_F(StateFolder, IsNotMadeIfNotAskedFor) {
  EXPECT_FALSE(openStateFolder(IfMissing::Leave).has_value());
  EXPECT_TRUE(fs::is_empty(home.path()));
}

TEST_F(StateFolder, IsInTheHomeFolderWithoutAVariableOrWithARelativeOne) {
  for (const char* variable : {"", "not/from/the/root"}) {
    setenv("XDG_STATE_HOME", variable, 1);
    const auto folder = openStateFolder(IfMissing::Create);
    ASSERT_TRUE(folder.has_value());
    EXPECT_EQ(folder->path, home.file(".local/state/lineup-console"));
  }
}

TEST_F(StateFolder, AHomeFolderThatIsMissingIsNotMade) {
  unsetenv("XDG_STATE_HOME");
  setenv("HOME", home.file("none").c_str(), 1);
  EXPECT_FALSE(openStateFolder(IfMissing::Create).has_value());
  EXPECT_TRUE(fs::is_empty(home.path()));
}

TEST_F(StateFolder, IsClosedToOthers) {
  fs::create_directories(home.file("state/lineup-console"));
  fs::permissions(home.file("state/lineup-console"), fs::perms::all);
  const auto folder = openStateFolder(IfMissing::Leave);
  ASSERT_TRUE(folder.has_value());
  EXPECT_EQ(fs::status(folder->path).permissions(), fs::perms::owner_all);
}

TEST_F(StateFolder, IsNoLinkAndNoFile) {
  fs::create_directories(home.file("state"));
  fs::create_directories(home.file("elsewhere"));
  fs::create_directory_symlink(home.file("elsewhere"), home.file("state/lineup-console"));
  EXPECT_FALSE(openStateFolder(IfMissing::Create).has_value());
  fs::remove(home.file("state/lineup-console"));
  fs::create_symlink("nowhere", home.file("state/lineup-console"));
  EXPECT_FALSE(openStateFolder(IfMissing::Create).has_value());
  EXPECT_FALSE(fs::exists(home.file("state/nowhere")));
}

TEST_F(StateFolder, OfSomebodyElseIsNotTaken) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can make such a folder";
  }
  fs::create_directories(home.file("state/lineup-console"));
  ASSERT_EQ(chown(home.file("state/lineup-console").c_str(), 12345, 12345), 0);
  EXPECT_FALSE(openStateFolder(IfMissing::Create).has_value());
}

/// The folders for files where there is no state folder.
std::vector<std::string> foldersWithTemporary(const char* temporary) {
  setenv("XDG_STATE_HOME", "/proc/none", 1);
  temporary == nullptr ? unsetenv("TMPDIR") : setenv("TMPDIR", temporary, 1);
  std::vector<std::string> paths;
  for (const Folder& folder : openFoldersForFiles(IfMissing::Create)) {
    paths.push_back(folder.path);
  }
  return paths;
}

TEST_F(StateFolder, FilesGoToTheTemporaryFoldersWhereItCannotBeHad) {
  const std::vector<std::string> tmp{"/tmp"};
  EXPECT_EQ(foldersWithTemporary(home.path().c_str()),
            (std::vector<std::string>{home.path(), "/tmp"}));
  EXPECT_EQ(foldersWithTemporary(nullptr), tmp);
  EXPECT_EQ(foldersWithTemporary(""), tmp);
  EXPECT_EQ(foldersWithTemporary("/proc/none"), tmp);
  for (const char* name : {"with blank", "with\ttab"}) {
    fs::create_directory(home.file(name));
    EXPECT_EQ(foldersWithTemporary(home.file(name).c_str()), tmp);
  }
}

TEST_F(StateFolder, AFolderThatNoCommandCanNameIsLeftOut) {
  for (const char* name : {"with blank", "control\x7f", "latin1\xe9", "c1\xc2\x85", "cut\xe2\x82",
                           "\x80", "\xc0\xaf", "\xff"}) {
    setenv("XDG_STATE_HOME", home.file(name).c_str(), 1);
    const auto folders = openFoldersForFiles(IfMissing::Create);
    EXPECT_EQ(folders.at(0).path, "/tmp") << name;
  }
}

TEST_F(StateFolder, AFolderMayHaveLettersOfAnyScript) {
  for (const char* name :
       {"jos\xc3\xa9", "\xc2\xa0", "\xe6\x97\xa5\xe6\x9c\xac", "\xf0\x9f\x93\xba"}) {
    setenv("XDG_STATE_HOME", home.file(name).c_str(), 1);
    const auto folders = openFoldersForFiles(IfMissing::Create);
    EXPECT_EQ(folders.at(0).path, home.file(name) + "/lineup-console");
  }
}

}  // namespace
}  // namespace lineup::test
