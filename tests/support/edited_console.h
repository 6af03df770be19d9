// A console whose edits are pending.

#pragma once

#include "tests/support/console_texts.h"
#include "tests/support/program_process.h"

namespace lineup::test {

/// A console in which the headend's id was changed to 7.
class EditedConsole : public ProgramProcess {
 public:
  explicit EditedConsole(const Start& start) : ProgramProcess(start) {
    readUntil("> ");
    send("id 7\n");
    readUntil(kPending);
  }
};

}  // namespace lineup::test
