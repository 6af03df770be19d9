#include "app/completion.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "app/commands.h"
#include "model/lineup_editor.h"
#include "tests/support/catalogue_file.h"
#include "tests/support/file_content.h"
#include "tests/support/sandbox.h"
#include "tests/support/streams.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

const korvel::thrift::hub_module::HeadendConfig kNoConfig;

Words wordsFor(const std::string& begun,
               const korvel::thrift::hub_module::HeadendConfig& config = kNoConfig) {
  Words words;
  for (const Candidate& candidate : completeCommandLine(begun, config)) {
    EXPECT_EQ(candidate.note, "");
    words.push_back(candidate.word);
  }
  return words;
}

TEST(CommandCompletion, OffersTheSlotsAndInputsOfEncoders) {
  for (const char* command : {"addenc", "rfaddenc", "ipaddenc"}) {
    const std::string line = std::string(command) + ' ';
    EXPECT_EQ(wordsFor(line), (Words{"3", "4", "5", "6", "7", "8", "9", "10", "11", "12"}));
    EXPECT_EQ(wordsFor(line + "1"), (Words{"10", "11", "12"}));
    EXPECT_EQ(wordsFor(line + "3 "), (Words{"0", "1", "2", "3"}));
    EXPECT_EQ(wordsFor(line + "3 4"), Words{});
    EXPECT_EQ(wordsFor(line + "3 1 "), Words{});
  }
}

TEST(CommandCompletion, OffersTheIPInputsOfTheConfiguration) {
  korvel::thrift::hub_module::HeadendConfig config;
  int key = 0;
  for (const auto& [slot, interface] : {std::pair{10, 2}, {9, 1}, {10, 1}, {9, 1}}) {
    korvel::thrift::hub_module::IPInput& input = config.ipInputs[std::to_string(++key)];
    input.__set_slot(slot);
    input.__set_interfaceId(interface);
  }
  config.ipInputs["without a place"] = {};
  EXPECT_EQ(wordsFor("addipmux ", config), (Words{"9", "10"}));
  EXPECT_EQ(wordsFor("addipmux 1", config), (Words{"10"}));
  EXPECT_EQ(wordsFor("addipmux 10 ", config), (Words{"1", "2"}));
  EXPECT_EQ(wordsFor("addipmux 9 ", config), (Words{"1"}));
  EXPECT_EQ(wordsFor("addipmux 8 ", config), Words{});
  EXPECT_EQ(wordsFor("addipmux 9 1 ", config), Words{});
  EXPECT_EQ(wordsFor("addipmux "), Words{});
}

TEST(CommandCompletion, OffersEveryCommandOnAnEmptyLine) {
  const Words words = wordsFor("");
  EXPECT_EQ(words.size(), 35U);
  EXPECT_EQ(words.front(), "help");
  EXPECT_EQ(words.back(), "c");
}

TEST(CommandCompletion, OffersTheCommandsThatBeginAsTyped) {
  EXPECT_EQ(wordsFor("rf"),
            Words({"rfadddvb", "rfaddenc", "rfaddempty", "rfmod", "rfnum", "rfinput"}));
  EXPECT_EQ(wordsFor("quit"), Words({"quit"}));
  EXPECT_EQ(wordsFor("Q"), Words());
  EXPECT_EQ(wordsFor("quitx"), Words());
}

TEST(CommandCompletion, OffersTheChoicesOfEachSetting) {
  EXPECT_EQ(wordsFor("rfmod "), Words({"cofdm", "qam", "qamb"}));
  EXPECT_EQ(wordsFor("rfnum "), Words({"4", "6"}));
  EXPECT_EQ(wordsFor("drm "), Words({"lynk", "vsecure", "off"}));
  EXPECT_EQ(wordsFor("eit "), Words({"off", "actual", "others"}));
  EXPECT_EQ(wordsFor("id 1"), Words({"1", "10"}));
  EXPECT_EQ(wordsFor("country s"), Words({"spain", "sweden", "southkorea"}));
  EXPECT_EQ(wordsFor("country ").size(), 15U);
  EXPECT_EQ(wordsFor("type "), Words({"standard", "skyit"}));
  EXPECT_EQ(wordsFor("vlan "), Words({"1", "2"}));
  EXPECT_EQ(wordsFor("stdp "), Words({"video", "sub", "ttx"}));
}

