// Finding and adding services of the catalogue as an installer does it.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "tests/console/prompt_steps.h"
#include "tests/support/catalogue_file.h"
#include "tests/support/catalogue_services.h"
#include "tests/support/expect_end.h"
#include "tests/support/fake_controller.h"
#include "tests/support/file_content.h"
#include "tests/support/lineup_entries.h"
#include "tests/support/matches.h"
#include "tests/support/program_process.h"
#include "tests/support/sandbox.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/wait_until.h"

namespace lineup::test {
namespace {

using namespace korvel::thrift::hub_module;
using std::chrono::seconds;
using std::chrono::steady_clock;
using Methods = std::vector<std::string>;

/// The line that says that a select on `table` failed.
std::string retryLine(const std::string& table, int attempt) {
  return "[ERROR_DB]doSelect: Error leyendo datos tabla " + table +
         " . intento: " + std::to_string(attempt) + "\n";
}

/// The clock ticks (a hundredth of a second) that a process has computed so far.
long processorTime(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string word;
  for (int field = 1; field < 14; ++field) {
    file >> word;
  }
  long ticks = 0;
  file >> ticks;
  return ticks;
}

/// A controller that answers, and a catalogue with a service in each table.
class CatalogueCommands : public testing::Test {
 protected:
  CatalogueCommands() { insertOneOfEach(*file); }

