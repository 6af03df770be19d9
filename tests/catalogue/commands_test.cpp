// Finding and storing services of a catalogue in the controller's place.

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "catalogue/build_dvb_services.h"
#include "catalogue/find_available_services.h"
#include "model/headend_places.h"
#include "model/lineup_editor.h"
#include "tests/support/catalogue_file.h"

namespace lineup {
namespace {

using hub_module::DVBInputServiceConfig;
using test::CatalogueFile;
using test::Cells;
using test::kCable;
using test::kIP;
using test::kSat;
using test::kTdt;

/// A row of each table with every column filled that the console uses.
const Cells kSatRow{{2, "120"}, {4, "1"},   {7, "11778"}, {8, "27500"},        {11, "4"},
                    {12, "1"},  {13, "26"}, {15, "1017"}, {16, "Channel One"}, {17, "4101"},
                    {18, "1"},  {19, "25"}, {23, "a,b"},  {24, "101,102,103"}};
const Cells kTdtRow{{5, "490000"}, {6, "8"},          {7, "2"},    {8, "1"},
                    {10, "17"},    {11, "Télé Uno"},  {12, "101"}, {13, "0"},
                    {14, "1"},     {15, "spa,,eng,"}, {16, "1,-2"}};
const Cells kCableRow{{5, "306000"}, {6, "6875"}, {7, "64"}, {10, "18"}, {11, "Kabel Eins"},
                      {12, "201"},   {13, "-1"},  {14, "2"}, {15, ""},   {16, ""}};
const Cells kIPRow{{1, "0f1e2d3c-0000-4000-8000-000000000001"},
                   {2, "udp://239.1.1.1:1234"},
                   {6, "19"},
                   {7, "IP Uno"},
                   {8, "301"},
                   {9, "1"},
                   {10, "1"},
                   {11, "x"},
                   {12, "9"}};

class Catalogue : public testing::Test {
 protected:
  /// What `action` writes to standard output.
  template <typename Action>
  static std::string printedBy(Action action) {
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
  }

  void insertOneOfEach() {
    file.insert(kSat, kSatRow);
    file.insert(kTdt, kTdtRow);
    file.insert(kCable, kCableRow);
    file.insert(kIP, kIPRow);
  }

