// What a console inherits from whoever starts it, each pair of such states at least once: it edits,
// ends when asked to, and leaves the edits.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/fake_controller.h"
#include "tests/support/program_process.h"
#include "tests/support/temporary_folder.h"
#include "tests/torture/faulty_console.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;

using Row = std::vector<std::string>;

/// What may be inherited; the first of each is the usual state. See inherit.cpp. A closed input
/// ends the console before any edit.
const std::vector<Row> kChoices = {
    {"mask=none", "mask=all", "mask=alarm"},
    {"ignored=none", "ignored=all", "ignored=pipe", "ignored=child"},
    {"input=usual", "input=nonblocking"},
    {"output=usual", "output=nonblocking", "output=closed"},
    {"errors=usual", "errors=nonblocking", "errors=closed"},
    {"umask=usual", "umask=none", "umask=all"},
    {
        "limit=none",
        "limit=files",
        "limit=core",
        "limit=stack",
        "limit=filesize",
        "limit=processes",
#ifndef SANITIZED  // which needs memory of its own
        "limit=memory",
#endif
    },
    {"timer=off", "timer=on"},
    {"stream=pipes", "stream=terminal"},
};

using Pairs = std::set<std::pair<std::string, std::string>>;

/// The pairs that a row, filled as far as it is, has together with `state`.
Pairs pairsWith(const Row& row, const std::string& state) {
  Pairs pairs;
  for (const std::string& other : row) {
    if (!other.empty() && other != state) {
      pairs.insert(std::minmax(other, state));
    }
  }
  return pairs;
}

Pairs allPairs() {
  Pairs pairs;
  for (const Row& some : kChoices) {
    for (const Row& others : kChoices) {
      for (const std::string& state : some) {
        if (&some != &others) {
          pairs.merge(pairsWith(others, state));
        }
      }
    }
  }
  return pairs;
}

std::size_t countNew(const Pairs& pairs, const Pairs& missing) {
  std::size_t count = 0;
  for (const auto& pair : pairs) {
    count += missing.count(pair);
  }
  return count;
}

std::size_t placeOf(const std::string& state) {
  std::size_t place = 0;
  while (std::find(kChoices[place].begin(), kChoices[place].end(), state) ==
         kChoices[place].end()) {
    ++place;
  }
  return place;
}

/// A row with one of the missing pairs and as many others as choosing one state after the other
/// finds.
Row rowFor(const Pairs& missing) {
  Row row(kChoices.size());
  row[placeOf(missing.begin()->first)] = missing.begin()->first;
  row[placeOf(missing.begin()->second)] = missing.begin()->second;
  for (std::size_t place = 0; place < row.size(); ++place) {
    if (row[place].empty()) {
      row[place] = *std::max_element(kChoices[place].begin(), kChoices[place].end(),
                                     [&](const std::string& a, const std::string& b) {
                                       return countNew(pairsWith(row, a), missing) <
                                              countNew(pairsWith(row, b), missing);
                                     });
    }
  }
  return row;
}

std::vector<Row> rowsWithAllPairs() {
  std::vector<Row> rows;
  Pairs missing = allPairs();
  while (!missing.empty()) {
    rows.push_back(rowFor(missing));
    for (const std::string& state : rows.back()) {
      for (const auto& pair : pairsWith(rows.back(), state)) {
        missing.erase(pair);
      }
    }
  }
  return rows;
}

Start startWith(const Row& row, const TemporaryFolder& folder) {
  Start start = startIn(folder, row.back() == "stream=terminal");
  start.program = INHERIT;
  for (std::size_t place = 0; place + 1 < row.size(); ++place) {
    if (row[place] != kChoices[place].front()) {
      start.arguments.push_back(row[place]);
    }
  }
  start.arguments.insert(start.arguments.end(), {"--", kConsoleProgram});
  start.environment["XDG_STATE_HOME"] = folder.file("state");
  return start;
}

TEST(InheritedState, DoesNotKeepTheConsoleFromEndingWithACopy) {
  const std::vector<Row> rows = rowsWithAllPairs();
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row));
    const FakeController controller;
    const TemporaryFolder folder;
    ProgramProcess console(startWith(row, folder));
    console.send("id 7\nsave mark\n");  // where its output is closed, a file has to tell
    const auto late = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!fs::exists(folder.file("mark")) && std::chrono::steady_clock::now() < late) {
      usleep(5000);
    }
    ASSERT_TRUE(fs::exists(folder.file("mark")));
    console.signal(SIGTERM);
    const auto asked = std::chrono::steady_clock::now();
    EXPECT_EQ(console.finish().signal, SIGTERM);
    EXPECT_LT(std::chrono::steady_clock::now() - asked, std::chrono::seconds(5));
    const auto copies = copiesIn(folder);
    ASSERT_EQ(copies.size(), 1U);
    EXPECT_EQ(copies[0].parent_path(), folder.file("state/lineup-console"));
    EXPECT_EQ(fs::status(copies[0]).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(idIn(copies[0]), 7);
  }
  EXPECT_GE(rows.size(), 12U);
}

}  // namespace
}  // namespace lineup::test