  FakeController controller;
  std::unique_ptr<CatalogueFile> file = std::make_unique<CatalogueFile>(kCataloguePath);
};

TEST_F(CatalogueCommands, EachTableIsFoundByItsOwnCommandAndAllByFind) {
  const std::string each = "> " + kSatLine + "> " + kTdtLine + "> " + kCableLine + "> " + kIPLine;
  EXPECT_EQ(outputOf("findsat channel\nfindtdt Uno\nfindcable Eins\nfindip IP\nfind UN\n"),
            each + "> " + kTdtLine + "No SAT services found.\nNo Cable services found.\n" +
                kIPLine + "> \n");
}

TEST_F(CatalogueCommands, ANameWithAQuoteIsRetriedAndFindsNothing) {
  const auto start = steady_clock::now();
  const Outcome outcome = runConsole({}, "findsat O'Neil\n");
  EXPECT_GE(steady_clock::now() - start, seconds(6));
  EXPECT_EQ(afterGreeting(outcome), "> No SAT services found.\n> \n");
  for (int attempt = 0; attempt < 3; ++attempt) {
    EXPECT_EQ(count(outcome.err, retryLine(kSat, attempt)), 1) << outcome.err;
  }
  EXPECT_EQ(count(outcome.err, "intento"), 3);
  EXPECT_EQ(count(outcome.err, "[ERROR_DB]doSelect: near \"Neil\": syntax error\n"), 3);
}

TEST_F(CatalogueCommands, ATypedSelectIsRead) {
  EXPECT_EQ(outputOf("findsat x';SELECT/**/*/**/FROM/**/availableSatService;--\n"
                     "findsat x'OR/**/service_id='1017';--\n"),
            "> " + kSatLine + "> " + kSatLine + "> \n");
}

TEST_F(CatalogueCommands, AMissingCatalogueHasNoServices) {
  file.reset();
  std::filesystem::remove(kCataloguePath);
  ProgramProcess finding{Start{}};
  ProgramProcess adding{Start{}};
  finding.send("find\n");
  adding.send("adddvb 17\n");

  const auto start = steady_clock::now();
  const Outcome found = finding.finish();
  EXPECT_GE(steady_clock::now() - start, seconds(22));
  EXPECT_EQ(afterGreeting(found), "> " + kNothingFound + "> \n");
  const Outcome added = adding.finish();
  EXPECT_EQ(afterGreeting(added), "> Service not found\n> \n");
  for (const Outcome& outcome : {found, added}) {
    EXPECT_EQ(count(outcome.err, "\n"), 36) << outcome.err;
    for (const char* table : {kTdt, kSat, kCable, kIP}) {
      for (int attempt = 0; attempt < 3; ++attempt) {
        EXPECT_EQ(count(outcome.err, retryLine(table, attempt)), 1) << outcome.err;
      }
    }
  }
}

TEST_F(CatalogueCommands, ACatalogueThatBecomesFreeDuringTheWaitsIsRead) {
  CatalogueLock lock(kCataloguePath);
  ProgramProcess console{Start{}};
  console.send("findip\nipadddvb 19\n");
  console.readErrorsUntil(retryLine(kIP, 0));
  lock.release();
  const Outcome outcome = console.finish();
  EXPECT_EQ(afterGreeting(outcome), "> " + kIPLine + "> " + kPending + "\n" + kNote);
  EXPECT_EQ(count(outcome.err, "intento"), 1) << outcome.err;
}

TEST_F(CatalogueCommands, SignalsEndASelectThatTakesForever) {
  for (const int signal : {SIGINT, SIGTERM}) {
    ProgramProcess console{Start{}};
    console.send(
        "findsat x';WITH\tRECURSIVE\tn(i)AS(SELECT\t1\tUNION\tALL\tSELECT\ti+1\tFROM\tn)"
        "SELECT\tmax(i)FROM\tn;--\n");
    console.readUntil("> ");
    const auto start = processorTime(console.pid());
    waitUntil([&] { return processorTime(console.pid()) >= start + 20; });
    const Outcome outcome = endBy(console, signal);
    EXPECT_EQ(afterGreeting(outcome), "> ");
    EXPECT_EQ(outcome.err, "") << "no failed attempt";
  }
}

/// What "adddvb" or the like adds for `service`.
void add(LineupConfig& lineup, int32_t key, const DVBInputServiceConfig& service, bool rf,
         bool ip) {
  lineup.dvbInputServices[key] = service;
  if (ip) {
    lineup.ipEntries.push_back(ipEntry(key, LineupEntryKind::DVB, service.service.name));
  }
  if (rf) {
    lineup.rfEntries.push_back(rfEntry(key, LineupEntryKind::DVB, service.service.name));
  }
}

TEST_F(CatalogueCommands, ServicesOfAllTablesAreAddedAndCommitted) {
  EXPECT_EQ(outputOf("adddvb 1017\nrfadddvb 17\nipadddvb 18\nadddvb 19 ignored\ncommit\n"),
            "> " + kPending + kPending + kPending + kPending + "> \n");
  EXPECT_EQ(controller.methods(), (Methods{"getHeadendConfig", "setHeadendConfig"}));

  HeadendConfig expected;
  LineupConfig& lineup = expected.lineupConfig;
  add(lineup, 1, satService(), true, true);
  add(lineup, 2, tdtService(), true, false);
  add(lineup, 3, cableService(), false, true);
  add(lineup, 4, ipService(), true, true);
  EXPECT_EQ(controller.config(), expected);
}

TEST_F(CatalogueCommands, AnIdIsReadAsFarAsItIsANumberAndARefusedOneLeavesTheEdits) {
  file->insert(kTdt, {{10, "0"}, {11, "Nought"}});
  EXPECT_EQ(
      outputOf("adddvb 4711\nrfadddvb 17abc\nadddvb 4711\nrfadddvb abc\ncommit\n"),
      "> Service not found\n> " + kPending + "Service not found\n" + kPending + kPending + "> \n");
  const LineupConfig lineup = controller.config().lineupConfig;
  ASSERT_EQ(lineup.dvbInputServices.size(), 2U);
  EXPECT_EQ(lineup.dvbInputServices.at(1).service.name, "Télé Uno");
  EXPECT_EQ(lineup.dvbInputServices.at(2).service.name, "Nought");
  EXPECT_EQ(lineup.ipEntries.size(), 0U);
}

TEST_F(CatalogueCommands, AMalformedIntegerListEndsTheProgramAfterAllItHasPrinted) {
  // The terrestrial table has the id too, but the search does not go on.
  file->insert(kSat, {{15, "17"}, {16, "Broken"}, {24, "101,,103"}});
  const auto before = filesIn(kCatalogueFolder);
  const Outcome outcome = runConsole({}, "findtdt\nadddvb 17\nfindcable\n");
  EXPECT_EQ(outcome.signal, SIGABRT);
  EXPECT_EQ(afterGreeting(outcome), "> " + kTdtLine + "> ");
  EXPECT_NE(outcome.err.find("std::invalid_argument"), std::string::npos) << outcome.err;
  EXPECT_NE(outcome.err.find("stoi"), std::string::npos) << outcome.err;
  EXPECT_EQ(filesIn(kCatalogueFolder), before);
  EXPECT_EQ(controller.config(), HeadendConfig());
}

// ---- catalogues of any size

TEST_F(CatalogueCommands, AHundredThousandServicesAreListed) {
  fillCable(*file, 99'999);
  EXPECT_EQ(count(outputOf("findcable\n"), " SID: "), 100'000);
}

TEST_F(CatalogueCommands, ANameMayHaveMegabytes) {
  file->execute("UPDATE availableIPService SET service_name = hex(zeroblob(12500000))");
  const std::string name(25'000'000, '0');
  EXPECT_EQ(
      outputOf("findip\nrfadddvb 19\ncommit\n"),
      "> 19\t" + name + " URL: udp://239.1.1.1:1234 kHz SID: 301 L: x\n> " + kPending + "> \n");
  EXPECT_EQ(controller.config().lineupConfig.dvbInputServices.at(1).service.name, name);
}

TEST_F(CatalogueCommands, ATypedNameOfMegabytesFindsNothing) {
  const Outcome outcome =
      runConsole({}, "rfadddvb 17\nfindip " + std::string(25'000'000, 'x') + "\n");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(afterGreeting(outcome),
            "> " + kPending + "No IP services found.\n" + kPending + "\n" + kNote);
  EXPECT_EQ(count(outcome.err, "[ERROR_DB]doSelect: LIKE or GLOB pattern too complex\n"), 3);
}

#ifndef SANITIZED  // which needs memory of its own

TEST_F(CatalogueCommands, TheConsolesMemoryIsLimited) {
  ProgramProcess console{Start{}};
  console.readUntil("> ");
  rlimit limit{};
  ASSERT_EQ(prlimit(console.pid(), RLIMIT_DATA, nullptr, &limit), 0);
  const auto pages = static_cast<rlim_t>(sysconf(_SC_PHYS_PAGES));
  EXPECT_LE(limit.rlim_cur, pages / 2 * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)));
}

void limitMemory(const ProgramProcess& console, rlim_t bytes) {
  const rlimit limit{bytes, bytes};
  prlimit(console.pid(), RLIMIT_DATA, &limit, nullptr);
}

TEST_F(CatalogueCommands, AHundredThousandServicesFitIntoHalfOfASmallBoardsMemory) {
  file->execute("DELETE FROM availableSatService");
  file->fill(
      kSat, 100'000,
      "i, i, i, i, i, i, i, i, i, i, i, i, i, i, i, i, 'Service ' || i, i, i, i, i, i, i, i, i");
  ProgramProcess console{Start{}};
  console.readUntil("> ");
  limitMemory(console, 256 << 20);
  console.send("findsat\n");
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(count(outcome.out, "Service "), 100'000);
}

/// A console with edits that wait for a commit and little memory.
class WithLittleMemory : public CatalogueCommands {
 protected:
  WithLittleMemory() {
    console.send("rfadddvb 17\n");
    console.readUntil(kPending);
    limitMemory(console, kMemory);
  }

  static constexpr rlim_t kMemory = 64 << 20;
  TemporaryFolder folder;
  ProgramProcess console{Start{.environment = {{"XDG_STATE_HOME", folder.path()}}}};
};

/// A view without end in the place of a table.
constexpr char kEndlessView[] =
    "DROP TABLE availableSatService; CREATE VIEW availableSatService AS WITH RECURSIVE n(i) AS "
    "(VALUES(1) UNION ALL SELECT i + 1 FROM n) SELECT i service_id, 'x' service_name, i, i, i, i, "
    "i, i, i, i, i, i, i, i, i, i, i, i, i, i, i, i, i, i, i FROM n";

TEST_F(WithLittleMemory, ASelectThatNeedsMoreFailsAndTheConsoleGoesOn) {
  file->execute(kEndlessView);
  console.send("findsat\nfindtdt\ncommit\n");
  const Outcome outcome = console.finish();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(afterGreeting(outcome),
            "> " + kPending + "No SAT services found.\n" + kPending + kTdtLine + kPending + "> \n");
  EXPECT_EQ(count(outcome.err, "intento"), 3) << outcome.err;
}

TEST_F(WithLittleMemory, RowsThatCannotBeCopiedEndTheConsoleAndTheEditsAreRescued) {
  // SQLite's own copy takes some 40 bytes a cell and fits; with ours, as large again, they do not.
  file->fill(kSat, static_cast<int>(kMemory / 60 / 25),
             "i, i, i, i, i, i, i, i, i, i, i, i, i, i, i, i, i, i, i, i, i, i, i, i, i");
  console.send("findsat\n");
  const Outcome outcome = expectEndBy(console, SIGABRT);
  EXPECT_EQ(count(outcome.err, "intento"), 0) << outcome.err;
  EXPECT_NE(outcome.err.find(kUncommittedIn + folder.path()), std::string::npos) << outcome.err;
  EXPECT_NE(outcome.err.find("std::bad_alloc"), std::string::npos) << outcome.err;
}

#endif

}  // namespace
}  // namespace lineup::test
