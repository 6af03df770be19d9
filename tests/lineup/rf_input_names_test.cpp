#include "lineup/rf_input_names.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace lineup::test {
namespace {

using korvel::thrift::general::RFInputId;

TEST(RFInputNames, EveryInputHasOne) {
  const std::vector<std::string> names = {"TDT1", "TDT2", "SAT1", "SAT2", "SAT3",
                                          "SAT4", "SAT5", "SAT6", "SAT7", "SAT8"};
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(rfInputName(static_cast<RFInputId::type>(i + 1)), names[i]);
  }
}

TEST(RFInputNames, GroupsAndOtherValuesAreUnknown) {
  for (const int id : {240, 243, 0, 11, 255}) {
    EXPECT_EQ(rfInputName(static_cast<RFInputId::type>(id)), "UNKNOWN");
  }
}

TEST(RFInputNames, AreReadInAnyCaseAndUpperCasedInPlace) {
  const struct {
    const char* typed;
    const char* upperCase;
    int id;
  } cases[] = {{"SAT1", "SAT1", 3},       {"sat2", "SAT2", 4},  {"Sat3", "SAT3", 5},
               {"sAT4", "SAT4", 6},       {"SAT5", "SAT5", 7},  {"SAT6", "SAT6", 8},
               {"SAT7", "SAT7", 9},       {"SAT8", "SAT8", 10}, {"tdtall", "TDTALL", 240},
               {"SatAll", "SATALL", 243}, {"tdt1", "TDT1", 1},  {"TDT2", "TDT2", 2}};
  for (const auto& each : cases) {
    std::string name = each.typed;
    RFInputId::type id{};
    EXPECT_TRUE(parseRFInputName(name, id)) << each.typed;
    EXPECT_EQ(id, each.id);
    EXPECT_EQ(name, each.upperCase);
  }
}

TEST(RFInputNames, OtherTextsAreNotRecognised) {
  for (const char* typed : {"SAT9", "SAT0", "TDT", "ALL", "TDT3", "SAT10", " SAT1", "SAT1 ",
                            "SAT1\t", "", "1", "UNKNOWN", "s\xC3\xA1t1", "\xFF"}) {
    std::string name = typed;
    RFInputId::type id = RFInputId::SAT7;
    EXPECT_FALSE(parseRFInputName(name, id)) << typed;
    EXPECT_EQ(id, RFInputId::SAT7);
  }
}

}  // namespace
}  // namespace lineup::test
