// What Tab does, as a person sees it on a terminal.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/console/keys.h"
#include "tests/console/terminal_session.h"
#include "tests/support/catalogue_file.h"
#include "tests/support/file_content.h"
#include "tests/support/sandbox.h"

namespace lineup::test {
namespace {

using Completing = OnEachTerminal;

INSTANTIATE_TEST_SUITE_P(Terminals, Completing, kTerminals, nameOfTerminal);

TEST_P(Completing, CommandsAndTheirWords) {
  session.type("\t",
               "\n>\n"
               "help        findsat     addenc      rfmod       type        save\n"
               "quit        findcable   rfaddenc    rfnum       vlan        restore\n"
               "show        findip      ipaddenc    drm         addipmux    reset\n"
               "clear       adddvb      rfaddempty  eit         stdp        commit\n"
               "find        rfadddvb    addpls      id          rfinput     c\n"
               "findtdt     ipadddvb    rmpls       country     tdtscan\n"
               "> |");
  session.type("co\t", "\n> co\ncountry  commit\n> co|");
  session.type("u\t\t",
               "\n> country\n"
               "other       uk          portugal    sweden      mexico\n"
               "spain       australia   greece      finland     southkorea\n"
               "france      italy       newzealand  maldives    taiwan\n"
               "> country |");
  session.type("fi\t", "\n> country finland |");
  session.type("\n", "> country finland\nCountry changed. Please remember to commit the changes." +
                         kPendingOnScreen);
  session.type("rfi\tena\tsa\t\t",
               kPending +
                   "rfinput enable SAT\n"
                   "SAT1    SAT2    SAT3    SAT4    SAT5    SAT6    SAT7    SAT8    SATALL\n" +
                   kPending + "rfinput enable SAT|");
}

TEST_P(Completing, TheWordBeforeTheCursorKeepsTheRest) {
  session.type("rfm qam" + kHome + kRight + kRight + kRight + "\t", "\n> rfmod| qam");
}

TEST_P(Completing, AListBelowALineOfSeveralRowsLeavesThemAlone) {
  session.resize(24, 20);
  session.type(
      "drm 4567890123456789012" + kHome + kRight + kRight + kRight + kRight + "\t",
      "\n> drm 45678901234567\n89012\nlynk     off\nvsecure\n> drm |45678901234567\n89012");
}

TEST_P(Completing, WhereNothingIsPossibleTheLineStays) {
  session.type("xyz\t \tz\tid 11\t\t", "\n> xyz zid 11|");
}

TEST_F(OnATerminal, OfAFewRowsAListIsShownAsFarAsThereIsRoom) {
  Session session(onTerminal("xterm", 10, 20));
  session.type("country \t",
               "> country\nother\nspain\nfrance\nuk\naustralia\nitaly\nportugal\n(8 more)\n"
               "> country |");
}

TEST_F(OnATerminal, FilesAreCompletedForSaveAndRestore) {
  std::filesystem::create_directory(folder.file("lineups"));
  for (const char* name :
       {"lineups/north.json", "lineups/north-west.json", "letter", "with blank"}) {
    writeFile(folder.file(name), "{}");
  }
  Session session(start());
  session.type("save l\t", "\n> save l\nletter    lineups/\n> save l|");
  session.type("i\tno\t\t",
               "\n> save lineups/north\nnorth-west.json  north.json\n> save lineups/north|");
  session.type(".\t", "\n> save lineups/north.json |");
  session.type("\n", "\nSaved config to: lineups/north.json\n> |");
  EXPECT_NE(contentOf(folder.file("lineups/north.json")), "{}");
  session.type("restore w\t", "\n> restore w|");
}

TEST_F(OnATerminal, ServicesAreListedWithTheirNames) {
  CatalogueFile catalogue(kCataloguePath);
  catalogue.insert(kSat, {{15, "1017"}, {16, "Canal Uno"}});
  catalogue.insert(kTdt, {{10, "1018"}, {11, "Canal Dos"}});
  catalogue.insert(kIP, {{6, "22"}, {7, "Niñós TV"}});
  Session session(onTerminal());
  session.type("adddvb \t",
               "\n> adddvb\n"
               "22  Niñós TV (IP)      1017  Canal Uno (SAT)  1018  Canal Dos (TDT)\n"
               "> adddvb |");
  session.type("1\t\t",
               "\n> adddvb 101\n1017  Canal Uno (SAT)  1018  Canal Dos (TDT)\n> adddvb 101|");
  session.type("8\t", "\n> adddvb 1018\n1018  Canal Dos (TDT)\n> adddvb 1018 |");
  session.type(kCtrlU + "rfadddvb nIñ\t", "\n22  Niñós TV (IP)\n> rfadddvb 22 |");
}

TEST_F(OnATerminal, ServicesOfATableThatTakesTooLongAreLeftOut) {
  CatalogueFile catalogue(kCataloguePath);
  catalogue.insert(kTdt, {{10, "17"}, {11, "Canal Dos"}});
  catalogue.execute(
      "DROP TABLE availableSatService; CREATE VIEW availableSatService AS WITH RECURSIVE "
      "n(i) AS (VALUES(1) UNION ALL SELECT i + 1 FROM n) SELECT i service_id, 'x' "
      "service_name FROM n WHERE i < 0");
  Session session(onTerminal());
  session.type("adddvb 17\t", "\n17  Canal Dos (TDT)\n> adddvb 17 |");
}

TEST_F(OnATerminal, IPInputsAreThoseOfTheConfiguration) {
  auto config = controller.config();
  for (const int number : {1, 2}) {
    auto& input = config.ipInputs[std::to_string(number)];
    input.__set_slot(4);
    input.__set_interfaceId(number);
    input.address = "10.0.0." + std::to_string(number);
  }
  controller.setConfig(config);
  Session session(onTerminal());
  session.type("addipmux \t\t", "\n> addipmux 4\n1  10.0.0.1  2  10.0.0.2\n> addipmux 4 |");
}

}  // namespace
}  // namespace lineup::test
