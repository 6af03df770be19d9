// The catalogue that the simulator writes.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstddef>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/simulator/simulator_process.h"
#include "tests/support/catalogue_file.h"

namespace lineup::test {
namespace {

namespace hub_module = korvel::thrift::hub_module;

using Cell = Row::value_type;

class SimulatorCatalogue : public testing::Test {
 protected:
  /// What a statement finds, after a row of the columns' names.
  std::vector<Row> select(const std::string& sql) const {
    return CatalogueWriter(path_).select(sql);
  }

  std::vector<Row> rows(const std::string& table, const std::string& which = "") const {
    std::vector<Row> result = select("SELECT * FROM " + table + which);
    result.erase(result.begin());
    return result;
  }

  /// Starts a simulator and ends it.
  void writeOnce(const std::vector<std::string>& options = {}) const {
    EXPECT_EQ(SimulatorProcess(folder_, options).end().status, 0);
  }

  Outcome runRefused(const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments{"--port",      "0",  "--state", folder_.file("state.json"),
                                       "--catalogue", path_};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return runSimulator(arguments);
  }

  TemporaryFolder folder_;
  const std::string path_ = folder_.file("catalogue.sqlite");
};

TEST_F(SimulatorCatalogue, HasAtLeastSixtyServicesInFourTablesOfTheirShape) {
  writeOnce();
  std::size_t services = 0;
  for (const CatalogueTable& table : kCatalogueTables) {
    const std::vector<Row> found = select("SELECT * FROM " + std::string(table.name));
    ASSERT_EQ(found[0].size(), table.columnTypes.size()) << table.name;
    EXPECT_EQ(found[0][table.serviceId], "service_id") << table.name;
    EXPECT_EQ(found[0][table.serviceName], "service_name") << table.name;
    EXPECT_GE(found.size(), 11U) << table.name;
    services += found.size() - 1;
  }
  EXPECT_GE(services, 60U);
}

TEST_F(SimulatorCatalogue, HasIntegersWhereIntegersAreRead) {
  writeOnce();
  for (const CatalogueTable& table : kCatalogueTables) {
    const std::vector<Row> columns = select("PRAGMA table_info(" + std::string(table.name) + ")");
    for (std::size_t column = 0; column < table.columnTypes.size(); ++column) {
      const std::string expected = table.columnTypes[column] == 'S' ? "text" : "integer";
      const std::string name = *columns[column + 1][1];
      for (const Row& row :
           select("SELECT DISTINCT typeof(" + name + ") FROM " + std::string(table.name))) {
        const std::string type = *row[0];
        EXPECT_TRUE(type == expected || type == "null" || type == "typeof(" + name + ")")
            << table.name << " " << column << " " << type;
      }
    }
  }
}

TEST_F(SimulatorCatalogue, EveryServiceHasAnIdANameATypeAndAListThatCanBeRead) {
  writeOnce();
  for (const CatalogueTable& table : kCatalogueTables) {
    std::set<Cell> ids;
    for (const Row& row : rows(table.name)) {
      ids.insert(row[table.serviceId]);
      EXPECT_TRUE(row[table.serviceId] && row[table.serviceName] && row[table.serviceType]);
      std::istringstream list(row.back().value_or(""));
      for (std::string number; std::getline(list, number, ',');) {
        EXPECT_NO_THROW(std::stoi(number)) << *row[table.serviceName];
      }
    }
    EXPECT_EQ(ids.size(), rows(table.name).size()) << table.name;
  }
}

TEST_F(SimulatorCatalogue, SomeIdsAreInSeveralTablesAndSomeOnlyInTheIPTable) {
  writeOnce();
  std::map<std::string, std::set<std::string>> tablesById;
  for (const CatalogueTable& table : kCatalogueTables) {
    for (const Row& row : rows(table.name)) {
      tablesById[*row[table.serviceId]].insert(table.name);
    }
  }
  EXPECT_EQ(tablesById.at("17"), (std::set<std::string>{kSat, kTdt, kIP}));
  EXPECT_EQ(tablesById.at("31"), (std::set<std::string>{kSat, kCable}));
  EXPECT_EQ(tablesById.at("41"), (std::set<std::string>{kCable, kIP}));
  EXPECT_EQ(tablesById.at("1"), (std::set<std::string>{kTdt}));
  EXPECT_EQ(tablesById.at("20"), (std::set<std::string>{kSat}));
  EXPECT_EQ(tablesById.at("51"), (std::set<std::string>{kIP}));
}

TEST_F(SimulatorCatalogue, HasNullCellsEmptyListsAndFilledListsInEveryTable) {
  writeOnce();
  for (const CatalogueTable& table : kCatalogueTables) {
    for (const std::size_t list : {table.columnTypes.size() - 2, table.columnTypes.size() - 1}) {
      std::set<std::string> kinds;
      for (const Row& row : rows(table.name)) {
        kinds.insert(!row[list] ? "null" : row[list]->empty() ? "empty" : "filled");
      }
      EXPECT_EQ(kinds.count("null"), 1U) << table.name << " " << list;
      EXPECT_EQ(kinds.count("empty"), 1U) << table.name << " " << list;
      EXPECT_EQ(kinds.count("filled"), 1U) << table.name << " " << list;
    }
    bool nullInteger = false;
    for (const Row& row : rows(table.name)) {
      for (std::size_t column = 0; column < table.columnTypes.size(); ++column) {
        nullInteger |= !row[column] && table.columnTypes[column] == 'I';
      }
    }
    EXPECT_TRUE(nullInteger) << table.name;
  }
  EXPECT_EQ(rows(kSat, " WHERE stream_id IS NULL").size(), 3U);
}

TEST_F(SimulatorCatalogue, HasNamesWithAccentsQuotesAndWildcards) {
  writeOnce();
  const auto count = [this](const std::string& table, const std::string& pattern) {
    return rows(table, " WHERE service_name LIKE '%" + pattern + "%'").size();
  };
  EXPECT_EQ(count(kSat, "Clásicos"), 1U);
  EXPECT_EQ(count(kSat, "Νησί"), 1U);
  EXPECT_EQ(count(kSat, "L''É"), 1U);
  EXPECT_EQ(count(kTdt, "Ñandú"), 1U);
  EXPECT_EQ(count(kTdt, "100% F"), 1U);
  EXPECT_EQ(count(kCable, "Søndag"), 1U);
  EXPECT_EQ(count(kIP, "Prélude"), 2U);
  EXPECT_EQ(count(kIP, "t_L"), 1U);
}

TEST_F(SimulatorCatalogue, EveryIPServiceIsOnAMuxOfTheConfiguration) {
  const SimulatorProcess simulator(folder_);
  hub_module::HeadendConfig config;
  simulator.connect()->getHeadendConfig(config);
  std::map<Cell, Row> muxes;  // url, slot and interface by uuid
  for (const auto& [key, input] : config.ipInputs) {
    for (const auto& [uuid, mux] : input.muxes) {
      muxes[uuid] = {mux.url, std::to_string(input.slot), std::to_string(input.interfaceId)};
    }
  }
  for (const Row& row : rows(kIP)) {
    ASSERT_EQ(muxes.count(row[1]), 1U) << *row[1];
    EXPECT_EQ(muxes[row[1]], (Row{row[2], row[3], row[4]}));
  }
}

TEST_F(SimulatorCatalogue, OfAnEarlierRunIsReplaced) {
  writeOnce();
  const std::string first = contentOf(path_);
  CatalogueWriter(path_).execute("DELETE FROM availableIPService");
  EXPECT_NE(contentOf(path_), first);
  writeOnce();
  EXPECT_EQ(contentOf(path_), first);
}

TEST_F(SimulatorCatalogue, OfAnotherProgramIsKeptUnlessToldOtherwise) {
  const std::string foreign = folder_.file("foreign.sqlite");
  ASSERT_EQ(run({.program = "sqlite3", .arguments = {foreign, "CREATE TABLE t (a)"}}).status, 0);
  for (const std::string& content : {contentOf(foreign), std::string("no database")}) {
    writeFile(path_, content);
    const Outcome outcome = runRefused();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "headend-simulator: the catalogue " + path_ +
                  " was not written by this program; --replace-catalogue replaces it\n");
    EXPECT_EQ(contentOf(path_), content);
    writeOnce({"--replace-catalogue"});
    EXPECT_EQ(rows(kIP).size(), 12U);
    writeOnce();
  }
}

TEST_F(SimulatorCatalogue, ThatIsEmptyIsReplaced) {
  writeFile(path_, "");
  writeOnce({});
  EXPECT_EQ(rows(kIP).size(), 12U);
}

TEST_F(SimulatorCatalogue, ThatCannotBeLookedIntoIsKept) {
  // SQLite opens no path of more than 512 bytes.
  std::string path = folder_.file("");
  for (int depth = 0; depth < 3; ++depth) {
    path += std::string(200, 'x') + "/";
    mkdir(path.c_str(), 0700);
  }
  path += "catalogue.sqlite";
  writeFile(path, "whose?");
  const Outcome outcome = runRefused({"--catalogue", path});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "headend-simulator: the catalogue " + path +
                             " was not written by this program; --replace-catalogue replaces it\n");
  EXPECT_EQ(contentOf(path), "whose?");
}

