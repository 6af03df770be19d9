// The calls that take of a reply what they need, and refuse one that lacks it.

#include "controller/controller_calls.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>

#include "tests/support/encoding.h"
#include "tests/support/fake_controller.h"
#include "tests/support/random_records.h"

namespace lineup::test {
namespace {

using hub_module::HeadendConfig;
using hub_module::HeadendStatus;

class ControllerCalls : public testing::Test {
 protected:
  ControllerClient connect() const { return {"127.0.0.1", controller_.port(), false, 0, 0, 0}; }

  /// The configuration that the next reply holds.
  HeadendConfig fetched() const {
    ControllerClient client = connect();
    HeadendConfig config;
    fetchCompleteConfig(client, config);
    return config;
  }

  /// Expects that a reply with this record is refused for the `reason`.
  void expectRefused(const std::string& record, const std::string& reason) {
    controller_.answerNext(recordAnswer("getHeadendConfig", record));
    try {
      fetched();
      ADD_FAILURE() << "taken, but " << reason;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(error.what(), "the reply is no complete configuration: " + reason);
    }
  }

  /// The RF inputs that the next reply holds, over others.
  HeadendStatus fetchedRFInputs() const {
    ControllerClient client = connect();
    HeadendStatus status = randomHeadendStatus(1);
    fetchRFInputs(client, status);
    return status;
  }

  FakeController controller_{0};
};

TEST_F(ControllerCalls, ACompleteConfigurationIsTakenWhole) {
  EXPECT_EQ(fetched(), HeadendConfig());
  for (uint32_t seed = 0; seed < 20; ++seed) {
    controller_.setConfig(randomHeadendConfig(seed));
    ASSERT_EQ(fetched(), randomHeadendConfig(seed));
  }
}

// A controller of another version may send more.
TEST_F(ControllerCalls, ACompleteConfigurationMayHaveUnknownFields) {
  const std::string unknown("\x0c\x03\xe7\x08\0\x01\0\0\0\x07\0", 11);  // a record with an i32
  controller_.answerNext(
      recordAnswer("getHeadendConfig", unknown + toBinary(randomHeadendConfig(1))));
  EXPECT_EQ(fetched(), randomHeadendConfig(1));
}

// A client would take their fields for the defaults.
TEST_F(ControllerCalls, AConfigurationThatLacksAFieldIsNoCompleteOne) {
  const std::string end(1, kFieldStop);
  expectRefused(end, "lacks the field \"lineupConfig\"");
  expectRefused(toBinary(HeadendStatus()), "lacks the field \"lineupConfig\"");
  std::string emptyRecords;
  for (const char id : {'\1', '\2', '\3', '\4'}) {
    emptyRecords += std::string("\x0c\0", 2) + id + end;
  }
  const std::string emptyMap("\x0d\0\5\x0b\x0c\0\0\0\0", 9);
  expectRefused(emptyRecords + emptyMap + end, "/lineupConfig lacks the field \"globalConfig\"");
}

TEST_F(ControllerCalls, OfAStatusTheRFInputsAreTakenAlone) {
  controller_.setStatus(randomHeadendStatus(2));
  HeadendStatus expected;
  expected.satRFInputs = randomHeadendStatus(2).satRFInputs;
  expected.tdtRFInputs = randomHeadendStatus(2).tdtRFInputs;
  const HeadendStatus status = fetchedRFInputs();
  EXPECT_EQ(status, expected);
  EXPECT_TRUE(status.__isset.satRFInputs && status.__isset.tdtRFInputs);
}

TEST_F(ControllerCalls, AStatusWithoutRFInputsIsToldFromOneWithNone) {
  controller_.answerNext(recordAnswer("getHeadendStatus", std::string(1, kFieldStop)));
  const HeadendStatus status = fetchedRFInputs();
  EXPECT_EQ(status, HeadendStatus());
  EXPECT_FALSE(status.__isset.satRFInputs || status.__isset.tdtRFInputs);
}

}  // namespace
}  // namespace lineup::test
