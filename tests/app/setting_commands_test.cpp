#include "app/setting_commands.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "model/lineup_editor.h"
#include "tests/support/streams.h"

namespace lineup::test {
namespace {

using hub_module::HeadendConfig;

class Settings : public testing::Test {
 protected:
  /// What the command line prints, or the message that it throws.
  std::string run(const std::string& line, bool quiet = false) {
    std::string message;
    const std::string text = printed([&] {
      try {
        EXPECT_TRUE(editor.dispatchCommand(line, quiet));
      } catch (const std::runtime_error& error) {
        message = error.what();
      }
    });
    return text + message;
  }

  /// Expects that the line ends with the message and changes nothing.
  void expectRefused(const std::string& line, const std::string& message) {
    const HeadendConfig before = editor.config;
    const bool pendingBefore = editor.pendingChanges;
    EXPECT_EQ(run(line), message) << line;
    EXPECT_EQ(editor.config, before) << line;
    EXPECT_EQ(editor.pendingChanges, pendingBefore) << line;
  }

  /// Expects that the line changes something and says the text.
  void expectChanged(const std::string& line, const std::string& text) {
    const HeadendConfig before = editor.config;
    EXPECT_EQ(run(line), text + "\n") << line;
    EXPECT_FALSE(editor.config == before) << line;
    EXPECT_TRUE(editor.pendingChanges) << line;
  }

  /// Expects that the line says the text and changes nothing.
  void expectSaid(const std::string& line, const std::string& text) {
    expectRefused(line, text + "\n");
  }