  CatalogueFile file{kCataloguePath};
  LineupEditor editor;
};

using FindServices = Catalogue;
using AvailableServiceNames = Catalogue;
using BuildService = Catalogue;
using AddCatalogueService = Catalogue;

/// `row` with `cells` in place of its own.
Cells with(Cells row, const Cells& cells) {
  for (const auto& [column, text] : cells) {
    row[column] = text;
  }
  return row;
}

TEST_F(FindServices, EachTableHasItsLine) {
  insertOneOfEach();
  EXPECT_EQ(printedBy([&] { editor.findSatServices("Channel"); }),
            "1017\tChannel One FR: 11778 MHz SID: 4101 L: a,b\n");
  EXPECT_EQ(printedBy([&] { editor.findTdtServices("uno"); }),
            "17\tTélé Uno FR: 490000 kHz SID: 101 L: spa,,eng,\n");
  EXPECT_EQ(printedBy([&] { editor.findCableServices("Eins"); }),
            "18\tKabel Eins FR: 306000 kHz SID: 201 L: \n");
  EXPECT_EQ(printedBy([&] { editor.findIPServices("IP"); }),
            "19\tIP Uno URL: udp://239.1.1.1:1234 kHz SID: 301 L: x\n");
}

TEST_F(FindServices, AllTablesInOrder) {
  insertOneOfEach();
  EXPECT_EQ(printedBy([&] { editor.findServices(""); }),
            "17\tTélé Uno FR: 490000 kHz SID: 101 L: spa,,eng,\n"
            "1017\tChannel One FR: 11778 MHz SID: 4101 L: a,b\n"
            "18\tKabel Eins FR: 306000 kHz SID: 201 L: \n"
            "19\tIP Uno URL: udp://239.1.1.1:1234 kHz SID: 301 L: x\n");
  EXPECT_EQ(printedBy([&] { editor.findServices("channel"); }),
            "No TDT services found.\n"
            "1017\tChannel One FR: 11778 MHz SID: 4101 L: a,b\n"
            "No Cable services found.\n"
            "No IP services found.\n");
}

TEST_F(FindServices, NoMatchHasItsMessageForEachTable) {
  insertOneOfEach();
  EXPECT_EQ(printedBy([&] { editor.findServices("nothing"); }),
            "No TDT services found.\n"
            "No SAT services found.\n"
            "No Cable services found.\n"
            "No IP services found.\n");
}

TEST_F(FindServices, AnEmptyNameListsEveryServiceInOrder) {
  for (const char* id : {"3", "1", "2"}) {
    file.insert(kSat, with(kSatRow, {{15, id}}));
  }
  EXPECT_EQ(printedBy([&] { editor.findSatServices(""); }),
            "3\tChannel One FR: 11778 MHz SID: 4101 L: a,b\n"
            "1\tChannel One FR: 11778 MHz SID: 4101 L: a,b\n"
            "2\tChannel One FR: 11778 MHz SID: 4101 L: a,b\n");
}

TEST_F(FindServices, NullCellsPrintAsZeroOrNothing) {
  file.insert(kSat, {{16, "Bare"}});
  file.insert(kIP, {{7, "Bare"}});
  EXPECT_EQ(printedBy([&] { editor.findSatServices("Bare"); }), "0\tBare FR: 0 MHz SID: 0 L: \n");
  EXPECT_EQ(printedBy([&] { editor.findIPServices("Bare"); }), "0\tBare URL:  kHz SID: 0 L: \n");
}

TEST_F(FindServices, TextInIntegerColumnsPrintsAsANumber) {
  file.insert(kTdt, with(kTdtRow, {{5, "490 MHz"}, {12, "none"}}));
  EXPECT_EQ(printedBy([&] { editor.findTdtServices(""); }),
            "17\tTélé Uno FR: 490 kHz SID: 0 L: spa,,eng,\n");
}

TEST_F(FindServices, NothingOfTheConfigurationChanges) {
  insertOneOfEach();
  printedBy([&] { editor.findServices(""); });
  EXPECT_FALSE(editor.pendingChanges);
  EXPECT_EQ(editor.config, hub_module::HeadendConfig());
}

TEST_F(AvailableServiceNames, AreReadOfAHundredThousandServices) {
  file.fill(kCable, 100'000,
            "0, 0, 0, 0, 0, 306000, 6875, 64, 0, 0, i, 'Ch ' || i, i, 0, 1, '', ''");
  const auto names = readAvailableServiceNames();
  ASSERT_EQ(names.size(), 100'000U);
  EXPECT_EQ(names.at(100'000).name, "Ch 100000");
  EXPECT_STREQ(names.at(100'000).kind, "Cable");
}

TEST_F(AvailableServiceNames, OfACatalogueThatCannotBeReachedAreNone) {
  std::filesystem::remove(kCataloguePath);
  std::filesystem::create_symlink(kCataloguePath, kCataloguePath);
  EXPECT_TRUE(readAvailableServiceNames().empty());
}

TEST_F(BuildService, FromASatelliteRow) {
  file.insert(kSat, kSatRow);
  DVBInputServiceConfig expected;
  expected.service.sid = 4101;
  expected.service.name = "Channel One";
  expected.service.catalogueFlag = true;
  expected.service.inputType = 2;
  expected.service.serviceType = 25;
  expected.service.intItems = {101, 102, 103};
  expected.service.lItems = {"a", "b"};
  hub_module::LineupSATMux mux;
  mux.frequency = 11778;
  mux.satParam2 = 120;
  mux.satParam3 = 1;
  mux.satParam4 = 27500;
  mux.satParam5 = 4;
  mux.satParam6 = 1;
  mux.satParam7 = 26;
  expected.service.__set_lineupSATMux(mux);
  expected.configFlag = true;
  EXPECT_EQ(buildSatService(1017), expected);
}

TEST_F(BuildService, FromATerrestrialRow) {
  file.insert(kTdt, kTdtRow);
  DVBInputServiceConfig expected;
  expected.service.sid = 101;
  expected.service.name = "Télé Uno";
  expected.service.inputType = 1;
  expected.service.serviceType = 1;
  expected.service.intItems = {1, -2};
  expected.service.lItems = {"spa", "", "eng"};
  hub_module::LineupTDTMux mux;
  mux.frequency = 490000;
  mux.tdtParam2 = 8;
  mux.tdtParam3 = 2;
  mux.tdtParam4 = 1;
  expected.service.__set_lineupTDTMux(mux);
  expected.configFlag = false;
  EXPECT_EQ(buildTdtService(17), expected);
}

TEST_F(BuildService, FromACableRow) {
  file.insert(kCable, kCableRow);
  DVBInputServiceConfig expected;
  expected.service.sid = 201;
  expected.service.name = "Kabel Eins";
  expected.service.catalogueFlag = true;
  expected.service.inputType = 3;
  expected.service.serviceType = 2;
  hub_module::LineupCableMux mux;
  mux.frequency = 306000;
  mux.cableParam2 = 6875;
  mux.cableParam3 = 64;
  expected.service.__set_lineupCableMux(mux);
  expected.configFlag = true;
  EXPECT_EQ(buildCableService(18), expected);
}

TEST_F(BuildService, FromAnIPRow) {
  file.insert(kIP, kIPRow);
  DVBInputServiceConfig expected;
  expected.service.sid = 301;
  expected.service.name = "IP Uno";
  expected.service.catalogueFlag = true;
  expected.service.inputType = 4;
  expected.service.serviceType = 1;
  expected.service.intItems = {9};
  expected.service.lItems = {"x"};
  expected.service.__set_ipMuxUUID("0f1e2d3c-0000-4000-8000-000000000001");
  expected.configFlag = true;
  EXPECT_EQ(buildIPService(19), expected);
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

TEST_F(BuildService, MarksOnlyTheMuxOfItsKind) {
  insertOneOfEach();
  const auto marked = [](const DVBInputServiceConfig& config) {
    const auto& isset = config.service.__isset;
    return std::string(isset.lineupSATMux ? "S" : "") + (isset.lineupTDTMux ? "T" : "") +
           (isset.lineupCableMux ? "C" : "") + (isset.ipMuxUUID ? "I" : "");
  };
  EXPECT_EQ(marked(buildSatService(1017)), "S");
  EXPECT_EQ(marked(buildTdtService(17)), "T");
  EXPECT_EQ(marked(buildCableService(18)), "C");
  EXPECT_EQ(marked(buildIPService(19)), "I");
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
  insertOneOfEach();
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
  EXPECT_NO_THROW(test::CatalogueLock(kCataloguePath).release());
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
  insertOneOfEach();
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
