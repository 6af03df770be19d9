#include "app/options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace lineup::test {
namespace {

/// Parses as the shell would hand the words over.
CommandLineOptions parse(std::vector<std::string> words) {
  words.insert(words.begin(), "console");
  std::vector<char*> argv;
  argv.reserve(words.size() + 1);
  for (std::string& word : words) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);
  return parseOptions(static_cast<int>(words.size()), argv.data());
}

/// The message of the range error that the words cause.
std::string rangeError(const std::vector<std::string>& words) {
  try {
    parse(words);
  } catch (const std::string& message) {
    return message;
  }
  return "no error";
}

TEST(Options, DefaultsWithoutWords) {
  const CommandLineOptions options = parse({});
  EXPECT_FALSE(options.console);
  EXPECT_EQ(options.level, 5);
  EXPECT_FALSE(options.version);
  EXPECT_FALSE(options.help);
  EXPECT_EQ(options.saveFile, "");
  EXPECT_EQ(options.restoreFile, "");
  EXPECT_EQ(options.headendType, "");
  EXPECT_EQ(options.programName, "console");
  EXPECT_EQ(options.firstOperand, 1);
}

TEST(Options, ShortOptionsAreTaken) {
  const CommandLineOptions options =
      parse({"-c", "-l", "7", "-v", "-s", "a", "-r", "b", "-t", "skyit"});
  EXPECT_TRUE(options.console);
  EXPECT_EQ(options.level, 7);
  EXPECT_TRUE(options.version);
  EXPECT_EQ(options.saveFile, "a");
  EXPECT_EQ(options.restoreFile, "b");
  EXPECT_EQ(options.headendType, "skyit");
}

TEST(Options, LongOptionsAreTakenWithEitherKindOfArgument) {
  const CommandLineOptions options = parse(
      {"--console", "--level=3", "--version", "--save=a", "--restore", "b", "--type=standard"});
  EXPECT_TRUE(options.console);
  EXPECT_EQ(options.level, 3);
  EXPECT_TRUE(options.version);
  EXPECT_EQ(options.saveFile, "a");
  EXPECT_EQ(options.restoreFile, "b");
  EXPECT_EQ(options.headendType, "standard");
}

TEST(Options, TheLastOccurrenceWins) {
  EXPECT_EQ(parse({"-s", "a", "-s", "b"}).saveFile, "b");
  EXPECT_EQ(parse({"-l", "4", "-l", "6"}).level, 6);
}

TEST(Options, OperandsAreKeptAsAnIndexAndIgnored) {
  const CommandLineOptions options = parse({"-c", "operand", "-t", "skyit"});
  EXPECT_EQ(options.headendType, "skyit");
  EXPECT_EQ(options.firstOperand, 4);
}

TEST(Options, ParsingStartsAfreshEachTime) {
  EXPECT_EQ(parse({"-s", "a"}).saveFile, "a");
  EXPECT_EQ(parse({"-s", "b"}).saveFile, "b");
}

TEST(Options, LevelBelowThreeIsARangeError) {
  EXPECT_EQ(rangeError({"-l", "2"}), "parameter range error: level must be >= 3");
  EXPECT_EQ(rangeError({"-l", "-4"}), "parameter range error: level must be >= 3");
}

TEST(Options, LevelAboveSevenIsARangeError) {
  EXPECT_EQ(rangeError({"-l", "8"}), "parameter range error: level must be <= 7");
  EXPECT_EQ(rangeError({"-v", "-l", "9"}), "parameter range error: level must be <= 7");
}

TEST(Options, LevelIgnoresTrailingJunk) {
  EXPECT_EQ(parse({"-l", "7x"}).level, 7);
}

TEST(Options, LevelThatIsNoNumberFailsTheLowerBound) {
  EXPECT_EQ(rangeError({"-l", "abc"}), "parameter range error: level must be >= 3");
}

TEST(OptionsDeathTest, UnknownOptionPrintsTheHintAndExitsWithOne) {
  EXPECT_EXIT(parse({"-x"}), testing::ExitedWithCode(1),
              "console: invalid option -- 'x'\nTry `console --help' for more information.\n");
  EXPECT_EXIT(parse({"--nothing"}), testing::ExitedWithCode(1),
              "unrecognized option '--nothing'\nTry `console --help' for more information.\n");
}

TEST(OptionsDeathTest, MissingArgumentPrintsTheHintAndExitsWithOne) {
  for (const std::string option : {"l", "s", "r", "t"}) {
    EXPECT_EXIT(parse({"-" + option}), testing::ExitedWithCode(1),
                "console: option requires an argument -- '" + option +
                    "'\nTry `console --help' for more information.\n");
  }
}

TEST(OptionsDeathTest, HelpExitsDuringParsing) {
  EXPECT_EXIT(parse({"-h", "-x"}), testing::ExitedWithCode(0), "^$");
  EXPECT_EXIT(parse({"-v", "-h"}), testing::ExitedWithCode(0), "^$");
  EXPECT_EXIT(parse({"-h", "-l", "9"}), testing::ExitedWithCode(0), "^$");
}

}  // namespace
}  // namespace lineup::test