  LineupEditor editor;
  hub_module::LineupConfig& lineup = editor.config.lineupConfig;
  hub_module::HeadendGlobalConfig& global = editor.config.headendGlobalConfig;
};

TEST_F(Settings, RfmodAloneShowsTheModulation) {
  expectSaid("rfmod", "Current RF modulation is: COFDM");
  lineup.rfConfig.modulation = 1;
  expectSaid("rfmod", "Current RF modulation is: QAM");
  lineup.rfConfig.modulation = 2;
  expectSaid("rfmod", "Current RF modulation is: QAM B");
  lineup.rfConfig.modulation = 3;
  expectSaid("rfmod", "Current RF modulation is: ");
  lineup.rfConfig.modulation = -1;
  expectSaid("rfmod", "Current RF modulation is: ");
}

TEST_F(Settings, RfmodTwiceChangesOnce) {
  expectChanged("rfmod qam", "Changed RF modulation to qam");
  EXPECT_EQ(lineup.rfConfig.modulation, 1);
  expectSaid("rfmod qam", "RF modulation is already qam");
}

TEST_F(Settings, RfmodAcceptsQamb) {
  expectChanged("rfmod qamb", "Changed RF modulation to qamb");
  EXPECT_EQ(lineup.rfConfig.modulation, 2);
  expectChanged("rfmod cofdm", "Changed RF modulation to cofdm");
  EXPECT_EQ(lineup.rfConfig.modulation, 0);
}

TEST_F(Settings, RfnumStoresAnIndex) {
  expectChanged("rfnum 6", "Number of carriers per OUT module changed to: 6");
  EXPECT_EQ(lineup.rfConfig.carriersPerModule, 1);
  expectChanged("rfnum 4", "Number of carriers per OUT module changed to: 4");
  EXPECT_EQ(lineup.rfConfig.carriersPerModule, 0);
}

TEST_F(Settings, RfnumEchoesTheWordAsTyped) {
  expectSaid("rfnum 4x", "Number of carriers per OUT module was already: 4x");
  expectChanged("rfnum 06", "Number of carriers per OUT module changed to: 06");
}

TEST_F(Settings, DrmAloneShowsTheSystem) {
  expectSaid("drm", "DRM is currently: off");
  run("drm vsecure");
  expectSaid("drm", "DRM is currently: vsecure");
  lineup.globalConfig.drmConfig.lynkConfig.enabled = true;
  expectSaid("drm", "DRM is currently: lynk");
}

TEST_F(Settings, DrmLynkAfterVsecureChangesBothFlags) {
  auto& drm = lineup.globalConfig.drmConfig;
  expectChanged("drm vsecure", "Changed DRM status to: vsecure");
  EXPECT_TRUE(drm.vsecureConfig.enabled);
  drm.combinedFlag = true;
  expectChanged("drm lynk", "Changed DRM status to: lynk");
  EXPECT_TRUE(drm.lynkConfig.enabled);
  EXPECT_FALSE(drm.vsecureConfig.enabled);
  EXPECT_FALSE(drm.combinedFlag);
  expectSaid("drm lynk", "DRM is already: lynk");
  expectChanged("drm off", "Changed DRM status to: off");
  expectSaid("drm off", "DRM is already: off");
}

TEST_F(Settings, DrmIsAlreadyOnlyIfBothFlagsAgree) {
  auto& drm = lineup.globalConfig.drmConfig;
  drm.lynkConfig.enabled = true;
  drm.vsecureConfig.enabled = true;
  expectChanged("drm lynk", "Changed DRM status to: lynk");
  EXPECT_FALSE(drm.vsecureConfig.enabled);
}

TEST_F(Settings, EitAloneIsRefusedAndDoesNotShow) {
  expectRefused("eit", "Please give a valid mode: off, actual or others");
}

TEST_F(Settings, EitChangesTheMode) {
  expectSaid("eit actual", "EIT working mode is already: actual");
  expectChanged("eit off", "Changed EIT working mode to: off");
  EXPECT_EQ(lineup.globalConfig.eitMode, 0);
  expectChanged("eit others", "Changed EIT working mode to: others");
  EXPECT_EQ(lineup.globalConfig.eitMode, 2);
}

TEST_F(Settings, IdAcceptsTen) {
  expectChanged("id 10", "Headend id changed to: 10. Please remember to commit the changes.");
  EXPECT_EQ(global.headendId, 10);
}

TEST_F(Settings, IdEchoesTheNumberNotTheWord) {
  expectChanged("id 07", "Headend id changed to: 7. Please remember to commit the changes.");
  expectSaid("id 7x", "Headend was already set to: 7");
}

TEST_F(Settings, CountryCommandStoresEveryCountry) {
  const char* const words[] = {"other",   "spain",    "france", "uk",         "australia",
                               "italy",   "portugal", "greece", "newzealand", "sweden",
                               "finland", "maldives", "mexico", "southkorea", "taiwan"};
  for (int value = 0; value < 15; ++value) {
    expectChanged(std::string("country ") + words[value],
                  "Country changed. Please remember to commit the changes.");
    EXPECT_EQ(global.countryCode, value);
    expectSaid(std::string("country ") + words[value],
               std::string("Country was already set to: ") + words[value]);
  }
}

TEST_F(Settings, CountryThatWasNeverSetIsAChangeEvenIfTheValueIsHeld) {
  global.countryCode = general::CountryCode::UK;
  EXPECT_EQ(run("country uk"), "Country changed. Please remember to commit the changes.\n");
  EXPECT_TRUE(global.__isset.countryCode);
  EXPECT_TRUE(editor.pendingChanges);
}

TEST_F(Settings, CountryOtherIsAChangeWhileUnset) {
  EXPECT_EQ(run("country other"), "Country changed. Please remember to commit the changes.\n");
  EXPECT_TRUE(global.__isset.countryCode);
  EXPECT_EQ(global.countryCode, 0);
}

TEST_F(Settings, TypeSkyitForcesFiveMoreFields) {
  lineup.globalConfig.globalFlag = true;
  lineup.rfConfig.modulation = 2;
  expectChanged("type skyit", "Headend type changed. Please remember to commit the changes.");
  EXPECT_EQ(global.headendType, 1);
  EXPECT_TRUE(global.__isset.countryCode);
  EXPECT_EQ(global.countryCode, 5);
  EXPECT_EQ(global.timeZone, "Europe/Rome");
  EXPECT_FALSE(lineup.globalConfig.globalFlag);
  EXPECT_EQ(lineup.rfConfig.modulation, 0);
  EXPECT_TRUE(lineup.rfConfig.rfProfileFlag);
}

TEST_F(Settings, TypeStandardAfterSkyitOnlySetsTheTypeBack) {
  run("type skyit");
  HeadendConfig expected = editor.config;
  expected.headendGlobalConfig.headendType = 0;
  expectChanged("type standard", "Headend type changed. Please remember to commit the changes.");
  EXPECT_EQ(editor.config, expected);
}

TEST_F(Settings, TypeAlreadyHeldChangesNothing) {
  expectSaid("type standard", "Headend type was already set to: standard");
  run("type skyit");
  global.timeZone = "Europe/Madrid";
  expectSaid("type skyit", "Headend type was already set to: skyit");
}

TEST_F(Settings, QuietSilencesTheTypeCommand) {
  EXPECT_EQ(run("type standard", true), "");
  EXPECT_FALSE(editor.pendingChanges);
  EXPECT_EQ(run("type skyit", true), "");
  EXPECT_TRUE(editor.pendingChanges);
  EXPECT_EQ(run("type x", true), "Please a valid headend type: standard, skyit");
}

TEST_F(Settings, QuietSilencesNothingElse) {
  EXPECT_EQ(run("rfmod qam", true), "Changed RF modulation to qam\n");
  EXPECT_EQ(run("country uk", true), "Country changed. Please remember to commit the changes.\n");
}

TEST_F(Settings, VlanStoresInvertedNumbersAndResetsTheSelectors) {
  lineup.ipEntries.resize(2);
  lineup.ipEntries[0].outputSelector = 5;
  lineup.ipEntries[1].outputSelector = 6;
  expectChanged("vlan 1", "Output port changed. Please remember to commit the changes.");
  EXPECT_EQ(lineup.ipConfig.outputVlan, 1);
  EXPECT_EQ(lineup.ipEntries[0].outputSelector, 0);
  EXPECT_EQ(lineup.ipEntries[1].outputSelector, 0);
  expectSaid("vlan 1", "Output port was already: 1");
  expectChanged("vlan 2", "Output port changed. Please remember to commit the changes.");
  EXPECT_EQ(lineup.ipConfig.outputVlan, 0);
}

TEST_F(Settings, VlanAlreadyHeldKeepsTheSelectors) {
  lineup.ipEntries.resize(1);
  lineup.ipEntries[0].outputSelector = 5;
  expectSaid("vlan 2", "Output port was already: 2");  // the default
}

TEST_F(Settings, StdpVideoIsTheDefault) {
  expectSaid("stdp video", "Decrypt policy is already: video");
}

TEST_F(Settings, StdpChangesThePolicy) {
  expectChanged("stdp sub", "Changed Decrypt policy to: sub");
  EXPECT_EQ(lineup.globalConfig.decryptPolicy, 2);
  expectChanged("stdp ttx", "Changed Decrypt policy to: ttx");
  EXPECT_EQ(lineup.globalConfig.decryptPolicy, 3);
  expectChanged("stdp video", "Changed Decrypt policy to: video");
  EXPECT_EQ(lineup.globalConfig.decryptPolicy, 1);
}

TEST_F(Settings, EachRefusesAMissingOrUnknownWord) {
  struct {
    std::vector<const char*> lines;
    const char* message;
  } const refused[] = {
      {{"rfmod COFDM", "rfmod qamc", "rfmod  qam"},
       "Please give a valid modulation type: cofdm or qam"},
      {{"rfnum"}, "Please give a number: 4 or 6"},
      {{"rfnum 5", "rfnum x", "rfnum 0", "rfnum -4"}, "Please give a valid number: 4 or 6"},
      {{"drm LYNK", "drm on"}, "Please give a valid state: off lynk vsecure"},
      {{"eit Off"}, "Please give a valid mode: off, actual or others"},
      {{"id"}, "Please give a headend id [1-10]"},
      {{"id 0", "id 11", "id abc", "id -1", "id 4294967299"},
       "Headend id must be an integer in the range [1-10]"},
      {{"country", "country Italy", "country "},
       "Please a valid country: spain, france, uk, australia, italy, portugal, greece, newzealand, "
       "sweden, finland, maldives, mexico, southkorea, taiwan, other"},
      {{"type", "type SkyIt"}, "Please a valid headend type: standard, skyit"},
      {{"vlan", "vlan 01", "vlan 3", "vlan 1x"}, "Please give a value: 1: Only TV1, 2: TV1 & TV2"},
      {{"stdp", "stdp all"}, "Please give a valid Decrypt policy: video, sub or ttx"}};
  for (const auto& [lines, message] : refused) {
    for (const char* line : lines) {
      expectRefused(line, message);
    }
  }
}

TEST_F(Settings, FurtherWordsAreIgnored) {
  expectChanged("rfmod qam cofdm", "Changed RF modulation to qam");
}

TEST_F(Settings, AValueSetBackStillLeavesChangesPending) {
  run("rfmod qam");
  run("rfmod cofdm");
  EXPECT_TRUE(editor.pendingChanges);
}

}  // namespace
}  // namespace lineup::test
