// Files that are written as a whole.

#include "support/replace_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/expect_for_owner_alone.h"
#include "tests/support/file_content.h"
#include "tests/support/pipe.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;

class ReplaceFile : public testing::Test {
 protected:
  void expectRefused(const std::string& path, const std::string& reason) const {
    const auto before = names();
    try {
      replaceFile(path, "new");
      ADD_FAILURE() << path;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(error.what(), reason) << path;
    }
    EXPECT_EQ(names(), before);
  }

  std::vector<std::string> names() const { return namesIn(folder_.path()); }

  TemporaryFolder folder_;
  const std::string file_ = folder_.file("file");
  const std::string link_ = folder_.file("link");
};

TEST_F(ReplaceFile, PutsOneForItsOwnerAloneAtThePath) {
  replaceFile(file_, "first");
  replaceFile(file_, "second");
  EXPECT_EQ(contentOf(file_), "second");
  expectForOwnerAlone(file_);
  EXPECT_EQ(names().size(), 1U);
}

TEST_F(ReplaceFile, FollowsLinksAlsoToAFileThatIsNotThere) {
  fs::create_symlink("link2", link_);
  fs::create_symlink(file_, folder_.file("link2"));
  for (const std::string content : {"first", "second"}) {
    replaceFile(link_, content);
    EXPECT_TRUE(fs::is_symlink(link_));
    EXPECT_TRUE(fs::is_symlink(folder_.file("link2")));
    EXPECT_FALSE(fs::is_symlink(file_));
    EXPECT_EQ(contentOf(file_), content);
  }
}

TEST_F(ReplaceFile, LeavesTheOldOneInAFolderThatCannotBeSynced) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "root alone may be somebody else, who may not do everything";
  }
  constexpr uid_t kNobody = 65534;
  replaceFile(file_, "old");
  ASSERT_EQ(chown(folder_.path().c_str(), kNobody, kNobody), 0);
  fs::permissions(folder_.path(), fs::perms::owner_write | fs::perms::owner_exec);
  fs::current_path(folder_.path());  // nobody may be kept from the folders above
  ASSERT_EQ(seteuid(kNobody), 0);
  EXPECT_THROW(replaceFile("file", "new"), std::runtime_error);
  ASSERT_EQ(seteuid(0), 0);
  EXPECT_EQ(contentOf(file_), "old");
  EXPECT_EQ(names().size(), 1U);
}

TEST_F(ReplaceFile, RefusesWhatIsNoFile) {
  ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
  expectRefused(file_, "is no regular file");
  fs::create_symlink("file", link_);
  expectRefused(link_, "is no regular file");
  EXPECT_TRUE(fs::is_symlink(link_));
  EXPECT_TRUE(fs::is_fifo(file_));
  expectRefused(folder_.path(), "is no regular file");
  expectRefused("", "No such file or directory");
  expectRefused(folder_.file("nowhere/file"), "No such file or directory");
  const Pipe pipe;
  const std::string output = folder_.file("output");  // as /dev/stdout leads to a pipe
  fs::create_symlink("/proc/self/fd/" + std::to_string(pipe.writeEnd), output);
  expectRefused(output, "is no regular file");
  EXPECT_TRUE(fs::is_symlink(output));
  fs::create_symlink("loop", folder_.file("loop"));
  expectRefused(folder_.file("loop"), "Too many levels of symbolic links");
}

}  // namespace
}  // namespace lineup::test
