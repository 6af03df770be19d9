#include "support/log.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <string>

#include "tests/support/pipe.h"

namespace lineup::test {
namespace {

/// What reaches standard error when `write` runs under log_setup(level, targets).
template <class Write>
std::string logged(int level, int targets, Write write) {
  testing::internal::CaptureStderr();
  log_setup(level, targets);
  write();
  return testing::internal::GetCapturedStderr();
}

TEST(Log, ConsoleTargetWritesARecordToStandardError) {
  const std::string text = logged(7, 3, [] { log_function(3, "db", "code %d", 5); });
  EXPECT_EQ(text.compare(0, 15, "lineup-console["), 0) << text;
  EXPECT_TRUE(text.ends_with("]: [db] code 5\n")) << text;
}

TEST(Log, ARecordBeginsWithTheProgramThatIsGiven) {
  testing::internal::CaptureStderr();
  log_setup(7, 3, "lineupctl");
  log_function(3, "db", "late");
  log_setup(7, 3);
  const std::string text = testing::internal::GetCapturedStderr();
  EXPECT_EQ(text.compare(0, 10, "lineupctl["), 0) << text;
}

TEST(Log, ModuleMayBeNull) {
  const std::string text = logged(7, 3, [] { log_function(7, nullptr, "%s: late", "operation"); });
  EXPECT_TRUE(text.ends_with("]: operation: late\n")) << text;
}

TEST(Log, RecordsAboveTheLevelAreDropped) {
  EXPECT_EQ(logged(3, 3, [] { log_function(4, "db", "no"); }), "");
  EXPECT_NE(logged(4, 3, [] { log_function(4, "db", "yes"); }), "");
}

TEST(Log, SyslogTargetAloneWritesNothingToStandardError) {
  EXPECT_EQ(logged(7, 1, [] { log_function(3, "db", "quiet"); }), "");
}

TEST(Log, ALongRecordIsWhole) {
  const std::string longText(5000, 'x');
  const std::string text = logged(7, 3, [&] { log_function(3, "db", "%s", longText.c_str()); });
  EXPECT_TRUE(text.ends_with(longText + "\n"));
}

/// Replaces standard error for its lifetime.
class StandardErrorIs {
 public:
  explicit StandardErrorIs(int descriptor) : before_(dup(STDERR_FILENO)) {
    dup2(descriptor, STDERR_FILENO);
  }
  ~StandardErrorIs() {
    dup2(before_, STDERR_FILENO);
    close(before_);
  }
  StandardErrorIs(const StandardErrorIs&) = delete;
  StandardErrorIs& operator=(const StandardErrorIs&) = delete;

 private:
  int before_;
};

TEST(Log, AStandardErrorThatNobodyReadsIsNotWaitedFor) {
  const Pipe pipe;
  log_setup(7, 3);
  {
    const StandardErrorIs blocked(pipe.writeEnd);
    for (int count = 0; count < 10'000; ++count) {
      log_function(3, "db", "number %d", count);
    }
  }
  std::string text(1 << 20, '\0');
  text.resize(static_cast<std::size_t>(read(pipe.readEnd, text.data(), text.size())));
  EXPECT_NE(text.find("number 100\n"), std::string::npos);
  EXPECT_EQ(text.find("number 9999\n"), std::string::npos);
  EXPECT_TRUE(text.ends_with("\n"));
}

}  // namespace
}  // namespace lineup::test