TEST_F(SimulatorCatalogue, ThatIsNoRegularFileIsNeverReplaced) {
  mkdir(path_.c_str(), 0700);
  const Outcome outcome = runRefused({"--replace-catalogue"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "headend-simulator: cannot use " + path_ + ": it is no regular file\n");
}

TEST_F(SimulatorCatalogue, WhereNoFileCanBeIsRefused) {
  writeFile(folder_.file("file"), "");
  const std::string path = folder_.file("file/catalogue.sqlite");
  const Outcome outcome = runRefused({"--catalogue", path});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "headend-simulator: cannot write " + path +
                             ": Not a directory; --no-catalogue does without it\n");
}

TEST_F(SimulatorCatalogue, IsWrittenIntoFoldersThatDoNotExistYet) {
  const std::string path = folder_.file("a/b/catalogue.sqlite");
  writeOnce({"--catalogue", path});
  EXPECT_EQ(CatalogueWriter(path).select("SELECT * FROM availableIPService").size(), 13U);
}

TEST_F(SimulatorCatalogue, IsLeftAloneWhenNotWanted) {
  writeFile(path_, "foreign");
  writeOnce({"--no-catalogue"});
  EXPECT_EQ(contentOf(path_), "foreign");
}

}  // namespace
}  // namespace lineup::test
