// What lineupctl takes for a configuration in a file, and what it refuses before it connects.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "controller/complete_config_file.h"
#include "tests/ctl/ctl_process.h"
#include "tests/support/encoding.h"
#include "tests/support/fake_controller.h"
#include "tests/support/long_series.h"
#include "tests/support/random_records.h"
#include "tests/support/scratch_file.h"
#include "tests/support/temporary_folder.h"

namespace lineup::test {
namespace {

using korvel::thrift::hub_module::HeadendConfig;

class CtlFiles : public testing::Test {
 protected:
  /// Whether the content is taken for a configuration; `why` is the reason if not. The file is one
  /// in memory, as there are thousands.
  bool isTaken(const std::string& content, std::string* why = nullptr) const {
    memory_.fill(content);
    try {
      readCompleteConfigFile(memory_.path());
      return true;
    } catch (const std::runtime_error& error) {
      if (why != nullptr) {
        *why = error.what();
      }
      return false;
    }
  }

  void expectRefused(const std::string& content, const std::string& reason) const {
    std::string why;
    EXPECT_FALSE(isTaken(content, &why)) << reason;
    EXPECT_EQ(why, "is no complete configuration: " + reason);
  }

  /// The default configuration with the first `old` replaced.
  static std::string changed(const std::string& old, const std::string& replacement) {
    std::string text = toJson(HeadendConfig());
    const std::size_t at = text.find(old);
    EXPECT_NE(at, std::string::npos) << old;
    return text.replace(at, old.size(), replacement);
  }

  /// The shortest of some random configurations.
  static std::string shortContent() {
    std::string shortest = toJson(randomHeadendConfig(0));
    for (uint32_t seed = 1; seed < 50; ++seed) {
      const std::string content = toJson(randomHeadendConfig(seed));
      shortest = content.size() < shortest.size() ? content : shortest;
    }
    return shortest;
  }

  /// Runs the program with the content in the file, which it refuses without asking the controller.
  void expectRefusedByTheProgram(const std::string& content, const FakeController& controller,
                                 std::size_t at) const {
    writeFile(file_, content);
    const Outcome outcome = runCtl({"apply", file_});
    EXPECT_EQ(outcome.status, 3) << at;
    EXPECT_EQ(outcome.out, "") << at;
    EXPECT_EQ(outcome.err.find("lineupctl: " + file_ + ": is no complete configuration: "), 0U)
        << outcome.err;
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
    EXPECT_EQ(controller.connections(), 0U) << at;
  }

