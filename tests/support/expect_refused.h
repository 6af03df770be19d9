// Checks that an operation refuses its arguments and leaves the editor alone.

#pragma once

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "model/lineup_editor.h"

namespace lineup::test {

/// Runs `operation` and expects a std::runtime_error with the text `message`, and `editor` as it
/// was.
template <class Operation>
void expectRefused(LineupEditor& editor, const std::string& message, Operation operation) {
  const hub_module::HeadendConfig before = editor.config;
  const bool pendingBefore = editor.pendingChanges;
  try {
    operation();
    ADD_FAILURE() << "not refused; expected: " << message;
  } catch (const std::runtime_error& refusal) {
    EXPECT_EQ(refusal.what(), message);
  }
  EXPECT_EQ(editor.config, before);
  EXPECT_EQ(editor.pendingChanges, pendingBefore);
}

}  // namespace lineup::test
