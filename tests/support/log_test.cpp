#include "support/log.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <string>

#include "tests/support/pipe.h"
#include "tests/support/streams.h"

namespace lineup::test {
namespace {

/// What reaches standard error when `write` runs under log_setup(level, targets).
template <class Write>
std::string written(int level, int targets, Write write) {
  log_setup(level, targets);
  return errorsOf(write);
}

TEST(Log, TargetsAreTheNumbersThatCallersGive) {
  EXPECT_EQ(LOG_TO_SYSLOG, 1);
  EXPECT_EQ(LOG_TO_STDERR, 2);
  EXPECT_EQ(LOG_TO_SYSLOG_AND_STDERR, 3);
}

TEST(Log, ConsoleTargetWritesARecordToStandardError) {
  const std::string text =
      written(7, LOG_TO_SYSLOG_AND_STDERR, [] { log_function(3, "db", "code %d", 5); });
  EXPECT_EQ(text.compare(0, 15, "lineup-console["), 0) << text;
  EXPECT_TRUE(text.ends_with("]: [db] code 5\n")) << text;
}

TEST(Log, ARecordBeginsWithTheProgramThatIsGiven) {
  log_setup(7, LOG_TO_SYSLOG_AND_STDERR, "lineupctl");
  const std::string text = errorsOf([] { log_function(3, "db", "late"); });
  log_setup(7, LOG_TO_SYSLOG_AND_STDERR);
  EXPECT_EQ(text.compare(0, 10, "lineupctl["), 0) << text;
}

TEST(Log, ModuleMayBeNull) {
  const std::string text = written(7, LOG_TO_SYSLOG_AND_STDERR,
                                   [] { log_function(7, nullptr, "%s: late", "operation"); });
  EXPECT_TRUE(text.ends_with("]: operation: late\n")) << text;
}

TEST(Log, RecordsAboveTheLevelAreDropped) {
  EXPECT_EQ(written(3, LOG_TO_SYSLOG_AND_STDERR, [] { log_function(4, "db", "no"); }), "");
  EXPECT_NE(written(4, LOG_TO_SYSLOG_AND_STDERR, [] { log_function(4, "db", "yes"); }), "");
}

TEST(Log, SyslogTargetAloneWritesNothingToStandardError) {
  EXPECT_EQ(written(7, LOG_TO_SYSLOG, [] { log_function(3, "db", "quiet"); }), "");
}

TEST(Log, ALongRecordIsWhole) {
  const std::string longText(5000, 'x');
  const std::string text =
      written(7, LOG_TO_SYSLOG_AND_STDERR, [&] { log_function(3, "db", "%s", longText.c_str()); });
  EXPECT_TRUE(text.ends_with(longText + "\n"));
}

TEST(Log, AStandardErrorThatNobodyReadsIsNotWaitedFor) {
  const Pipe pipe;
  log_setup(7, LOG_TO_SYSLOG_AND_STDERR);
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
