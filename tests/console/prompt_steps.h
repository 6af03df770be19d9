// A session at the prompt, given as a list of lines with all that each must print.

#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/console_texts.h"
#include "tests/support/program_process.h"

namespace lineup::test {

/// One line typed at the prompt.
struct Step {
  std::string line;      ///< with a further line after a line feed if the command asks for one
  std::string output{};  ///< all that it prints
  bool pending = true;   ///< whether the prompt after it says that there are changes
};

inline std::string promptFor(bool pending) {
  return pending ? kPending : "> ";
}

/// All that the console prints up to the last prompt, if there is a controller.
inline std::string printedBy(const std::vector<Step>& steps) {
  std::string text = kGreeting + promptFor(false);
  for (const Step& step : steps) {
    text += step.output + promptFor(step.pending);
  }
  return text;
}

inline std::string typed(const std::vector<Step>& steps) {
  std::string text;
  for (const Step& step : steps) {
    text += step.line + "\n";
  }
  return text;
}

/// Expects a proper end, and exactly this on standard output.
inline void expectOutcome(const Outcome& outcome, const std::string& out) {
  EXPECT_EQ(outcome.out, out);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.status, 0);
}

/// Types the lines, then ends the input. Expects exactly the output of the steps and a proper end.
inline void expectSession(const std::vector<Step>& steps) {
  const bool pending = !steps.empty() && steps.back().pending;
  expectOutcome(runConsole({}, typed(steps)), printedBy(steps) + "\n" + (pending ? kNote : ""));
}

/// What the console has printed after its greeting, which is expected.
inline std::string afterGreeting(const Outcome& outcome) {
  EXPECT_TRUE(outcome.out.starts_with(kGreeting)) << outcome.out;
  return outcome.out.substr(std::min(kGreeting.size(), outcome.out.size()));
}

/// Runs the lines at the prompt. Expects a proper end, and returns what they print between the
/// greeting and the end.
inline std::string outputOf(const std::string& lines) {
  const Outcome outcome = runConsole({}, lines);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  return afterGreeting(outcome);
}

}  // namespace lineup::test
