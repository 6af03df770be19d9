// What is taken for a complete configuration in a file.

#include "controller/complete_config_file.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/encoding.h"
#include "tests/support/long_series.h"
#include "tests/support/random_records.h"
#include "tests/support/scratch_file.h"

namespace lineup::test {
namespace {

using hub_module::HeadendConfig;

/// The first `old` in `text` replaced.
std::string replaced(std::string text, const std::string& old, const std::string& replacement) {
  const std::size_t at = text.find(old);
  EXPECT_NE(at, std::string::npos) << old;
  return text.replace(at, old.size(), replacement);
}

/// The default configuration with the first `old` replaced.
std::string changed(const std::string& old, const std::string& replacement) {
  return replaced(toJson(HeadendConfig()), old, replacement);
}

/// The default configuration with another member in the place of the port.
std::string withPort(const std::string& member) {
  return changed(R"("6":{"i32":1234})", member);
}

class CompleteConfigFile : public testing::Test {
 protected:
  HeadendConfig read(const std::string& content) const {
    file_.fill(content);
    return readCompleteConfigFile(file_.path());
  }

  /// Why the content is not taken for a configuration; nothing if it is.
  std::string refusal(const std::string& content) const {
    try {
      read(content);
      return "";
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }

  void expectRefused(const std::string& content, const std::string& reason) const {
    EXPECT_EQ(refusal(content), "is no complete configuration: " + reason);
  }

  /// Likewise, where the library has the most to say.
  void expectRefusedWith(const std::string& content, const std::string& part) const {
    const std::string reason = refusal(content);
    EXPECT_TRUE(reason.starts_with("is no complete configuration: ")) << content;
    EXPECT_NE(reason.find(part), std::string::npos) << reason;
  }

  ScratchFile file_;
};

TEST_F(CompleteConfigFile, IsTakenWhole) {
  for (uint32_t seed = 0; seed < 20; ++seed) {
    ASSERT_EQ(read(toJson(randomHeadendConfig(seed))), randomHeadendConfig(seed));
  }
}

TEST_F(CompleteConfigFile, MayHaveManyServicesAndAVeryLongName) {
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
  EXPECT_TRUE(read(toJson(config)) == config);
}

TEST_F(CompleteConfigFile, MayHaveWhiteSpaceAfterIt) {
  const std::string good = toJson(randomHeadendConfig(1));
  EXPECT_EQ(refusal(good + "\n"), "");
  EXPECT_EQ(refusal(good + " \r\n\t"), "");
  expectRefused(good + "\n}", "something follows it");
  expectRefused(good + good, "something follows it");
  expectRefused(good + std::string(1, '\0'), "something follows it");
}

TEST_F(CompleteConfigFile, HasEachFieldOnceAndOfItsType) {
  expectRefused("{}", "lacks the field \"lineupConfig\"");
  expectRefused(changed(R"("1":{"i32":1},"2":{"i32":0})", R"("2":{"i32":0})"),
                "/headendGlobalConfig lacks the field \"headendId\"");
  expectRefused(withPort(R"("60":{"i32":1234})"), "/lineupConfig/ipConfig has an unknown field 60");
  expectRefused(withPort(R"("5":{"str":"1234"})"),
                "/lineupConfig/ipConfig/mcastRangeEnd is given twice");
  expectRefused(withPort(R"("6":{"i64":1234})"), "/lineupConfig/ipConfig/port has another type");
}

TEST_F(CompleteConfigFile, HasNumbersThatTheirFieldsHold) {
  for (const std::string number : {"2147483648", "-2147483649", "99999999999999999999"}) {
    expectRefused(withPort(R"("6":{"i32":)" + number + "}"),
                  "/lineupConfig/ipConfig/port has a number that is out of range");
  }
  EXPECT_EQ(refusal(withPort(R"("6":{"i32":-2147483648})")), "");
  expectRefusedWith(changed(R"({"tf":0})", R"({"tf":2})"), " has a number that is out of range");
}

TEST_F(CompleteConfigFile, HasNumbersAsJsonSpellsThem) {
  for (const std::string number : {"+101", "00101", "00", "-01", "1.", ".5", "1e", "1e+", "--1"}) {
    expectRefused(withPort(R"("6":{"i32":)" + number + "}"),
                  "has a number that is none of JSON, " + number);
  }
  for (const std::string number : {"0", "-0", "-1", "101", "1000"}) {
    EXPECT_EQ(refusal(withPort(R"("6":{"i32":)" + number + "}")), "") << number;
  }
  for (const std::string size : {"00", "+0"}) {
    expectRefused(changed("[\"rec\",0]", "[\"rec\"," + size + "]"),
                  "has a number that is none of JSON, " + size);
  }
}

TEST_F(CompleteConfigFile, HasFieldIdsAndTypesThatThereAre) {
  for (const std::string field : {"06", "+6", "6 ", "00006"}) {
    expectRefusedWith(withPort('"' + field + R"(":{"i32":1234})"), "");
  }
  for (const std::string type : {"i320", "i3", "i"}) {
    expectRefusedWith(withPort(R"("6":{")" + type + R"(":1234})"), "");
  }
  expectRefused(withPort(R"("6":{"i3 2":1234})"),
                "/lineupConfig/ipConfig has the unknown type \"i3 2\"");
  expectRefusedWith(changed("[\"rec\",0]", "[\"reco\",0]"), "has the unknown type \"reco\"");
  expectRefusedWith(changed("[\"str\",\"rec\",0,", "[\"strg\",\"rec\",0,"),
                    "has the unknown type \"strg\"");
}

TEST_F(CompleteConfigFile, HasEachKeyOfAMapOnceAndAsItIsWritten) {
  HeadendConfig config;
  config.lineupConfig.emptyInputServices[1];
  config.lineupConfig.emptyInputServices[2];
  config.ipInputs["7/1"];
  config.ipInputs["7/2"];
  const std::string good = toJson(config);
  EXPECT_EQ(refusal(good), "");
  const std::string second = R"(},"2":{"1":{"rec")";
  expectRefused(replaced(good, second, R"(},"1":{"1":{"rec")"),
                "/lineupConfig/emptyInputServices has the key \"1\" twice");
  expectRefused(replaced(good, second, R"(},"02":{"1":{"rec")"),
                "/lineupConfig/emptyInputServices has the key \"02\"");
  expectRefused(replaced(good, "\"7/2\"", "\"7/1\""), "/ipInputs has the key \"7/1\" twice");
}

TEST_F(CompleteConfigFile, IsNotCutAnywhere) {
  const std::string good = toJson(randomHeadendConfig(shortConfigSeed()));
  for (std::size_t size = 0; size < good.size(); size += kCaseStep) {
    ASSERT_NE(refusal(good.substr(0, size)), "") << size;
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

TEST_F(CompleteConfigFile, HasEachTokenAndNoneOfAnotherKind) {
  const std::string good = toJson(randomHeadendConfig(shortConfigSeed()));
  const auto tokens = tokensOf(good);
  for (std::size_t number = 0; number < tokens.size(); number += kCaseStep) {
    const auto& [begin, end] = tokens[number];
    for (const std::string token :
         {"", "{", "]", ",", ":", "x", "\"unknown\"", "+101", "00", "1."}) {
      // A text may be another one, and the key of a map, too.
      if (good.substr(begin, end - begin) == token || (token[0] == '"' && good[begin] == '"')) {
        continue;
      }
      std::string other = good;
      ASSERT_NE(refusal(other.replace(begin, end - begin, token)), "") << begin << " " << token;
    }
  }
}

}  // namespace
}  // namespace lineup::test
