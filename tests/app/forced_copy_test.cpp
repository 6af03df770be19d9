// The copy of the edits where the end of the program is forced: it is written in a child process,
// beside a writer that may still be at work.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <string>
#include <utility>

#include "app/edits_copy.h"
#include "controller/config_file.h"
#include "hub_module_types.h"
#include "model/lineup_editor.h"
#include "tests/support/file_content.h"
#include "tests/support/pipe.h"
#include "tests/support/streams.h"
#include "tests/support/temporary_folder.h"

namespace {

int syncs = -1;                    // the read end of a pipe; each byte lets one fsync() return
std::function<void()> duringSync;  // run by the next fsync()

}  // namespace

/// Takes the place of the C library's.
extern "C" int fsync(int /*file*/) {
  if (const auto work = std::exchange(duringSync, nullptr)) {
    work();
  }
  char none = 0;
  return read(syncs, &none, 1) == 1 ? 0 : -1;
}

namespace lineup::test {
namespace {

class ForcedCopy : public testing::Test {
 protected:
  ForcedCopy() {
    setenv("XDG_STATE_HOME", folder_.path().c_str(), 1);
    syncs = disk_.readEnd;
    editor_.config.headendGlobalConfig.headendId = 7;
    editor_.pendingChanges = true;
  }

  /// As a forced end does, in a child process that is waited for.
  static void writeInChild(EditsCopy& copy) {
    const pid_t child = fork();
    if (child == 0) {
      copy.writeAtTheEnd();
      _exit(EXIT_SUCCESS);
    }
    EXPECT_EQ(waitpid(child, nullptr, 0), child);
  }

  void letTheDiskSync(const std::string& times) const {
    EXPECT_EQ(write(disk_.writeEnd, times.data(), times.size()),
              static_cast<ssize_t>(times.size()));
  }

  void expectOneCopy() const {
    const auto files = pathsIn(folder_.file("lineup-console"));
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0].extension(), ".json");
    hub_module::HeadendConfig config;
    EXPECT_EQ(readConfigFile(files[0], config), CONFIG_FILE_OK);
    EXPECT_EQ(config, editor_.config);
  }

  const TemporaryFolder folder_;
  const Pipe disk_;
  LineupEditor editor_;
};

TEST_F(ForcedCopy, ThatCannotBeWrittenLeavesTheWriterAtWork) {
  EditsCopy copy(editor_, EditsCopy::When::WhileEditing);
  ASSERT_TRUE(copy.update());
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit usual{};
  getrlimit(RLIMIT_FSIZE, &usual);
  const rlimit full{0, usual.rlim_max};
  setrlimit(RLIMIT_FSIZE, &full);
  writeInChild(copy);
  setrlimit(RLIMIT_FSIZE, &usual);
  letTheDiskSync("12");
  ASSERT_GT(wait(nullptr), 0);  // the writer
  expectOneCopy();
}

TEST_F(ForcedCopy, IsNotMadeWhereTheUsualCopyOnlyHasToBeSynced) {
  EditsCopy copy(editor_, EditsCopy::When::AtTheEnd);
  letTheDiskSync("12345678");
  duringSync = [&copy] { writeInChild(copy); };
  const std::string said = errorsOf([&copy] { copy.writeAtTheEnd(); });
  expectOneCopy();
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
}

}  // namespace
}  // namespace lineup::test
