// Programs that are asked to end.

#pragma once

#include <gtest/gtest.h>

#include "tests/support/program_process.h"

namespace lineup::test {

/// Waits for the program's end and expects that it is by the signal. Returns how it ended.
inline Outcome expectEndBy(ProgramProcess& program, int signal) {
  Outcome outcome = program.finish();
  EXPECT_EQ(outcome.signal, signal) << outcome.out << outcome.err;
  return outcome;
}

/// Sends the signal and expects that.
inline Outcome endBy(ProgramProcess& program, int signal) {
  program.signal(signal);
  return expectEndBy(program, signal);
}

}  // namespace lineup::test
