#include "terminal/line_completion.h"

#include <gtest/gtest.h>

#include <clocale>
#include <string>
#include <vector>

#include "terminal/letters.h"

namespace lineup::test {
namespace {

class CompleteWord : public testing::Test {
 protected:
  CompleteWord() { std::setlocale(LC_CTYPE, "C.UTF-8"); }
};

/// The list of what is shown, each on a line, a '-' for each letter that is erased, and what is
/// inserted.
std::string completed(const std::string& begun, const std::vector<Candidate>& candidates,
                      bool blankFollows = false) {
  const Completion completion = completeWord(begun, blankFollows, candidates);
  std::string text;
  for (const std::string& item : completion.listed) {
    text += item + "\n";
  }
  return text + std::string(completion.erased, '-') + bytesOf(completion.inserted);
}

TEST_F(CompleteWord, OneWordGetsABlankUnlessThereIsOneOrItIsAFolder) {
  EXPECT_EQ(completed("rfinput e", {{"enable", ""}}), "nable ");
  EXPECT_EQ(completed("rfm", {{"rfmod", ""}}, true), "od");
  EXPECT_EQ(completed("save l", {{"lineups/", ""}}), "ineups/");
  EXPECT_EQ(completed("save ", {{"lineups", ""}}), "lineups ");
}

TEST_F(CompleteWord, SeveralAreListedOnceTheirCommonBeginningIsTyped) {
  const std::vector<Candidate> files{{"lineups/north.json", ""}, {"lineups/north-west.json", ""}};
  EXPECT_EQ(completed("save l", files), "ineups/north");
  EXPECT_EQ(completed("save lineups/north", files), "north.json\nnorth-west.json\n");
}

TEST_F(CompleteWord, ABeginningEndsBetweenTwoLetters) {
  const std::vector<Candidate> files{{"café", ""}, {"cafè", ""}};
  EXPECT_EQ(completed("save c", files), "af");
  EXPECT_EQ(completed("save caf", files), "café\ncafè\n");
}

TEST_F(CompleteWord, WhatIsTypedInAnotherWayIsReplaced) {
  EXPECT_EQ(completed("rfinput enable sa", {{"SAT1", ""}, {"SAT2", ""}}), "--SAT");
  EXPECT_EQ(completed("find l'", {{"L_Étoile_Bleue", ""}, {"L_Étoile_Rouge", ""}}), "--L_Étoile_");
  EXPECT_EQ(completed("findsat étoile", {{"L_Étoile_Bleue", ""}}), "------L_Étoile_Bleue ");
}

TEST_F(CompleteWord, OneWithANoteIsListedToo) {
  EXPECT_EQ(completed("adddvb 1", {{"17", "Uno (SAT)"}}), "17  Uno (SAT)\n7 ");
  EXPECT_EQ(completed("adddvb uno", {{"17", "Uno (SAT)"}, {"18", "Uno (TDT)"}}),
            "17  Uno (SAT)\n18  Uno (TDT)\n");
}

}  // namespace
}  // namespace lineup::test
