// Texts that the console prints around every command.

#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/console_process.h"

namespace lineup::test {

inline constexpr char kGreeting[] = "Enter 'help' and press return for help\n";
inline constexpr char kPending[] = "(changes to commit) > ";
inline constexpr char kNote[] = "NOTE: Changes have not been committed\n";
inline constexpr char kFetchFailed[] = "ERROR: Could not get current config from ControllerTask\n";
inline constexpr char kCommitFailed[] = "ERROR: Could not set LineupConfig to ControllerTask\n";

/// What the console has printed behind its greeting, which is expected.
inline std::string printed(const Outcome& outcome) {
  EXPECT_TRUE(outcome.out.starts_with(kGreeting)) << outcome.out;
  constexpr std::size_t kLength = std::string_view(kGreeting).size();
  return outcome.out.size() < kLength ? "" : outcome.out.substr(kLength);
}

/// Runs the lines at the prompt. Expects a proper end, and returns what they print between the
/// greeting and the end.
inline std::string printedBy(const std::string& lines) {
  const Outcome outcome = runConsole({}, lines);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  return printed(outcome);
}

}  // namespace lineup::test
