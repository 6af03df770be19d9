// The command "catalogue" of lineupctl.

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "model/headend_places.h"
#include "tests/ctl/ctl_process.h"
#include "tests/support/catalogue_file.h"

namespace lineup::test {
namespace {

const std::string kFile = kCataloguePath;

class CtlCatalogue : public testing::Test {
 protected:
  ~CtlCatalogue() override { std::filesystem::remove(kFile); }

  /// A catalogue with services in each table.
  static void makeCatalogue() {
    CatalogueFile catalogue(kFile);
    addSat(catalogue, "17", "Velaria News");
    addSat(catalogue, "18", "Big \"News\" 50%");
    catalogue.insert(kTdt, {{10, "17"}, {11, "News Local"}, {12, "201"}, {5, "474000"}});
    catalogue.insert(kCable, {{10, "30"}, {11, "O'News_1"}, {12, "301"}, {5, "306000"}});
    catalogue.insert(kIP, {{6, "40"}, {7, "IP news"}, {8, "401"}, {2, "udp://239.0.0.1:5000"}});
    catalogue.insert(kIP, {{6, "41"}, {7, {}}});
  }

  static void addSat(CatalogueFile& catalogue, const std::string& number, const std::string& name) {
    catalogue.insert(kSat, {{15, number}, {16, name}, {17, "101"}, {7, "11778"}});
  }
};

TEST_F(CtlCatalogue, ShowsTheServicesWhoseNamesHoldTheWords) {
  makeCatalogue();
  expectCtl({"catalogue", "NEWS"}, 0,
            "NUMBER  NAME            KIND   SOURCE                SID  ADDDVB\n"
            "17      Velaria News    SAT    11778 MHz             101  SAT\n"
            "18      Big \"News\" 50%  SAT    11778 MHz             101  SAT\n"
            "17      News Local      TDT    474000 kHz            201  SAT\n"
            "30      O'News_1        Cable  306000 kHz            301  Cable\n"
            "40      IP news         IP     udp://239.0.0.1:5000  401  IP\n");
  expectCtl({"catalogue", "--format=csv", "news", "big"}, 0,
            "number,name,kind,source,SID,adddvb\n"
            "18,\"Big \"\"News\"\" 50%\",SAT,11778 MHz,101,SAT\n");
  expectCtl({"catalogue", "none"}, 0, "");
}

TEST_F(CtlCatalogue, ListsEverythingWithoutAWord) {
  makeCatalogue();
  const Outcome outcome = runCtl({"catalogue", "--format=json"});
  EXPECT_EQ(outcome.status, 0);
  const auto list = nlohmann::json::parse(outcome.out);
  ASSERT_EQ(list.size(), 6U);
  EXPECT_EQ(list[2], nlohmann::json({{"number", 17},
                                     {"name", "News Local"},
                                     {"kind", "TDT"},
                                     {"source", "474000 kHz"},
                                     {"sid", 201},
                                     {"adddvb", "SAT"}}));
  EXPECT_EQ(list[5]["name"], "");
  EXPECT_EQ(list[5]["number"], 41);
  EXPECT_EQ(list[5]["sid"], "");  // there is none
}

TEST_F(CtlCatalogue, SaysCellsThatAreNoWholeNumbersAsTexts) {
  CatalogueFile catalogue(kFile);
  for (const std::string number : {"1.5", "12 a", "-3"}) {
    addSat(catalogue, number, "News");
  }
  nlohmann::json numbers;
  for (const auto& service : nlohmann::json::parse(runCtl({"catalogue", "--format=json"}).out)) {
    numbers.push_back(service["number"]);
  }
  EXPECT_EQ(numbers, nlohmann::json({"1.5", "12 a", -3}));
}

TEST_F(CtlCatalogue, WaitsForACatalogueThatIsBeingWritten) {
  makeCatalogue();
  CatalogueLock lock(kFile);
  ProgramProcess asking(ctl({"catalogue", "velaria"}));
  asking.waitUntilBlocked();
  lock.release();
  EXPECT_EQ(asking.finish().status, 0);
}

TEST_F(CtlCatalogue, GivesUpALockedCatalogue) {
  makeCatalogue();
  const CatalogueLock lock(kFile);
  expectCtl({"catalogue"}, 3, "", kFile + ": database is locked");
}

}  // namespace
}  // namespace lineup::test
