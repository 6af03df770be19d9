// Services by words in their names, in a catalogue in the controller's place.

#include "catalogue/word_search.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "model/headend_places.h"
#include "tests/support/catalogue_file.h"
#include "tests/support/file_content.h"

namespace lineup::test {
namespace {

using Words = std::vector<std::string>;

class WordSearch : public testing::Test {
 protected:
  void add(const std::string& name) { file.insert(kSat, {{15, "17"}, {16, name}}); }

  static Words namesWith(const Words& words) {
    Words names;
    for (const FoundService& service : findServicesByWords(words)) {
      names.push_back(service.name);
    }
    return names;
  }

  CatalogueFile file{kCataloguePath};
};

TEST_F(WordSearch, FindsNamesThatHoldEveryWordAsItIs) {
  const std::string velaria = "Velaria News";
  const std::string big = "Big \"News\" 50%";
  const std::string local = "O'News_1";
  for (const std::string& name : {velaria, big, local}) {
    add(name);
  }
  EXPECT_EQ(namesWith({}), (Words{velaria, big, local}));
  EXPECT_EQ(namesWith({"NEWS"}), (Words{velaria, big, local}));
  for (const Words& words : {Words{"news", "velaria"}, Words{"VELARIA", "ews"}, Words{"ia ne"}}) {
    EXPECT_EQ(namesWith(words), Words{velaria}) << words[0];
  }
  EXPECT_EQ(namesWith({"\"News\" 50%"}), Words{big});
  EXPECT_EQ(namesWith({"o'news_"}), Words{local});
  for (const char* const other : {"ne_s", "n%s", "\\", "'; DROP TABLE availableSatService; --"}) {
    EXPECT_EQ(namesWith({other}), Words{}) << other;
  }
}

TEST_F(WordSearch, TakesCapitalAndSmallLettersOfEveryAlphabetForTheSame) {
  const std::string name = "Canal Única ÑU Ελλάδα";
  add(name);
  add("Latin-1 \xcd");
  for (const char* const word : {"Única", "úNICA", "ñu", "ΕΛΛ", "Ñ", "CANAL ú"}) {
    EXPECT_EQ(namesWith({word}), Words{name}) << word;
  }
  EXPECT_EQ(namesWith({"unica"}), Words{});
  EXPECT_EQ(namesWith({"\xcd", "LATIN"}), Words{"Latin-1 \xcd"});
  EXPECT_EQ(namesWith({"\xed"}), Words{});  // bytes that are no letters
}

TEST_F(WordSearch, TakesLongWordsAndManyOfThem) {
  add("Velaria News");
  EXPECT_EQ(namesWith({std::string(100'000, 'n')}), Words{});
  EXPECT_EQ(namesWith(Words(20'000, "velaria")), Words{"Velaria News"});
}

TEST_F(WordSearch, SaysWhyTheCatalogueCannotBeRead) {
  const auto expectFailure = [](const std::string& reason) {
    try {
      findServicesByWords({"a"});
      ADD_FAILURE() << "read, but " << reason;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(error.what(), std::string(kCataloguePath) + ": " + reason);
    }
  };
  file.execute("DROP TABLE availableTdtService");
  expectFailure("no such table: availableTdtService");
  std::filesystem::remove(kCataloguePath);
  expectFailure("unable to open database file");
  EXPECT_FALSE(std::filesystem::exists(kCataloguePath));
  writeFile(kCataloguePath, std::string(5000, 'x'));
  expectFailure("file is not a database");
}

}  // namespace
}  // namespace lineup::test
