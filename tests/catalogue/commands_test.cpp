// Finding and storing services of a catalogue in the controller's place.

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "catalogue/available_names.h"
#include "catalogue/build_dvb_services.h"
#include "model/headend_places.h"
#include "model/lineup_editor.h"
#include "tests/support/catalogue_file.h"
#include "tests/support/catalogue_services.h"
#include "tests/support/streams.h"

namespace lineup {
namespace {

using namespace lineup::test;
using hub_module::DVBInputServiceConfig;

class Catalogue : public testing::Test {
 protected:
  CatalogueFile file{kCataloguePath};
  LineupEditor editor;
};

using FindServices = Catalogue;
using AvailableServiceNames = Catalogue;
using BuildService = Catalogue;
using AddCatalogueService = Catalogue;

TEST_F(FindServices, EachTableHasItsLine) {
  insertOneOfEach(file);
  EXPECT_EQ(printed([&] { editor.findSatServices("Channel"); }), kSatLine);
  EXPECT_EQ(printed([&] { editor.findTdtServices("uno"); }), kTdtLine);
  EXPECT_EQ(printed([&] { editor.findCableServices("Eins"); }), kCableLine);
  EXPECT_EQ(printed([&] { editor.findIPServices("IP"); }), kIPLine);
}

TEST_F(FindServices, AllTablesInOrder) {
  insertOneOfEach(file);
  EXPECT_EQ(printed([&] { editor.findServices(""); }), kFoundLines);
  EXPECT_EQ(printed([&] { editor.findServices("channel"); }),
            std::string("No TDT services found.\n") + kSatLine +
                "No Cable services found.\n"
                "No IP services found.\n");
}

TEST_F(FindServices, NoMatchHasItsMessageForEachTable) {
  insertOneOfEach(file);
  EXPECT_EQ(printed([&] { editor.findServices("nothing"); }), kNothingFound);
  EXPECT_EQ(printed([&] { editor.findSatServices("4101"); }), "No SAT services found.\n")
      << "only the name counts";
}

TEST_F(FindServices, AnEmptyNameListsEveryServiceInOrder) {
  for (const char* id : {"3", "1", "2"}) {
    file.insert(kSat, with(kSatRow, {{15, id}}));
  }
  EXPECT_EQ(printed([&] { editor.findSatServices(""); }),
            "3\tChannel One FR: 11778 MHz SID: 4101 L: a,b\n"
            "1\tChannel One FR: 11778 MHz SID: 4101 L: a,b\n"
            "2\tChannel One FR: 11778 MHz SID: 4101 L: a,b\n");
}

TEST_F(FindServices, NullCellsPrintAsZeroOrNothing) {
  file.insert(kSat, {{16, "Bare"}});
  file.insert(kIP, {{7, "Bare"}});
  EXPECT_EQ(printed([&] { editor.findSatServices("Bare"); }), "0\tBare FR: 0 MHz SID: 0 L: \n");
  EXPECT_EQ(printed([&] { editor.findIPServices("Bare"); }), "0\tBare URL:  kHz SID: 0 L: \n");
}

TEST_F(FindServices, NothingOfTheConfigurationChanges) {
  insertOneOfEach(file);
  printed([&] { editor.findServices(""); });
  EXPECT_FALSE(editor.pendingChanges);
  EXPECT_EQ(editor.config, hub_module::HeadendConfig());
}

TEST_F(AvailableServiceNames, AreReadOfAHundredThousandServices) {
  fillCable(file, 100'000);
  const auto names = readAvailableServiceNames();
  ASSERT_EQ(names.size(), 100'000U);
  EXPECT_EQ(names.at(100'000).name, "Ch 100000");
  EXPECT_STREQ(names.at(100'000).input, "Cable");
}

TEST_F(AvailableServiceNames, AreReadByPositionLikeFoundOnes) {
  file.insert(kIP, with(kIPRow, {{6, "19"}, {10, "22"}}));
  file.execute(std::string("ALTER TABLE ") + kIP + " RENAME COLUMN service_id TO number");
  EXPECT_EQ(printed([&] { editor.findIPServices("IP"); }), kIPLine);
  const auto names = readAvailableServiceNames();
  ASSERT_EQ(names.size(), 1U);
  EXPECT_EQ(names.at(19).name, kIPRow.at(7));
  EXPECT_EQ(names.at(19).type, 22);
}

TEST_F(AvailableServiceNames, OfACatalogueThatCannotBeReachedAreNone) {
  std::filesystem::remove(kCataloguePath);
  std::filesystem::create_symlink(kCataloguePath, kCataloguePath);
  EXPECT_TRUE(readAvailableServiceNames().empty());
}

TEST_F(BuildService, FromARowOfEachTable) {
  insertOneOfEach(file);
  EXPECT_EQ(buildSatService(1017), satService());
  EXPECT_EQ(buildTdtService(17), tdtService());
  EXPECT_EQ(buildCableService(18), cableService());
  EXPECT_EQ(buildIPService(19), ipService());
}

TEST_F(BuildService, NullCellsBecomeZeroWhateverTheDefault) {
  file.insert(kSat, {{15, "1"}});
  file.insert(kTdt, {{10, "1"}});
  const DVBInputServiceConfig sat = buildSatService(1);
  EXPECT_EQ(sat.service.lineupSATMux.satParam5, 0);
  EXPECT_EQ(sat.service.lineupSATMux.satParam7, 0);
  EXPECT_EQ(sat.service.name, "");
  EXPECT_TRUE(sat.service.intItems.empty());
  EXPECT_TRUE(sat.service.lItems.empty());
  EXPECT_FALSE(sat.configFlag);
  EXPECT_EQ(buildTdtService(1).service.lineupTDTMux.tdtParam4, 0);
}

TEST_F(BuildService, TakesTheFirstOfSeveralRows) {
  file.insert(kSat, with(kSatRow, {{16, "First"}}));
  file.insert(kSat, with(kSatRow, {{16, "Second"}, {24, "malformed"}}));
  EXPECT_EQ(buildSatService(1017).service.name, "First");
}

TEST_F(BuildService, ListsMayBeLong) {
  constexpr int kItems = 100'000;
  std::string texts;
  std::string integers;
  for (int item = 0; item < kItems; ++item) {
    texts += "spa" + std::to_string(item) + ",";
    integers += std::to_string(item) + ",";
  }
  file.insert(kSat, with(kSatRow, {{23, texts}, {24, integers}}));
  const DVBInputServiceConfig service = buildSatService(1017);
  ASSERT_EQ(service.service.lItems.size(), static_cast<std::size_t>(kItems));
  ASSERT_EQ(service.service.intItems.size(), static_cast<std::size_t>(kItems));
  EXPECT_EQ(service.service.lItems.back(), "spa99999");
  EXPECT_EQ(service.service.intItems.back(), 99'999);
}

TEST_F(BuildService, WithoutARowFails) {
  insertOneOfEach(file);
  for (const auto build : {buildSatService, buildTdtService, buildCableService, buildIPService}) {
    try {
      build(4711);
      ADD_FAILURE() << "found";
    } catch (const std::runtime_error& error) {
      EXPECT_STREQ(error.what(), "Service not found on DB");
    }
  }
}

TEST_F(BuildService, AMalformedIntegerListIsALogicError) {
  file.insert(kSat, with(kSatRow, {{24, "101,,103"}}));
  file.insert(kTdt, with(kTdtRow, {{16, "2147483648"}}));
  file.insert(kCable, with(kCableRow, {{16, "x"}}));
  file.insert(kIP, with(kIPRow, {{12, ",1"}}));
  EXPECT_THROW(buildSatService(1017), std::invalid_argument);
  EXPECT_THROW(buildTdtService(17), std::out_of_range);
  EXPECT_THROW(buildCableService(18), std::invalid_argument);
  EXPECT_THROW(buildIPService(19), std::invalid_argument);
  // Nobody holds the catalogue after that.
  EXPECT_NO_THROW(CatalogueLock(kCataloguePath).release());
}

TEST_F(AddCatalogueService, TheFirstTableThatHasTheIdWins) {
  file.insert(kIP, with(kIPRow, {{6, "5"}}));
  EXPECT_EQ(editor.addCatalogueService(5), 1);
  file.insert(kCable, with(kCableRow, {{10, "5"}}));
  EXPECT_EQ(editor.addCatalogueService(5), 2);
  file.insert(kTdt, with(kTdtRow, {{10, "5"}}));
  EXPECT_EQ(editor.addCatalogueService(5), 3);
  file.insert(kSat, with(kSatRow, {{15, "5"}}));
  EXPECT_EQ(editor.addCatalogueService(5), 4);

  const auto& services = editor.config.lineupConfig.dvbInputServices;
  EXPECT_EQ(services.at(1).service.inputType, 4);
  EXPECT_EQ(services.at(1).service.ipMuxUUID, "0f1e2d3c-0000-4000-8000-000000000001");
  EXPECT_FALSE(services.at(1).service.__isset.lineupSATMux);
  EXPECT_EQ(services.at(2).service.inputType, 3);
  EXPECT_EQ(services.at(3).service.inputType, 1);
  EXPECT_EQ(services.at(4).service.inputType, 2);
  EXPECT_TRUE(editor.pendingChanges);
}

TEST_F(AddCatalogueService, AnUnknownIdChangesNothing) {
  insertOneOfEach(file);
  try {
    editor.addCatalogueService(0);
    ADD_FAILURE() << "found";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "Service not found");
  }
  EXPECT_FALSE(editor.pendingChanges);
  EXPECT_EQ(editor.config, hub_module::HeadendConfig());
}

TEST_F(AddCatalogueService, AMalformedIntegerListEndsTheSearch) {
  file.insert(kSat, with(kSatRow, {{15, "17"}, {24, "101,,103"}}));
  file.insert(kTdt, kTdtRow);  // has the id too
  EXPECT_THROW(editor.addCatalogueService(17), std::invalid_argument);
  EXPECT_FALSE(editor.pendingChanges);
  EXPECT_EQ(editor.config, hub_module::HeadendConfig());
}

}  // namespace
}  // namespace lineup
