#include <gtest/gtest.h>
#include <thrift/protocol/TProtocol.h>

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

#include "print/named_json_reader.h"
#include "print/named_json_writer.h"
#include "tests/support/random_records.h"

namespace lineup::test {
namespace {

using korvel::thrift::hub_module::HeadendConfig;
using nlohmann::json;

// ---- records as JSON

TEST(NamedJson, NamesEveryFieldOfARecord) {
  HeadendConfig config;
  config.installerInfo.name = "Ada";
  config.lineupConfig.rfConfig.carrierFrequencies[7] = 474000;
  config.lineupConfig.globalConfig.preferredLanguages = {"eng", "spa"};
  const json value = namedJson(config);
  EXPECT_EQ(value["installerInfo"], json({{"name", "Ada"}, {"phone", ""}, {"email", ""}}));
  EXPECT_EQ(value["lineupConfig"]["rfConfig"]["carrierFrequencies"], json({{"7", 474000}}));
  EXPECT_EQ(value["lineupConfig"]["globalConfig"]["preferredLanguages"], json({"eng", "spa"}));
  EXPECT_EQ(value["lineupConfig"]["ipConfig"]["port"], 1234);
  EXPECT_EQ(value["lineupConfig"]["globalConfig"]["totEnabled"], true);
  EXPECT_EQ(value["lineupConfig"]["rfEntries"], json::array());
  EXPECT_EQ(value["ipInputs"], json::object());
}

TEST(NamedJson, LeavesOutWhatIsNotSet) {
  HeadendConfig config;
  EXPECT_FALSE(namedJson(config)["headendGlobalConfig"].contains("countryCode"));
  config.headendGlobalConfig.__set_countryCode(korvel::thrift::general::CountryCode::ITALY);
  EXPECT_EQ(namedJson(config)["headendGlobalConfig"]["countryCode"], 5);
}

TEST(NamedJson, RefusesFieldsOfTypesThatNoConfigurationHas) {
  const korvel::thrift::hub_module::BaseStatus withIntegerOf64BitsAndSet{};
  EXPECT_THROW(namedJson(withIntegerOf64BitsAndSet), apache::thrift::protocol::TProtocolException);
}

TEST(NamedJson, HasWordsForWhatIsNoNumber) {
  HeadendConfig config;
  double& period = config.lineupConfig.globalConfig.drmConfig.vsecureConfig.keyPeriod;
  const auto written = [&] {
    return namedJson(
        config)["lineupConfig"]["globalConfig"]["drmConfig"]["vsecureConfig"]["keyPeriod"];
  };
  period = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(written(), "NaN");
  period = -std::numeric_limits<double>::infinity();
  EXPECT_EQ(written(), "-Infinity");
  EXPECT_EQ(namedJson(configFromJson(namedJson(config))), namedJson(config));
}

// ---- records as the text of it

TEST(NamedJsonText, IsTheSameWithTheMembersInTheOrderOfTheFields) {
  for (uint32_t seed = 0; seed < 50; ++seed) {
    const HeadendConfig config = randomHeadendConfig(seed);
    const std::string text = namedJsonText(config);
    ASSERT_EQ(json::parse(text), namedJson(config)) << seed;
    ASSERT_EQ(nlohmann::ordered_json::parse(text).dump(2), text) << seed;
  }
  const std::string text = namedJsonText(HeadendConfig());
  EXPECT_EQ(nlohmann::ordered_json::parse(text).dump(2), text);
  EXPECT_EQ(text.find("{\n  \"lineupConfig\": {\n    \"globalConfig\": {\n"), 0U);
  EXPECT_NE(text.find("\n  \"ipInputs\": {}\n}"), std::string::npos);
}

TEST(NamedJsonText, HasReplacementsForWhatIsNoUtf8) {
  HeadendConfig config;
  config.installerInfo.name = "a\xe9\"\\\n\x7f";
  config.ipInputs["4\"\xff"].address = "ñ";
  const json value = json::parse(namedJsonText(config));
  EXPECT_EQ(value["installerInfo"]["name"], "a\xef\xbf\xbd\"\\\n\x7f");
  EXPECT_EQ(value["ipInputs"]["4\"\xef\xbf\xbd"]["address"], "ñ");
}

// ---- and back

TEST(ConfigFromJson, GivesTheRecordBack) {
  EXPECT_EQ(configFromJson(namedJson(HeadendConfig())), HeadendConfig());
  for (uint32_t seed = 0; seed < 200; ++seed) {
    const HeadendConfig config = randomHeadendConfig(seed);
    ASSERT_EQ(configFromJson(namedJson(config)), config) << seed;
  }
}

void expectRefused(const json& value, const std::string& message) {
  try {
    configFromJson(value);
    FAIL() << "taken, but: " << message;
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(error.what(), message);
  }
}

TEST(ConfigFromJson, RefusesWhatIsMissingUnknownOrOfAnotherType) {
  const json good = namedJson(randomHeadendConfig(1));
  json value = good;
  value["lineupConfig"]["ipConfig"].erase("port");
  expectRefused(value, "/lineupConfig/ipConfig lacks \"port\"");
  value = good;
  value["installerInfo"]["fax"] = "1";
  expectRefused(value, "/installerInfo has the unknown \"fax\"");
  value = good;
  value["lineupConfig"]["ipConfig"]["port"] = "1234";
  expectRefused(value, "/lineupConfig/ipConfig/port is no whole number");
  value["lineupConfig"]["ipConfig"]["port"] = 2147483648;
  expectRefused(value, "/lineupConfig/ipConfig/port is out of range");
  value["lineupConfig"]["ipConfig"]["port"] = std::numeric_limits<uint64_t>::max();
  expectRefused(value, "/lineupConfig/ipConfig/port is out of range");
  value = good;
  value["lineupConfig"]["rfEntries"][0]["name"] = nullptr;
  expectRefused(value, "/lineupConfig/rfEntries/0/name is no text");
  value["lineupConfig"]["rfEntries"] = json::object();
  expectRefused(value, "/lineupConfig/rfEntries is no array");
  value = good;
  value["lineupConfig"]["rfConfig"]["carrierFrequencies"] = {{"x", 1}};
  expectRefused(value, "/lineupConfig/rfConfig/carrierFrequencies/x is named by no number");
  for (const char* const key : {"002", "-0", "00", "-01"}) {
    value["lineupConfig"]["rfConfig"]["carrierFrequencies"] = {{"2", 1}, {key, 1}};
    expectRefused(value, std::string("/lineupConfig/rfConfig/carrierFrequencies/") + key +
                             " is not named as the number is written");
  }
  value["lineupConfig"]["rfConfig"]["carrierFrequencies"] = {{"0", 1}, {"-2147483648", 1}};
  EXPECT_EQ(namedJson(configFromJson(value)), value);
  value = good;
  value["ipInputs"] = json::array();
  expectRefused(value, "/ipInputs is no object");
  expectRefused(json::array(), "the whole is no object");
}

}  // namespace
}  // namespace lineup::test
