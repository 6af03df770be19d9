#include "tests/ctl/ctl_process.h"

#include <gtest/gtest.h>

namespace lineup::test {

const char* const kCtlProgram = BUILT_LINEUPCTL;

Start ctl(const std::vector<std::string>& words) {
  return Start{.program = kCtlProgram, .arguments = words};
}

Outcome runCtl(const std::vector<std::string>& words, const std::string& input) {
  return run(ctl(words), input);
}

void expectCtl(const std::vector<std::string>& words, int status, const std::string& out,
               const std::string& complaint, const std::string& input) {
  const Outcome outcome = runCtl(words, input);
  EXPECT_EQ(outcome.status, status) << outcome.signal;
  EXPECT_EQ(outcome.out, out);
  EXPECT_EQ(outcome.err, complaint.empty() ? "" : "lineupctl: " + complaint + "\n");
}

}  // namespace lineup::test
