// Runs the built lineupctl.

#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hub_module_types.h"
#include "tests/support/encoding.h"
#include "tests/support/fake_controller.h"
#include "tests/support/file_content.h"
#include "tests/support/program_process.h"
#include "tests/support/records.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {

/// The path of the lineupctl that was built along with the tests.
extern const char* const kCtlProgram;

/// What a failure of the controller begins with.
inline const std::string kController = "127.0.0.1:9190: ";

/// How to start lineupctl with these words.
Start ctl(const std::vector<std::string>& words);

/// Runs lineupctl with `input` to its end.
Outcome runCtl(const std::vector<std::string>& words, const std::string& input = "");

/// Runs it and expects this status, output and line on standard error, without "lineupctl: "; none
/// if it is empty.
void expectCtl(const std::vector<std::string>& words, int status, const std::string& out,
               const std::string& complaint = "", const std::string& input = "");

/// The failure if there is no controller.
inline const std::string kAway = kController + "socket open() error: Connection refused";

/// What follows the file's name if a signal comes while "apply" sends it.
inline const std::string kEndedBeforeReadBack =
    ": was sent and taken over; a signal ends this before it was read back";

class Ctl : public testing::Test {
 protected:
  /// A file with the configuration.
  std::string fileWith(const korvel::thrift::hub_module::HeadendConfig& config,
                       const std::string& name = "config.json") {
    writeFile(folder_.file(name), toJson(config));
    return folder_.file(name);
  }

  TemporaryFolder folder_;
};

class CtlWithController : public Ctl {
 protected:
  FakeController controller_;
};

}  // namespace lineup::test
