#include "catalogue/cells.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <string>

namespace korveldb {
namespace {

TEST(TextCell, HoldsACopyOfTheTextAsItIs) {
  std::string text = "Télé 1 ";
  const tSqlite3parent cell(text.c_str());
  text = "another";
  EXPECT_EQ(cell.asString(), "Télé 1 ");
  EXPECT_EQ(tSqlite3parent("").asString(), "");
  EXPECT_EQ(tSqlite3parent(nullptr).asString(), "");  // an SQL NULL
}

TEST(TextCell, CopiesOutliveTheOriginal) {
  auto original = std::make_unique<tSqlite3parent>("a text that is longer than most of them are");
  const tSqlite3parent copy(*original);
  original.reset();
  EXPECT_EQ(copy.asString(), "a text that is longer than most of them are");
}

TEST(TextCell, CopyOfSqlNullIsSqlNull) {
  auto null = std::make_unique<tSqlite3int>(nullptr);
  const tSqlite3int copy(*null);
  null.reset();
  EXPECT_EQ(copy.asString(), "");
  EXPECT_EQ(copy.asInt(), 0);
}

TEST(TextCell, LiesInTheMemoryItIsGiven) {
  std::array<std::byte, 16> bytes;
  std::pmr::monotonic_buffer_resource memory(bytes.data(), bytes.size(),
                                             std::pmr::null_memory_resource());
  const tSqlite3parent cell("fifteen letters", &memory);
  EXPECT_EQ(cell.asString(), "fifteen letters");
  EXPECT_THROW(tSqlite3parent("no room", &memory), std::bad_alloc);
}

TEST(TextCell, CopyOfACellElsewhereLiesOnTheHeap) {
  std::unique_ptr<tSqlite3parent> copy;
  {
    std::pmr::monotonic_buffer_resource memory;
    const tSqlite3parent cell("short-lived", &memory);
    copy = std::make_unique<tSqlite3parent>(cell);
  }
  EXPECT_EQ(copy->asString(), "short-lived");
}

TEST(IntegerCell, ReadsTheNumberThatTheTextBeginsWithCutTo32Bits) {
  const struct {
    const char* text;
    long number;
  } cases[] = {{"11778", 11778},
               {"-50", -50},
               {"12abc", 12},
               {"  7", 7},
               {"3.9", 3},
               {"abc", 0},
               {"", 0},
               {"99999999999999999999", std::numeric_limits<long>::max()},
               {"-99999999999999999999", std::numeric_limits<long>::min()}};
  for (const auto& each : cases) {
    EXPECT_EQ(tSqlite3int(each.text).asInt(), static_cast<int32_t>(each.number)) << each.text;
    EXPECT_EQ(tSqlite3int(each.text).asString(), each.text);
  }
}

TEST(IntegerCell, IsFreedAsACellOfAnyKind) {
  const std::unique_ptr<tSqlite3parent> cell = std::make_unique<tSqlite3int>("101");
  EXPECT_EQ(cell->asString(), "101");
}

}  // namespace
}  // namespace korveldb