TEST(CommandCompletion, OffersSubcommandsAndTheirWordsInAnyCase) {
  EXPECT_EQ(wordsFor("rfinput "), Words({"enable", "disable", "status"}));
  EXPECT_EQ(wordsFor("tdtscan s"), Words({"status"}));
  EXPECT_EQ(wordsFor("rfinput enable ").size(), 12U);
  EXPECT_EQ(wordsFor("rfinput disable tDt"), Words({"TDT1", "TDT2", "TDTALL"}));
  EXPECT_EQ(wordsFor("tdtscan enable "), Words({"COFDM", "QAMS"}));
  EXPECT_EQ(wordsFor("tdtscan disable q"), Words({"QAMS"}));
}

TEST(CommandCompletion, OffersNothingWhereNothingIsKnown) {
  for (const char* begun :
       {"help ", "find x", "rfaddempty ", "nonsense ", "rfmod qam ", "rfmod  q", " q",
        "rfinput status ", "rfinput x ", "rfinput enable TDT1 ", "addipmux 1 "}) {
    EXPECT_EQ(wordsFor(begun), Words()) << begun;
  }
}

class FileCompletion : public testing::Test {
 protected:
  FileCompletion() {
    fs::create_directory(folder.file("sub"));
    for (const char* name : {"sub/b.json", "sub/a.json", "sub/.hidden", "sub/a blank", "sub/a\ttab",
                             "sub/a\nline", "sub/a\x7fz", "sub/añ", "south"}) {
      writeFile(folder.file(name), "");
    }
    fs::create_symlink("sub", folder.file("link"));
    fs::create_symlink("nowhere", folder.file("broken"));
  }
  ~FileCompletion() override { fs::current_path("/"); }

  TemporaryFolder folder;
};

TEST_F(FileCompletion, OffersNamesInOrderAndFoldersWithASlash) {
  fs::current_path(folder.path());
  EXPECT_EQ(wordsFor("save "), Words({"broken", "link/", "south", "sub/"}));
  EXPECT_EQ(wordsFor("restore s"), Words({"south", "sub/"}));
  EXPECT_EQ(wordsFor("save sub/"), Words({"sub/a.json", "sub/añ", "sub/b.json"}));
  EXPECT_EQ(wordsFor("save ./sub/b"), Words({"./sub/b.json"}));
}

TEST_F(FileCompletion, OffersAbsolutePaths) {
  const std::string path = folder.file("sub");
  EXPECT_EQ(wordsFor("save " + path), Words({path + "/"}));
  EXPECT_EQ(wordsFor("save " + path + "/b"), Words({path + "/b.json"}));
}

TEST_F(FileCompletion, OffersHiddenNamesOnceTheirDotIsTyped) {
  fs::current_path(folder.path());
  EXPECT_EQ(wordsFor("save sub/."), Words({"sub/.hidden"}));
}

TEST_F(FileCompletion, OffersNothingInAFolderThatCannotBeRead) {
  EXPECT_EQ(wordsFor("save " + folder.path() + "/nowhere/"), Words());
  EXPECT_EQ(wordsFor("save " + folder.path() + "/south/"), Words());
}

TEST_F(FileCompletion, OffersInTheConsolesOwnFolderTheCopiesOfChanges) {
  fs::current_path(folder.path());
  setenv("XDG_STATE_HOME", folder.path().c_str(), 1);
  fs::create_directory("lineup-console");
  const std::string copy = "lineup-console/lineup-console-20260102-030405-67.json";
  for (const std::string& name : {copy, copy + ".newer", std::string("lineup-console/history"),
                                  std::string("lineup-console/history.new")}) {
    writeFile(name, "");
  }
  EXPECT_EQ(wordsFor("restore lineup-console/"), Words{copy});
  EXPECT_EQ(wordsFor("save lineup-console/"), Words{copy});
}

