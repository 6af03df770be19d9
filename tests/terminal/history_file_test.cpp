#include "terminal/history_file.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/file_content.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

constexpr std::size_t kMost = 1000;

class HistoryFile : public testing::Test {
 protected:
  HistoryFile() {
    setenv("XDG_STATE_HOME", folder_.path().c_str(), 1);
    unsetenv("LINEUP_HISTORY");
    fs::create_directory(fs::path(path_).parent_path());
    fs::permissions(fs::path(path_).parent_path(), fs::perms::owner_all);
  }

  const TemporaryFolder folder_;
  const std::string path_ = folder_.file("lineup-console/history");
};

TEST_F(HistoryFile, IsReadFromTheLastLinesOn) {
  writeFile(path_, "oldest\nold\nnew\nnewest");
  EXPECT_EQ(readHistoryFile(kMost), (Lines{"oldest", "old", "new", "newest"}));
  EXPECT_EQ(readHistoryFile(2), (Lines{"new", "newest"}));
}

// The longest lines known are files of 5,000 letters that were pasted.
TEST_F(HistoryFile, KeepsAThousandLinesTenTimesAsLongAsAnyKnown) {
  std::string lines;
  for (std::size_t line = 1; line < kMost; ++line) {
    lines += std::to_string(line) + std::string(50'000, 'x') + "\n";
  }
  writeFile(path_, "oldest\nold\n" + lines);
  appendToHistoryFile("new", kMost);
  EXPECT_EQ(fs::file_size(path_), lines.size() + std::string("new\n").size());
  std::string first;
  std::getline(std::ifstream(path_), first);
  EXPECT_EQ(first, lines.substr(0, lines.find('\n')));
}

TEST_F(HistoryFile, OfEightGigabytesIsReadAtItsEndAndIsSmallAfterTheNextLine) {
  writeFile(path_, "first\n");
  fs::resize_file(path_, uintmax_t{8} << 30);
  EXPECT_EQ(readHistoryFile(kMost), Lines());
  std::ofstream(path_, std::ios::app) << "\nlast\n";
  EXPECT_EQ(readHistoryFile(kMost), Lines{"last"});
  appendToHistoryFile("new", kMost);
  EXPECT_EQ(contentOf(path_), "last\nnew\n");
}

}  // namespace
}  // namespace lineup::test
