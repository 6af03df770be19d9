// Each call of a console blocks, and it is asked to end: it does, in time, and leaves the edits.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "tests/support/catalogue_file.h"
#include "tests/support/console_texts.h"
#include "tests/support/edited_console.h"
#include "tests/support/fake_controller.h"
#include "tests/support/program_process.h"
#include "tests/support/sandbox.h"
#include "tests/support/temporary_folder.h"
#include "tests/torture/faulty_console.h"

namespace lineup::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr char kLines[] =
    "id 7\naddenc 5 2\nsave saved.json\nshow\nfindsat x\nid 8\ncommit\nid 9\nrfinput status\n"
    "id 10\nquit\n";

/// Whether edits were pending when the last prompt was shown.
bool showsPendingEdits(const std::string& out) {
  const std::size_t pending = out.rfind(kPending);
  const std::size_t settled = out.rfind("\n> ");
  return pending != std::string::npos && (settled == std::string::npos || settled < pending);
}

/// The headend's id as it was edited last.
int32_t editedId(const std::string& out) {
  const std::string before = "Headend id changed to: ";
  const std::size_t found = out.rfind(before);
  return found == std::string::npos ? 0 : std::stoi(out.substr(found + before.size()));
}

struct Parameters {
  const char* kind;
  const char* on;
  const char* terminal;  ///< its type, or null for pipes
};

class Blocking : public testing::TestWithParam<Parameters> {
 protected:
  Blocking() { CatalogueFile catalogue(kCataloguePath); }

  Fault faultAt(long place) const {
    return {GetParam().kind, place, GetParam().on, 0, mayBeInACall() ? 10 : 1};
  }

  static bool mayBeInACall() {
    const std::string kind = GetParam().kind;
    return kind == "socket" || kind == "connect" || kind == "send" || kind == "recv" ||
           kind == "poll" || kind == "close";
  }

  /// An end takes three seconds; where a remote call may come before, a tenth of its 45 more.
  static std::chrono::milliseconds limit() {
    return std::chrono::milliseconds(mayBeInACall() ? 8'000 : 5'000);
  }

  Start start(const Fault& fault, const TemporaryFolder& folder) const {
    const char* const terminal = GetParam().terminal;
    Start start = startIn(folder, terminal != nullptr);
    start.environment["TERM"] = terminal == nullptr ? "dumb" : terminal;
    injectFault(start, fault, counts);
    return start;
  }

  long calls() const { return FaultCounts(counts).calls; }
  bool hasStruck() const { return FaultCounts(counts).faults > 0; }

  /// Asks the console to end, and expects that it does in time. Returns how.
  static Outcome end(ProgramProcess& console, std::chrono::milliseconds limit = Blocking::limit()) {
    const Clock::time_point asked = Clock::now();
    console.signal(SIGTERM);
    const Outcome outcome = console.finish();
    EXPECT_LT(Clock::now() - asked, limit);
    return outcome;
  }

  /// Expects the copy of the last edit, or that the controller has it.
  static void expectCopy(const TemporaryFolder& folder, const FakeController& controller,
                         const std::string& out) {
    const int32_t id = editedId(out);
    if (controller.config().headendGlobalConfig.headendId == id) {
      return;
    }
    const auto copies = copiesIn(folder);
    ASSERT_EQ(copies.size(), 1U) << out;
    EXPECT_EQ(idIn(copies[0]), id);
  }

  const TemporaryFolder elsewhere;
  const std::string counts = elsewhere.file("counts");
};

TEST_P(Blocking, DoesNotKeepTheConsoleFromEndingWithACopy) {
  const long all = [&] {
    const TemporaryFolder folder;
    const FakeController controller;
    EXPECT_EQ(run(start(faultAt(0), folder), kLines).status, 0);
    return calls();
  }();
  EXPECT_GT(all, 0);
  for (const long place : placesAmong(all, mayBeInACall() ? 1 : 2)) {
    SCOPED_TRACE("call " + std::to_string(place) + " of " + std::to_string(all));
    const TemporaryFolder folder;
    const FakeController controller;
    ProgramProcess console(start(faultAt(place), folder));
    console.send(kLines);
    console.readWhile([&] { return !hasStruck(); });
    const Outcome outcome = end(console);
    EXPECT_EQ(controller.cutShort(), 0U);
    if (outcome.status != 0) {  // not after "quit"
      EXPECT_EQ(outcome.signal, SIGTERM);
      if (showsPendingEdits(outcome.out)) {
        expectCopy(folder, controller, outcome.out);
      }
    }
  }
}