class ServiceCompletion : public testing::Test {
 protected:
  static Words servicesFor(const std::string& begun) {
    Words services;
    for (const Candidate& candidate : completeCommandLine(begun, kNoConfig)) {
      services.push_back(candidate.word + ":" + candidate.note);
    }
    return services;
  }

  CatalogueFile catalogue{kCataloguePath};
};

TEST_F(ServiceCompletion, OffersIdsWithNamesFromAllTablesInOrder) {
  catalogue.insert(kIP, {{6, "40"}, {7, "Four"}});
  catalogue.insert(kCable, {{10, "30"}, {11, "Three"}});
  catalogue.insert(kSat, {{15, "100"}, {16, "One"}});
  catalogue.insert(kTdt, {{10, "20"}, {11, "Two"}});
  const Words all = {"20:Two (TDT)", "30:Three (Cable)", "40:Four (IP)", "100:One (SAT)"};
  for (const char* command : {"adddvb ", "rfadddvb ", "ipadddvb "}) {
    EXPECT_EQ(servicesFor(command), all);
  }
  EXPECT_EQ(servicesFor("adddvb 3"), Words({"30:Three (Cable)"}));
}

TEST_F(ServiceCompletion, OffersServicesByPartsOfTheirNamesIfNoIdBeginsAsTyped) {
  catalogue.insert(kSat, {{15, "1"}, {16, "Canal 24"}});
  catalogue.insert(kSat, {{15, "2"}, {16, "24 Horas"}});
  catalogue.insert(kSat, {{15, "3"}, {16, "El Niño"}});
  EXPECT_EQ(servicesFor("adddvb 24"), Words({"1:Canal 24 (SAT)", "2:24 Horas (SAT)"}));
  EXPECT_EQ(servicesFor("adddvb HORAS"), Words({"2:24 Horas (SAT)"}));
  EXPECT_EQ(servicesFor("adddvb iño"), Words({"3:El Niño (SAT)"}));
  EXPECT_EQ(servicesFor("adddvb 2"), Words({"2:24 Horas (SAT)"}));
  EXPECT_EQ(servicesFor("adddvb %"), Words());
}

TEST_F(ServiceCompletion, OffersNamesAsFindTakesThem) {
  catalogue.insert(kSat, {{15, "1"}, {16, "L'Étoile \"Bleue\""}, {19, "25"}});
  catalogue.insert(kTdt, {{10, "2"}, {11, "la 2"}, {14, "1"}});
  catalogue.insert(kTdt, {{10, "3"}, {11, "Tele L"}, {14, "1"}});
  catalogue.insert(kSat, {{15, "4"}, {16, ""}, {19, "2"}});
  EXPECT_EQ(wordsFor("find L"), (Words{"L_Étoile__Bleue_", "la_2"}));
  EXPECT_EQ(wordsFor("findtdt "), (Words{"Tele_L", "la_2"}));
  EXPECT_EQ(wordsFor("findsat "), Words{"L_Étoile__Bleue_"});
  EXPECT_EQ(wordsFor("find ele"), Words{"Tele_L"});
  EXPECT_EQ(wordsFor("findcable "), Words{});
  EXPECT_EQ(wordsFor("findip l"), Words{});
  EXPECT_EQ(wordsFor("findsat l'"), Words{"L_Étoile__Bleue_"}) << "an apostrophe that is typed";
  EXPECT_EQ(wordsFor("findsat l'é"), Words{}) << "another letter than É";
  EXPECT_EQ(wordsFor("findsat _\"b"), Words{"L_Étoile__Bleue_"});
}

