// Random keys, pastes, resizes and pauses on terminals of every kind and size, for a while:
// RANDOM_KEYS_SECONDS, else 30. A session that goes wrong is made as short as it can be and printed
// with its number, from which RANDOM_KEYS_SEED begins again.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "model/headend_places.h"
#include "tests/console/keys.h"
#include "tests/support/catalogue_file.h"
#include "tests/support/fake_controller.h"
#include "tests/support/program_process.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

namespace fs = std::filesystem;

using Random = std::mt19937;

struct Size {
  unsigned short rows;
  unsigned short columns;
};

/// Something that the person at the terminal does: types, or gives it another size, or pauses.
struct Step {
  std::string keys;
  Size size{0, 0};
  unsigned pause = 0;  ///< microseconds
};

struct RandomSession {
  std::string terminal;
  Size size;
  std::vector<Step> steps;
};

std::size_t below(Random& random, std::size_t bound) {
  return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random);
}

Size randomSize(Random& random) {
  constexpr unsigned short kBounds[] = {3, 10, 100, 300};
  const auto one = [&] {
    return static_cast<unsigned short>(1 + below(random, kBounds[below(random, 4)]));
  };
  return {one(), one()};
}

/// The terminals of which the system knows what they can do.
std::vector<std::string> knownTerminals() {
  std::vector<std::string> names{"xterm", "not-known", "dumb"};
  for (const char* folder : {"/lib/terminfo", "/usr/share/terminfo", "/etc/terminfo"}) {
    std::error_code none;
    for (const auto& entry : fs::recursive_directory_iterator(folder, none)) {
      if (!entry.is_directory()) {
        names.push_back(entry.path().filename());
      }
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

/// What would stop, freeze or end the console, or wait long, is left out.
const std::vector<std::string>& keysAndMore() {
  static const std::string kSingle =
      "\x01\x02\x05\x06\a\b\t\n\r\v\f\x0e\x0f\x10\x12\x14\x15\x16\x17\x18\x19\x1b\x1d\x1e\x1f\x7fx"
      "\"\\";
  static const std::vector<std::string> kAll = [] {
    std::vector<std::string> all = {kUp,        kDown,        kRight,           kLeft,
                                    "\x1bOH",   "\x1bOF",     kDelete,          kCtrlRight,
                                    kCtrlLeft,  "\x1bx",      kEraseWordBefore, kEraseWord,
                                    "\x1b[15~", "\x1b[[A",    "\x1b[",          kF2,
                                    kF3,        kPasteBegins, kPasteEnds};
    all.push_back(kPasteBegins + "id 3\r\r" + kPasteEnds);
    for (const char* text : {"\ax\x02\x04", "\xc3", "\xff", "\r\n", "y z", "é", "漢字", "e\u0301",
                             "\U0001f469\u200d\U0001f52c", "co\t", "country \t", "save \t",
                             "addenc \t", "adddvb \t", "addpls\n", "id 3\n"}) {
      all.emplace_back(text);
    }
    for (const char key : kSingle) {
      all.emplace_back(1, key);
    }
    return all;
  }();
  return kAll;
}

std::string randomKeys(Random& random) {
  const std::size_t kind = below(random, 100);
  if (kind < 3) {
    std::string paste(below(random, 6'000), ' ');
    for (char& letter : paste) {
      letter = static_cast<char>(below(random, 50) == 0 ? ' ' : 'x' + below(random, 3));
    }
    return paste;
  }
  if (kind < 5) {
    std::string bytes(below(random, 20), ' ');
    for (char& byte : bytes) {
      byte = static_cast<char>(128 + below(random, 128));
    }
    return bytes;
  }
  return keysAndMore()[below(random, keysAndMore().size())];
}

RandomSession randomSession(unsigned seed) {
  static const std::vector<std::string> kTerminals = knownTerminals();
  Random random(seed);
  RandomSession session{kTerminals[below(random, kTerminals.size())], randomSize(random), {}};
  session.steps.resize(1 + below(random, 80));
  for (Step& step : session.steps) {
    const std::size_t kind = below(random, 20);
    if (kind == 0) {
      step.size = randomSize(random);
    } else if (kind == 1) {
      step.pause = static_cast<unsigned>(below(random, 20'000));
    } else {
      step.keys = randomKeys(random);
      std::erase(step.keys, '/');  // "save" is to reach no file outside its working folder
    }
  }
  return session;
}

/// Plays the session, and leaves the console; returns what went wrong, or nothing.
std::string play(const RandomSession& session) {
  const FakeController controller;
  const CatalogueFile catalogue(kCataloguePath);  // without one, "adddvb" waits 24 s for it
  const TemporaryFolder folder;  // without folders in it, whose names would be completed with a '/'
  Start start;
  start.folder = folder.path();
  start.terminal = true;
  start.rows = session.size.rows;
  start.columns = session.size.columns;
  start.environment = {
      {"TERM", session.terminal}, {"LANG", "C.UTF-8"}, {"LC_ALL", {}}, {"PAGER", "cat"}};
  try {
    ProgramProcess console(start);
    console.readUntil("for help");
    for (const Step& step : session.steps) {
      if (step.size.rows > 0) {
        console.resize(step.size.rows, step.size.columns);
      }
      usleep(step.pause);
      console.send(step.keys);
    }
    console.send("\x07\x05\x15x\n\x05\x15quit\n");  // out of a search, and of an answer
    const Outcome outcome = console.finish();
    const bool wrong = outcome.signal != 0 || outcome.status != 0 ||
                       outcome.out.find("Sanitizer") != std::string::npos ||
                       outcome.out.find("runtime error:") != std::string::npos;
    return wrong ? "status " + std::to_string(outcome.status) + ", signal " +
                       std::to_string(outcome.signal) + ":\n" + outcome.out
                 : "";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

/// Leaves out whatever the fault does not need.
void minimise(RandomSession& session) {
  for (std::size_t size = session.steps.size() / 2; size > 0; size /= 2) {
    for (std::size_t begin = 0; begin + size <= session.steps.size();) {
      RandomSession shorter = session;
      const auto first = shorter.steps.begin() + static_cast<std::ptrdiff_t>(begin);
      shorter.steps.erase(first, first + static_cast<std::ptrdiff_t>(size));
      if (play(shorter).empty()) {
        begin += size;
      } else {
        session = shorter;
      }
    }
  }
}

std::string describe(const RandomSession& session) {
  std::string text = session.terminal + " " + std::to_string(session.size.rows) + "x" +
                     std::to_string(session.size.columns) + "\n";
  for (const Step& step : session.steps) {
    text += step.size.rows > 0
                ? "size " + std::to_string(step.size.rows) + "x" + std::to_string(step.size.columns)
            : step.pause > 0 ? "pause " + std::to_string(step.pause)
                             : "keys " + testing::PrintToString(step.keys);
    text += '\n';
  }
  return text;
}

unsigned numberFrom(const char* variable, unsigned otherwise) {
  const char* const value = std::getenv(variable);
  return value == nullptr ? otherwise : static_cast<unsigned>(std::strtoul(value, nullptr, 10));
}

TEST(RandomKeys, DoNoHarm) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point end =
      Clock::now() + std::chrono::seconds(numberFrom("RANDOM_KEYS_SECONDS", 30));
  const unsigned first = numberFrom("RANDOM_KEYS_SEED", std::random_device()());
  unsigned seed = first;
  std::cout << "sessions from " << first << " on" << std::endl;
  do {
    RandomSession session = randomSession(seed);
    const std::string wrong = play(session);
    if (!wrong.empty()) {
      minimise(session);
      FAIL() << "RANDOM_KEYS_SEED=" << seed << "\n"
             << wrong << "\nAs short as it gets:\n"
             << describe(session) << play(session);
    }
    ++seed;
  } while (Clock::now() < end);
  std::cout << seed - first << " sessions" << std::endl;
}

}  // namespace
}  // namespace lineup::test
