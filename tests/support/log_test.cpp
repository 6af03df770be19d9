#include "support/log.h"

#include <gtest/gtest.h>

#include <string>

namespace {

/// What reaches standard error when `write` runs under log_setup(level, targets).
template <class Write>
std::string logged(int level, int targets, Write write) {
  testing::internal::CaptureStderr();
  log_setup(level, targets);
  write();
  return testing::internal::GetCapturedStderr();
}

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

TEST(Log, ConsoleTargetWritesARecordToStandardError) {
  const std::string text = logged(7, 3, [] { log_function(3, "db", "code %d", 5); });
  EXPECT_EQ(text.compare(0, 15, "lineup-console["), 0) << text;
  EXPECT_TRUE(endsWith(text, "]: [db] code 5\n")) << text;
}

TEST(Log, ModuleMayBeNull) {
  const std::string text = logged(7, 3, [] { log_function(7, nullptr, "%s: late", "operation"); });
  EXPECT_TRUE(endsWith(text, "]: operation: late\n")) << text;
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
  EXPECT_TRUE(endsWith(text, longText + "\n"));
}

}  // namespace
