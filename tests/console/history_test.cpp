// The lines that are kept between consoles.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/console/keys.h"
#include "tests/console/terminal_session.h"
#include "tests/support/expect_for_owner_alone.h"
#include "tests/support/file_content.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;

class History : public OnATerminal {
 protected:
  static void typeInvalid(Session& session, const std::string& line) {
    session.type(line + "\n", "> " + line + "\n" + kInvalidCommand + "> |");
  }

  /// Types lines that each lead to a prompt without changes, in a console of their own.
  static void enter(const Start& start, const std::vector<std::string>& lines) {
    Session session(start);
    for (const std::string& line : lines) {
      typeInvalid(session, line);
    }
    session.quit();
  }

  /// Expects that Up in a new console leads to `lines`, the last one first.
  static void expectRecalled(const Start& start, const std::vector<std::string>& lines) {
    Session session(start);
    for (const std::string& line : lines) {
      session.type(kUp, "> " + line + "|");
    }
  }

  std::string content() const { return contentOf(path); }

  void makeFolder() const { fs::create_directory(fs::path(path).parent_path()); }

  TemporaryFolder elsewhere;
  const std::string path = folder.file("lineup-console/history");
};

TEST_F(History, IsKeptForTheNextConsoleAndClosedToOthers) {
  enter(start(), {"first", "Étoile \xE2\x98\x85", "second", "second"});
  EXPECT_EQ(content(), "first\nÉtoile \xE2\x98\x85\nsecond\nquit\n");
  expectForOwnerAlone(path);
  expectRecalled(start(), {"quit", "second", "Étoile \xE2\x98\x85", "first"});
}

TEST_F(History, HoldsTheLinesOfConsolesThatRunSideBySide) {
  Session one(start());
  Session other(start());
  std::string expected;
  for (const std::string line : {"a", "b", "c"}) {
    for (Session* session : {&one, &other}) {
      const std::string typed = line + (session == &one ? "1" : "2");
      typeInvalid(*session, typed);
      expected += typed + "\n";
    }
  }
  EXPECT_EQ(content(), expected);
}

TEST_F(History, IsTheLastThousandLines) {
  makeFolder();
  std::string kept;
  for (int line = 1; line < 1000; ++line) {
    kept += "line " + std::to_string(line) + "\n";
  }
  writeFile(path, "oldest\nold\n" + kept);
  enter(start(), {"new"});
  kept.erase(0, kept.find('\n') + 1);
  EXPECT_EQ(content(), kept + "new\nquit\n");
  EXPECT_EQ(pathsIn(fs::path(path).parent_path()).size(), 1U);
  expectRecalled(start(), {"quit", "new", "line 999"});
}

TEST_F(History, LettersBeyondUnicodeAreLeftOut) {
  makeFolder();
  writeFile(path,
            "id \xfd\x88\x85\xa3\x8d\x93"
            "3\n");
  expectRecalled(start(), {"id 3"});
}

TEST_F(History, ThatWasCutGoesOnWithALineOfItsOwn) {
  makeFolder();
  writeFile(path, "first\nsec");
  enter(start(), {});
  EXPECT_EQ(content(), "first\nsec\nquit\n");
}

TEST_F(History, IsOffWhereTheVariableIsEmpty) {
  enter(start(), {"first"});
  Start off = start();
  off.environment["LINEUP_HISTORY"] = "";
  enter(off, {"second"});
  EXPECT_EQ(content(), "first\nquit\n");
  Session session(off);
  session.type(kUp + "x", "> x|");
}

TEST_F(History, IsNotOfPipesNorOfTerminalsWithoutLineEditingNorOfAnswers) {
  Start pipes = start();
  pipes.terminal = false;
  run(pipes, "help\nquit\n");
  Start dumb = start();
  dumb.environment["TERM"] = "dumb";
  run(dumb, "help\nquit\n");
  EXPECT_FALSE(fs::exists(path));
  Session session(start());
  session.askForPlsItem();
  session.type("1 2\n", kPendingOnScreen);
  EXPECT_EQ(content(), "addpls\n");
}

TEST_F(History, IsNeverALink) {
  makeFolder();
  const std::string target = elsewhere.file("target");
  writeFile(target, "secret\n");
  for (const bool dangling : {false, true}) {
    fs::remove(path);
    fs::create_symlink(dangling ? elsewhere.file("none") : target, path);
    enter(start(), {"first"});
    Session session(start());
    session.type(kUp + "x", "> x|");
  }
  EXPECT_EQ(contentOf(target), "secret\n");
  EXPECT_FALSE(fs::exists(elsewhere.file("none")));
}

TEST_F(History, IsNeverAPipeOrAFolder) {
  makeFolder();
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  enter(start(), {"first"});
  fs::remove(path);
  fs::create_directory(path);
  enter(start(), {"first"});
  EXPECT_TRUE(fs::is_empty(path));
}

TEST_F(History, OfSomebodyElseIsLeftAlone) {
  makeFolder();
  writeFile(path, "theirs\n");
  if (geteuid() != 0 || chown(path.c_str(), 1, 1) != 0) {
    GTEST_SKIP() << "no file of somebody else can be made";
  }
  enter(start(), {"first"});
  EXPECT_EQ(content(), "theirs\n");
}

TEST_F(History, ThatIsOpenToOthersIsClosed) {
  makeFolder();
  writeFile(path, "first\n");
  ASSERT_EQ(chmod(path.c_str(), 0644), 0);
  enter(start(), {});
  expectForOwnerAlone(path);
}

#ifndef SANITIZED  // which needs memory of its own

TEST_F(History, ThatDoesNotFitIntoMemoryIsNeitherReadNorChanged) {
  makeFolder();
  std::ofstream file(path);
  for (int line = 0; line < 1000; ++line) {
    file << line << std::string(20'000, 'x') << "\n";
  }
  file << "last\n" << std::flush;
  enter(inShell("ulimit -d 16384; exec " + kConsoleProgram, start()), {"new"});
  expectRecalled(start(), {"last"});
}

#endif

}  // namespace
}  // namespace lineup::test
