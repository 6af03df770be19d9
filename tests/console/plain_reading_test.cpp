// Where lines are not edited, every byte is that of a console that is built without line editing.

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/console/keys.h"
#include "tests/console/terminal_session.h"

namespace lineup::test {
namespace {

/// What `session` returns for the program, with a controller of its own.
template <class RunSession>
auto with(const std::string& program, Start start, RunSession session) {
  const FakeController controller;
  start.program = program;
  return session(start);
}

class PlainReading : public testing::TestWithParam<std::optional<std::string>> {};

INSTANTIATE_TEST_SUITE_P(Terminals, PlainReading,
                         testing::Values("dumb", "", "emacs", std::nullopt),
                         [](const auto& instance) {
                           const std::string name = instance.param.value_or("unset");
                           return name.empty() ? "empty" : name;
                         });

/// Types a session of every kind of line, one after the other.
std::string typeSession(const Start& start) {
  ProgramProcess console(start);
  console.readUntil("> ");
  for (const char* line : {"id 3x\x7f\n", "\n", "addpls\n2 13\n", "find\tx\n", "é\x7f\n"}) {
    console.send(line);
    console.readUntil(kPending);
  }
  console.send(kCtrlD);
  return console.finish().out;
}

TEST_P(PlainReading, IsThatOfABuildWithoutLineEditing) {
  Start start = onTerminal();
  start.environment["TERM"] = GetParam();
  const std::string text = with(kConsoleProgram, start, typeSession);
  EXPECT_EQ(text, with(LINEUP_CONSOLE_PLAIN, start, typeSession));
  EXPECT_EQ(text.find('\x1b'), std::string::npos);
}

/// Lines for every command, and odd ones.
std::string everyKindOfLine() {
  std::string lines =
      "\n \n\t\nhelp\nshow\nclear\nadddvb\nid 3\nid é\naddpls\n1 2\naddpls\n\nrfmod qam\nrfmod\n"
      "\x04\x03\x1b[A\nsave\nrfinput\nrfinput x\ntdtscan status\n\xff\xfe\ncommit\n";
  lines += std::string("xyz\0abc\n", 8);
  lines += std::string(100'000, 'x') + "\nrmpls\naddpls";
  return lines;
}

TEST(OnAPipe, EveryByteIsThatOfABuildWithoutLineEditing) {
  const auto pipeSession = [](const Start& start) { return run(start, everyKindOfLine()); };
  for (const char* type : {"xterm", "dumb"}) {
    Start start = onTerminal(type);
    start.terminal = false;
    const Outcome outcome = with(kConsoleProgram, start, pipeSession);
    const Outcome plain = with(LINEUP_CONSOLE_PLAIN, start, pipeSession);
    EXPECT_EQ(outcome.out, plain.out);
    EXPECT_EQ(outcome.err, plain.err);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out.find('\x1b'), outcome.out.find("\x1b[A")) << "but what was sent";
  }
}

TEST_F(OnATerminal, WithOneOfInputAndOutputElsewhereLinesAreNotEdited) {
  for (const std::string& command :
       {"printf 'id 3\\n' | " + kConsoleProgram, kConsoleProgram + " | cat"}) {
    ProgramProcess console(inShell(command, onTerminal()));
    console.readUntil("> ");
    console.send(command.ends_with("cat") ? "id 3\n" : "");
    console.readUntil(kPending);
    console.send(kCtrlD);
    EXPECT_EQ(console.finish().out.find('\x1b'), std::string::npos);
  }
}

}  // namespace
}  // namespace lineup::test
