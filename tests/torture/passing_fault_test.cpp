// A call that puts something out fails once: everything said later is seen.

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <string>
#include <tuple>

#include "tests/support/catalogue_file.h"
#include "tests/support/program_process.h"
#include "tests/support/sandbox.h"
#include "tests/support/temporary_folder.h"
#include "tests/torture/faulty_console.h"

namespace lineup::test {
namespace {

constexpr char kLines[] =
    "id 7\nshow\nfindsat x\nhelp\nid "
    "8\ncommit\nid 9\nrfinput status\nid x\ncommit\nquit\n";

/// Whether `text` is `whole` but for one piece that is missing in it, if any.
bool missesAtMostOnePiece(const std::string& text, const std::string& whole) {
  if (text.size() > whole.size()) {
    return false;
  }
  const auto begin = std::mismatch(text.begin(), text.end(), whole.begin()).first - text.begin();
  const auto end = std::mismatch(text.rbegin(), text.rend(), whole.rbegin()).first - text.rbegin();
  return begin + end >= static_cast<std::ptrdiff_t>(text.size());
}

std::string withoutProcess(std::string text) {
  const std::string before = "console";
  for (std::size_t at = 0; (at = text.find(before + "[", at)) != std::string::npos;) {
    at += before.size();
    text.erase(at, text.find(']', at) + 1 - at);
  }
  return text;
}

/// The kind of call and how it fails.
class PassingFault : public testing::TestWithParam<std::tuple<const char*, int>> {
 protected:
  PassingFault() { CatalogueFile catalogue(kCataloguePath); }

  Outcome runWithFaultAt(long place) const {
    const auto [kind, error] = GetParam();
    Start start;  // without a controller: the log hears of each call

    start.arguments = {"-c", "-l", "7"};
    injectFault(start, {kind, place, "once", error}, counts);
    Outcome outcome = run(start, kLines);
    outcome.err = withoutProcess(outcome.err);
    EXPECT_EQ(outcome.status, 0);
    return outcome;
  }

  const TemporaryFolder folder;
  const std::string counts = folder.file("counts");
};

TEST_P(PassingFault, LeavesAllThatIsSaidLaterToBeSeen) {
  const auto [kind, error] = GetParam();
  const Outcome whole = runWithFaultAt(0);
  ASSERT_NE(whole.err.find("[thrift]"), std::string::npos) << whole.err;
  const long calls = FaultCounts(counts).calls;
  ASSERT_GT(calls, 0);
  for (const long place : placesAmong(calls, 4)) {
    SCOPED_TRACE("call " + std::to_string(place) + " of " + std::to_string(calls));
    const Outcome outcome = runWithFaultAt(place);
    EXPECT_EQ(FaultCounts(counts).faults, 1);
    if (error == ENOSPC) {
      EXPECT_TRUE(missesAtMostOnePiece(outcome.out, whole.out)) << outcome.out;
    } else {
      EXPECT_EQ(outcome.out, whole.out);
    }
    EXPECT_TRUE(missesAtMostOnePiece(outcome.err, whole.err)) << outcome.err;
  }
}

INSTANTIATE_TEST_SUITE_P(Calls, PassingFault,
                         testing::Combine(testing::Values("write", "log"),
                                          testing::Values(EAGAIN, EINTR, ENOSPC)));

}  // namespace
}  // namespace lineup::test