TEST_F(ServiceCompletion, OffersTheNamesOfEveryTableThatFindSearchesWhateverTheirIds) {
  catalogue.insert(kSat, {{15, "1"}, {16, "Sat One"}});
  catalogue.insert(kSat, {{15, "1"}, {16, "Sat Two"}});
  catalogue.insert(kSat, {{16, "Sat without id"}});
  catalogue.insert(kTdt, {{10, "1"}, {11, "Tdt One"}});
  catalogue.insert(kCable, {{10, "1"}, {11, "Cable One"}});
  catalogue.insert(kIP, {{6, "1"}, {7, "IP One"}});
  EXPECT_EQ(wordsFor("findsat "), (Words{"Sat_One", "Sat_Two", "Sat_without_id"}));
  EXPECT_EQ(wordsFor("findtdt "), Words{"Tdt_One"});
  EXPECT_EQ(wordsFor("findcable "), Words{"Cable_One"});
  EXPECT_EQ(wordsFor("findip "), Words{"IP_One"});
  EXPECT_EQ(wordsFor("find "),
            (Words{"Cable_One", "IP_One", "Sat_One", "Sat_Two", "Sat_without_id", "Tdt_One"}));
  EXPECT_EQ(wordsFor("find one"), (Words{"Cable_One", "IP_One", "Sat_One", "Tdt_One"}));
  EXPECT_EQ(servicesFor("adddvb "), Words({"1:Sat One (SAT)"}));
}

TEST_F(ServiceCompletion, OffersTheServiceTypesThatThereAre) {
  catalogue.insert(kSat, {{15, "1"}, {19, "25"}});
  catalogue.insert(kTdt, {{10, "2"}, {14, "1"}});
  catalogue.insert(kTdt, {{10, "3"}, {14, "1"}});
  EXPECT_EQ(wordsFor("rfaddempty "), (Words{"1", "25"}));
  EXPECT_EQ(wordsFor("rfaddempty 2"), Words{"25"});
}

TEST_F(ServiceCompletion, OffersTheServiceTypesOfEveryTableWhateverTheIds) {
  catalogue.insert(kSat, {{15, "1"}, {19, "25"}});
  catalogue.insert(kTdt, {{10, "1"}, {14, "1"}});
  catalogue.insert(kTdt, {{10, "1"}, {14, "2"}});
  EXPECT_EQ(wordsFor("rfaddempty "), (Words{"1", "2", "25"}));
}

TEST_F(ServiceCompletion, OffersOfSeveralServicesWithOneIdTheOneThatIsAdded) {
  catalogue.insert(kTdt, {{10, "7"}, {11, "Terrestrial"}});
  catalogue.insert(kSat, {{15, "7"}, {16, "First"}});
  catalogue.insert(kSat, {{15, "7"}, {16, "Second"}});
  EXPECT_EQ(servicesFor("adddvb "), Words({"7:First (SAT)"}));
  lineup::LineupEditor editor;
  editor.addCatalogueService(7);
  EXPECT_EQ(editor.config.lineupConfig.dvbInputServices[1].service.name, "First");
}

TEST_F(ServiceCompletion, LeavesOutWhatCannotBeAdded) {
  for (const Cells& cells : {Cells{{16, "No id"}}, Cells{{15, "x"}, {16, "No number"}},
                             Cells{{15, "99999999999"}, {16, "Too large"}}}) {
    catalogue.insert(kSat, cells);
  }
  catalogue.insert(kSat, {{15, "-5"}});
  EXPECT_EQ(servicesFor("adddvb "), Words({"-5: (SAT)"}));
}

TEST_F(ServiceCompletion, ATableThatIsMissingIsPassedOver) {
  catalogue.insert(kIP, {{6, "40"}, {7, "Four"}});
  catalogue.execute("DROP TABLE availableSatService");
  EXPECT_EQ(servicesFor("adddvb "), Words({"40:Four (IP)"}));
}

TEST_F(ServiceCompletion, ACatalogueThatCannotBeReadOffersNothingAndSaysNothing) {
  catalogue.insert(kIP, {{6, "40"}, {7, "Four"}});
  const auto expectOffered = [](const Words& expected) {
    EXPECT_EQ(errorsOf([&] { EXPECT_EQ(servicesFor("adddvb "), expected); }), "");
  };
  {
    const CatalogueLock lock(kCataloguePath);
    expectOffered({});
  }
  expectOffered({"40:Four (IP)"});
  fs::resize_file(kCataloguePath, 700);
  expectOffered({});
  fs::remove(kCataloguePath);
  expectOffered({});
  EXPECT_FALSE(fs::exists(kCataloguePath));
}

}  // namespace
}  // namespace lineup::test
