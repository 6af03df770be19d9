// The copies that consoles leave of their edits.

#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/console_texts.h"
#include "tests/support/edited_console.h"
#include "tests/support/fake_controller.h"
#include "tests/support/file_content.h"
#include "tests/support/program_process.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {

/// A folder in which consoles leave copies, and nothing else.
class EditsOnDisk : public testing::Test {
 protected:
  Start start(bool terminal, const std::string& type = "dumb") const {
    Start start;
    start.terminal = terminal;
    start.environment["XDG_STATE_HOME"] = folder.path();
    start.environment["TERM"] = type;
    start.environment["LINEUP_HISTORY"] = "";
    return start;
  }

  std::vector<std::filesystem::path> copies() const {
    return pathsIn(folder.file("lineup-console"));
  }

  TemporaryFolder folder;
  FakeController controller;
};

}  // namespace lineup::test
