// Sessions that end in a commit.

#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "tests/console/prompt_steps.h"
#include "tests/support/fake_controller.h"

namespace lineup::test {

/// A controller that runs `config` and keeps what is committed.
class EditingCommands : public testing::Test {
 protected:
  /// The lines are typed and then committed, on top of `config`; returns what was committed.
  korvel::thrift::hub_module::HeadendConfig committedAfter(std::vector<Step> steps) {
    steps.push_back({"commit", "", false});
    controller.setConfig(config);
    expectSession(steps);
    const std::vector<ReceivedCall> calls = controller.calls();
    EXPECT_EQ(calls.back().method, "setHeadendConfig");
    return calls.back().config;
  }

  FakeController controller;
  korvel::thrift::hub_module::HeadendConfig config;
};

}  // namespace lineup::test
