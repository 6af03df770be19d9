// The copy of the edits where the end of the program is forced: it is written in a child process,
// beside a writer that may still be at work.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "app/edits_copy.h"
#include "controller/config_file.h"
#include "hub_module_types.h"
#include "model/lineup_editor.h"
#include "tests/support/file_content.h"
#include "tests/support/pipe.h"
#include "tests/support/temporary_folder.h"

namespace {

int syncs = -1;  // a pipe with a byte for each that the disk has done

}  // namespace

/// Takes the place of the C library's.
extern "C" int fsync(int /*file*/) {
  char none = 0;
  return read(syncs, &none, 1) == 1 ? 0 : -1;
}

namespace lineup::test {
namespace {

TEST(ForcedCopy, ThatCannotBeWrittenLeavesTheWriterAtWork) {
  const TemporaryFolder folder;
  setenv("XDG_STATE_HOME", folder.path().c_str(), 1);
  const Pipe disk;
  syncs = disk.readEnd;
  LineupEditor editor;
  editor.config.headendGlobalConfig.headendId = 7;
  editor.pendingChanges = true;
  EditsCopy copy(editor, EditsCopy::When::WhileEditing);
  ASSERT_TRUE(copy.update());
  const pid_t forced = fork();
  if (forced == 0) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit full{0, 0};
    setrlimit(RLIMIT_FSIZE, &full);
    copy.writeAtTheEnd();
    _exit(EXIT_SUCCESS);
  }
  ASSERT_EQ(waitpid(forced, nullptr, 0), forced);
  EXPECT_EQ(write(disk.writeEnd, "12", 2), 2);
  ASSERT_GT(wait(nullptr), 0);  // the writer
  const auto files = pathsIn(folder.file("lineup-console"));
  ASSERT_EQ(files.size(), 1U);
  EXPECT_EQ(files[0].extension(), ".json");
  hub_module::HeadendConfig config;
  EXPECT_EQ(readConfigFile(files[0], config), CONFIG_FILE_OK);
  EXPECT_EQ(config, editor.config);
}

}  // namespace
}  // namespace lineup::test