std::vector<Parameters> combined(std::initializer_list<const char*> kinds,
                                 std::initializer_list<const char*> terminals) {
  std::vector<Parameters> all;
  for (const char* kind : kinds) {
    for (const char* on : {"block", "stuck"}) {
      for (const char* terminal : terminals) {
        all.push_back({kind, on, terminal});
      }
    }
  }
  return all;
}

std::string nameOf(const testing::TestParamInfo<Parameters>& instance) {
  const Parameters& parameters = instance.param;
  return std::string(parameters.kind) + "_" + parameters.on +
         (parameters.terminal == nullptr ? std::string("_OnPipes")
                                         : std::string("_On_") + parameters.terminal);
}

INSTANTIATE_TEST_SUITE_P(Calls, Blocking,
                         testing::ValuesIn(combined({"socket", "connect", "send", "recv", "poll",
                                                     "open", "write", "read", "close", "syncfs",
                                                     "database"},
                                                    {nullptr, "dumb"})),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(CallsOfTheCopy, Blocking, testing::ValuesIn(combined({"copy"}, {"dumb"})),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(CallsWhereLinesAreEdited, Blocking,
                         testing::ValuesIn(combined({"poll", "write", "read", "terminal", "copy"},
                                                    {"xterm"})),
                         nameOf);

class BlockingAtTheEnd : public Blocking {};

TEST_P(BlockingAtTheEnd, DoesNotKeepTheCopyFromBeingWritten) {
  long all = 0;
  const auto endWithFaultAt = [&](long place) {
    SCOPED_TRACE("call " + std::to_string(place) + " of " + std::to_string(all));
    const TemporaryFolder folder;
    const FakeController controller;
    EditedConsole console(start(faultAt(place), folder));
    const Outcome outcome = end(console);
    EXPECT_EQ(outcome.signal, SIGTERM);
    EXPECT_EQ(hasStruck(), place > 0);
    expectCopy(folder, controller, outcome.out);
  };
  endWithFaultAt(0);
  all = calls();
  EXPECT_GT(all, 0);
  for (const long place : placesAmong(all, 4)) {
    endWithFaultAt(place);
  }
}

INSTANTIATE_TEST_SUITE_P(Calls, BlockingAtTheEnd,
                         testing::ValuesIn(combined({"copy", "log"}, {nullptr})), nameOf);

/// A headend whose configuration is more than the system takes from a sender ahead of its reader, 4
/// MiB (tcp_wmem). Not much more: a console with sanitizers, on a busy machine, has to write it in
/// time.
korvel::thrift::hub_module::HeadendConfig largeConfig() {
  korvel::thrift::hub_module::HeadendConfig config;
  config.lineupConfig.rfEntries.resize(50);
  for (auto& entry : config.lineupConfig.rfEntries) {
    entry.name = std::string(100'000, 'x');
  }
  return config;
}

class SlowPeer : public Blocking {};

// The commit would take more than twenty minutes. Without a terminal the copy is yet to be written
// then, and an end that is forced ten times as fast, after 0.3 s, would be too soon for that.
TEST_P(SlowPeer, DoesNotKeepTheConsoleFromEndingWithACopy) {
  const TemporaryFolder folder;
  FakeController controller;
  controller.setConfig(largeConfig());
  Fault none = faultAt(0);
  none.haste = GetParam().terminal == nullptr ? 2 : 10;
  EditedConsole console(start(none, folder));
  controller.readSlowly(4'000);
  console.send("commit\n");
  controller.waitForBegun(2);
  console.waitUntilBlocked();
  const Outcome outcome = end(console, std::chrono::seconds(45 / none.haste + 10));
  EXPECT_EQ(outcome.signal, SIGTERM);
  EXPECT_EQ(controller.methods(), std::vector<std::string>{"getHeadendConfig"});
  EXPECT_NE((outcome.out + outcome.err).find(kUncommittedIn), std::string::npos);
  expectCopy(folder, controller, outcome.out);
}

INSTANTIATE_TEST_SUITE_P(Calls, SlowPeer,
                         testing::Values(Parameters{"send", "block", nullptr},
                                         Parameters{"send", "block", "dumb"}),
                         nameOf);

}  // namespace
}  // namespace lineup::test
