// Earlier lines, as a person brings them back and searches them.

#include <gtest/gtest.h>

#include "tests/console/keys.h"
#include "tests/console/terminal_session.h"

namespace lineup::test {
namespace {

using EarlierLines = OnEachTerminal;

INSTANTIATE_TEST_SUITE_P(Terminals, EarlierLines, kTerminals, nameOfTerminal);

TEST_P(EarlierLines, ComeBackWithoutRepetitionsAndEmptyLines) {
  session.type("xa\nxb\nxb\n\nxc\n", "> xc\n" + kInvalidCommand + "> |");
  session.type("new" + kUp, "\n> xc|");
  session.type(kUp, "\n> xb|");
  session.type(kUp, "\n> xa|");
  session.type(kDown + kDown + kDown, "\n> new|");
}

TEST_P(EarlierLines, ThatWereChangedStaySoUntilALineIsEntered) {
  session.type("xa\nxb\n", "> xb\n" + kInvalidCommand + "> |");
  session.type("new" + kUp + "1" + kUp + "2" + kDown, "\n> xb1|");
  session.type(kUp, "\n> xa2|");
  session.type(kDown + kDown + "3" + kUp + kDown, "\n> new3|");
  session.type(kUp + "\n", "> xb1\n" + kInvalidCommand + "> |");
  session.type(kUp, "\n> xb1|");
  session.type(kUp, "\n> xb|");
  session.type(kUp, "\n> xa|");
  session.type("4" + kUp + kCtrlC, "^C\n> |");
  session.type(kUp + kUp + kUp, "\n> xa|");
}

TEST_P(EarlierLines, ASearchLeavesWhatWasTypedAfterTheLastLine) {
  session.type("xa\nxb\n", "> xb\n" + kInvalidCommand + "> |");
  session.type("new" + kCtrlR + "b" + kDown, "\n> new|");
  session.type(kCtrlR + "b" + kCtrlG, "\n> new|");
  session.type(kUp, "\n> xb|");
}

TEST_P(EarlierLines, CtrlRSearchesEarlierLines) {
  session.type("eit off\nid 4\neit actual\nid 5\n", changedOnScreen(5));
  session.type(kCtrlR + "eit", "\n" + kPending + "|eit actual\nbck:eit");
  session.type(kCtrlR, "\n" + kPending + "|eit off\nbck:eit");
  session.type("\n", kPending + "eit off\nChanged EIT working mode to: off" + kPendingOnScreen);
  session.type(kCtrlR + "id" + kCtrlG, kPendingOnScreen);
}

TEST_P(EarlierLines, EscapeEndsASearchAndKeepsWhatItFound) {
  session.type("eit xyz\n", "\n> |");
  session.type(kCtrlR + "it", "\n> e|it xyz\nbck:it");
  session.type("\x1b", "\n> e|it xyz");
  session.type("d", "\n> ed|it xyz");
}

TEST_P(EarlierLines, CtrlCEndsASearchAndDropsTheLine) {
  session.type("eit xyz\n", "\n> |");
  session.type(kCtrlR + "it", "\n> e|it xyz\nbck:it");
  session.type(kCtrlC, "\n> e^C xyz\n> |");
  session.type("x", "\n> x|");
}

TEST_P(EarlierLines, CtrlRTakesTheTextLiterally) {
  session.type("look (a*)*b.c\nlook aaaa\n", "\n> look aaaa\n" + kInvalidCommand + "> |");
  session.type(kCtrlR + "(a*)*", "\n> look |(a*)*b.c\nbck:(a*)*");
  session.type("$", "\n> look |(a*)*b.c\nbck:(a*)*$?");
  session.type(kBackspace + kBackspace + kBackspace + kBackspace + kBackspace + "a",
               "\n> look |(a*)*b.c\nbck:(a");
  session.type(kRight, "\n> look (|a*)*b.c");
}

}  // namespace
}  // namespace lineup::test
