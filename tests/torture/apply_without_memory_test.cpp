// lineupctl apply in which one allocation fails: its status tells what the controller has.

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <string>

#include "hub_module_types.h"
#include "tests/ctl/ctl_process.h"
#include "tests/support/fake_controller.h"
#include "tests/support/program_process.h"
#include "tests/support/records.h"
#include "tests/support/temporary_folder.h"
#include "tests/torture/faulty_console.h"

namespace lineup::test {
namespace {

constexpr int kDone = 0;
constexpr int kRefused = 3;           // by lineupctl itself, before anything is sent
constexpr int kControllerFailed = 4;  // standard error says what is known

class ApplyWithoutMemory : public CtlWithController {
 protected:
  /// The status of a run in which the allocation at `place` fails, and what standard error has.
  Outcome applyWithFaultAt(long place) {
    controller_.setConfig(running_);
    Start start = ctl({"apply", file_});
    injectFault(start, {"malloc", place}, folder_.file("counts"));
    return run(start, "");
  }

  const korvel::thrift::hub_module::HeadendConfig running_{};
  const korvel::thrift::hub_module::HeadendConfig wanted_ = withId(7);
  const std::string file_ = fileWith(wanted_);
};

// Each of the last allocations, which are made about when the configuration is sent and after that,
// fails in turn.
TEST_F(ApplyWithoutMemory, SaysWhetherTheConfigurationWasSent) {
  ASSERT_EQ(applyWithFaultAt(0).status, kDone);
  const long all = FaultCounts(folder_.file("counts")).calls;
  int sent = 0;
  int notSent = 0;
  for (long place = std::max(1L, all - 250); place <= all; ++place) {
    const Outcome outcome = applyWithFaultAt(place);
    SCOPED_TRACE("allocation " + std::to_string(place) + " of " + std::to_string(all) + ": " +
                 std::to_string(outcome.status) + " " + outcome.err);
    const bool isSent = controller_.config() == wanted_;
    ++(isSent ? sent : notSent);
    if (outcome.status == kDone) {
      EXPECT_TRUE(isSent);
    } else if (outcome.status == kControllerFailed) {
      EXPECT_TRUE(!isSent || outcome.err.find("not known") != std::string::npos ||
                  outcome.err.find("was sent") != std::string::npos);
    } else {
      EXPECT_TRUE(outcome.status == kRefused || outcome.signal == SIGABRT);
      EXPECT_FALSE(isSent);
    }
  }
  EXPECT_GT(sent, 0);
  EXPECT_GT(notSent, 0);
}

}  // namespace
}  // namespace lineup::test