  ScratchFile memory_;
  TemporaryFolder folder_;
  const std::string file_ = folder_.file("config.json");
};

TEST_F(CtlFiles, ThatAreAppliedAreSavedAgainByteForByte) {
  FakeController controller;
  for (uint32_t seed = 0; seed < 20; ++seed) {
    const std::string content = toJson(randomHeadendConfig(seed));
    writeFile(file_, content);
    ASSERT_EQ(runCtl({"apply", file_}).status, 0);
    ASSERT_EQ(controller.config(), randomHeadendConfig(seed));
    ASSERT_EQ(runCtl({"save", folder_.file("saved.json")}).status, 0);
    ASSERT_EQ(contentOf(folder_.file("saved.json")), content);
  }
}

TEST_F(CtlFiles, WithManyServicesAndAVeryLongNameAreTaken) {
  constexpr int kServices = 10'000;
  HeadendConfig config;
  auto& lineup = config.lineupConfig;
  for (int key = 1; key <= kServices; ++key) {
    lineup.dvbInputServices[key].service.name = "Service " + std::to_string(key);
    lineup.rfEntries.emplace_back().serviceKey = key;
    config.ipInputs["4/0"].muxes[std::to_string(key)].url = "udp://239.0.0.1:5000";
  }
  lineup.dvbInputServices[1].service.name = std::string(25'000'000, 'n');
  lineup.dvbInputServices[1].service.intItems.resize(kServices);
  writeFile(file_, toJson(config));
  EXPECT_TRUE(readCompleteConfigFile(file_) == config);
}

TEST_F(CtlFiles, WithWhiteSpaceBehindAreTaken) {
  const std::string good = toJson(randomHeadendConfig(1));
  EXPECT_TRUE(isTaken(good));
  EXPECT_TRUE(isTaken(good + "\n"));
  EXPECT_TRUE(isTaken(good + " \r\n\t"));
  expectRefused(good + "\n}", "something follows it");
  expectRefused(good + good, "something follows it");
  expectRefused(good + std::string(1, '\0'), "something follows it");
}

TEST_F(CtlFiles, ThatCannotBeReadAreRefusedForTheSystemsReason) {
  const TemporaryFolder folder;
  expectCtl({"show", folder.path()}, 3, "", folder.path() + ": Is a directory");
}

TEST_F(CtlFiles, ThatLackAFieldAreRefusedByItsName) {
  expectRefused(changed(R"("1":{"i32":1},"2":{"i32":0})", R"("2":{"i32":0})"),
                "/headendGlobalConfig lacks the field \"headendId\"");
  expectRefused(changed(R"("6":{"i32":1234})", R"("60":{"i32":1234})"),
                "/lineupConfig/ipConfig has an unknown field 60");
  expectRefused(changed(R"("6":{"i32":1234})", R"("5":{"str":"1234"})"),
                "/lineupConfig/ipConfig/mcastRangeEnd is given twice");
  expectRefused(changed(R"("6":{"i32":1234})", R"("6":{"i64":1234})"),
                "/lineupConfig/ipConfig/port has another type");
  expectRefused("{}", "lacks the field \"lineupConfig\"");
}

TEST_F(CtlFiles, WithANumberThatAFieldCannotHoldAreRefused) {
  for (const std::string number : {"2147483648", "-2147483649", "99999999999999999999"}) {
    expectRefused(changed(R"("6":{"i32":1234})", R"("6":{"i32":)" + number + "}"),
                  "/lineupConfig/ipConfig/port has a number that is out of range");
  }
  EXPECT_TRUE(isTaken(changed(R"("6":{"i32":1234})", R"("6":{"i32":-2147483648})")));
  std::string why;
  EXPECT_FALSE(isTaken(changed(R"({"tf":0})", R"({"tf":2})"), &why));
  EXPECT_NE(why.find(" has a number that is out of range"), std::string::npos) << why;
}

TEST_F(CtlFiles, WithANumberThatJsonSpellsOtherwiseAreRefused) {
  const auto withPort = [](const std::string& number) {
    return changed(R"("6":{"i32":1234})", R"("6":{"i32":)" + number + "}");
  };
  for (const std::string number : {"+101", "00101", "00", "-01", "1.", ".5", "1e", "1e+", "--1"}) {
    expectRefused(withPort(number), "has a number that is none of JSON, " + number);
  }
  for (const std::string number : {"0", "-0", "-1", "101", "1000"}) {
    EXPECT_TRUE(isTaken(withPort(number))) << number;
  }
  expectRefused(changed("[\"rec\",0]", "[\"rec\",00]"), "has a number that is none of JSON, 00");
  expectRefused(changed("[\"rec\",0]", "[\"rec\",+0]"), "has a number that is none of JSON, +0");
}

TEST_F(CtlFiles, WithAFieldIdOrATypeThatIsNoneAreRefused) {
  for (const std::string field : {"06", "+6", "6 ", "00006"}) {
    std::string why;
    EXPECT_FALSE(isTaken(changed(R"("6":{"i32":1234})", '"' + field + R"(":{"i32":1234})"), &why));
    EXPECT_NE(why.find("is no complete configuration: "), std::string::npos) << why;
  }
  for (const std::string type : {"i3 2", "i320", "i3", "i"}) {
    std::string why;
    EXPECT_FALSE(isTaken(changed(R"("6":{"i32":1234})", R"("6":{")" + type + R"(":1234})"), &why))
        << type;
    EXPECT_NE(why.find("is no complete configuration: "), std::string::npos) << why;
  }
  expectRefused(changed(R"("6":{"i32":1234})", R"("6":{"i3 2":1234})"),
                "/lineupConfig/ipConfig has the unknown type \"i3 2\"");
  std::string why;
  EXPECT_FALSE(isTaken(changed("[\"rec\",0]", "[\"reco\",0]"), &why));
  EXPECT_NE(why.find("has the unknown type \"reco\""), std::string::npos) << why;
  EXPECT_FALSE(isTaken(changed("[\"str\",\"rec\",0,", "[\"strg\",\"rec\",0,"), &why));
  EXPECT_NE(why.find("has the unknown type \"strg\""), std::string::npos) << why;
}

TEST_F(CtlFiles, WithAKeyTwiceInAMapAreRefused) {
  HeadendConfig config;
  config.lineupConfig.emptyInputServices[1];
  config.lineupConfig.emptyInputServices[2];
  config.ipInputs["7/1"];
  config.ipInputs["7/2"];
  const std::string good = toJson(config);
  EXPECT_TRUE(isTaken(good));
  const auto with = [&](const std::string& old, const std::string& replacement) {
    std::string text = good;
    const std::size_t at = text.find(old);
    EXPECT_NE(at, std::string::npos) << old;
    return text.replace(at, old.size(), replacement);
  };
  expectRefused(with("},\"2\":{\"1\":{\"rec\"", "},\"1\":{\"1\":{\"rec\""),
                "/lineupConfig/emptyInputServices has the key \"1\" twice");
  expectRefused(with("},\"2\":{\"1\":{\"rec\"", "},\"02\":{\"1\":{\"rec\""),
                "/lineupConfig/emptyInputServices has the key \"02\"");
  expectRefused(with("\"7/2\"", "\"7/1\""), "/ipInputs has the key \"7/1\" twice");
}

TEST_F(CtlFiles, ThatAreCutAnywhereAreRefused) {
  const std::string good = shortContent();
  for (std::size_t size = 0; size < good.size(); size += kCaseStep) {
    ASSERT_FALSE(isTaken(good.substr(0, size))) << size;
  }
}

/// The tokens of a JSON text: where each begins and ends.
std::vector<std::pair<std::size_t, std::size_t>> tokensOf(const std::string& text) {
  std::vector<std::pair<std::size_t, std::size_t>> tokens;
  for (std::size_t at = 0; at < text.size();) {
    std::size_t end = at + 1;
    if (text[at] == '"') {
      while (text[end] != '"') {
        end += text[end] == '\\' ? 2 : 1;
      }
      ++end;
    } else if (std::string("{}[],:").find(text[at]) == std::string::npos) {
      end = text.find_first_of("{}[],:\"", at);
    }
    tokens.emplace_back(at, end);
    at = end;
  }
  return tokens;
}

TEST_F(CtlFiles, WithATokenLeftOutOrOfAnotherKindAreRefused) {
  const std::string good = shortContent();
  const auto tokens = tokensOf(good);
  for (std::size_t number = 0; number < tokens.size(); number += kCaseStep) {
    const auto& [begin, end] = tokens[number];
    const std::string before = good.substr(0, begin);
    const std::string after = good.substr(end);
    ASSERT_FALSE(isTaken(before + after)) << begin;
    for (const std::string token : {"{", "]", ",", ":", "x", "\"unknown\"", "+101", "00", "1."}) {
      // A text may be another one, and the key of a map, too.
      if (good.substr(begin, end - begin) == token || (token[0] == '"' && good[begin] == '"')) {
        continue;
      }
      std::string other = before;
      other.append(token).append(after);
      ASSERT_FALSE(isTaken(other)) << begin << " " << token;
    }
  }
}

/// How many of a long series the program is run for.
constexpr std::size_t kRuns = 40;

TEST_F(CtlFiles, ThatAreCutAreRefusedByTheProgramBeforeAConnectionIsMade) {
  const FakeController controller;
  const std::string good = shortContent();
  for (std::size_t run = 0; run <= kRuns; ++run) {
    const std::size_t size = run * (good.size() - 1) / kRuns;  // from none to all but one
    expectRefusedByTheProgram(good.substr(0, size), controller, size);
  }
  EXPECT_EQ(runCtl({"apply", "--dry-run", "-"}, good).status, 1);  // the listener does count
  EXPECT_EQ(controller.connections(), 1U);
}

TEST_F(CtlFiles, WithAnotherTokenAreRefusedByTheProgramBeforeAConnectionIsMade) {
  const FakeController controller;
  const std::string good = shortContent();
  const auto tokens = tokensOf(good);
  const std::vector<std::string> others = {"", "{", "]", ",", ":", "x"};
  for (std::size_t run = 0; run <= kRuns; ++run) {
    const auto& [begin, end] = tokens[run * (tokens.size() - 1) / kRuns];
    const std::string& other = others[run % others.size()];
    std::string content = good;
    if (content.substr(begin, end - begin) != other) {
      content.replace(begin, end - begin, other);
      expectRefusedByTheProgram(content, controller, begin);
    }
  }
}

TEST_F(CtlFiles, ThatAreRefusedAreRefusedBeforeAConnectionIsMade) {
  const FakeController controller;
  const std::string good = toJson(randomHeadendConfig(2));
  const std::vector<std::vector<std::string>> commands = {
      {"apply", file_}, {"apply", "--dry-run", file_},
      {"diff", file_},  {"diff", file_, "running"},
      {"show", file_},  {"apply", "--expect", file_, file_}};
  for (const auto& words : commands) {
    writeFile(file_, good.substr(0, good.size() / 2));
    const Outcome outcome = runCtl(words);
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err.find("lineupctl: " + file_ + ": is no complete configuration: "), 0U);
  }
  expectCtl({"apply", folder_.file("none")}, 3, "",
            folder_.file("none") + ": No such file or directory");
  EXPECT_EQ(runCtl({"apply", folder_.path()}).status, 3);
  EXPECT_EQ(runCtl({"apply", "-"}, good.substr(0, 100)).status, 3);
  EXPECT_EQ(controller.connections(), 0U);
}

}  // namespace
}  // namespace lineup::test
