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

TEST(TextCell, KeepsTheTextAsItIs) {
  EXPECT_EQ(tSqlite3parent("Télé 1 ").asString(), "Télé 1 ");
  EXPECT_EQ(tSqlite3parent("").asString(), "");
}

TEST(TextCell, OfSqlNullIsEmpty) {
  EXPECT_EQ(tSqlite3parent(nullptr).asString(), "");
}

TEST(TextCell, HoldsACopyOfItsOwn) {
  std::string text = "first";
  const tSqlite3parent cell(text.c_str());
  text = "other";
  EXPECT_EQ(cell.asString(), "first");
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

TEST(IntegerCell, ReadsTheNumberThatTheTextBeginsWith) {
  EXPECT_EQ(tSqlite3int("11778").asInt(), 11778);
  EXPECT_EQ(tSqlite3int("-50").asInt(), -50);
  EXPECT_EQ(tSqlite3int("12abc").asInt(), 12);
  EXPECT_EQ(tSqlite3int("  7").asInt(), 7);
  EXPECT_EQ(tSqlite3int("3.9").asInt(), 3);
}

TEST(IntegerCell, WithoutANumberIsZero) {
  EXPECT_EQ(tSqlite3int("abc").asInt(), 0);
  EXPECT_EQ(tSqlite3int("").asInt(), 0);
  EXPECT_EQ(tSqlite3int(nullptr).asInt(), 0);
}

TEST(IntegerCell, OutOfRangeIsClampedToLongAndCutTo32Bits) {
  EXPECT_EQ(tSqlite3int("99999999999999999999").asInt(),
            static_cast<int32_t>(std::numeric_limits<long>::max()));
  EXPECT_EQ(tSqlite3int("-99999999999999999999").asInt(),
            static_cast<int32_t>(std::numeric_limits<long>::min()));
}

TEST(IntegerCell, KeepsTheTextToo) {
  EXPECT_EQ(tSqlite3int("12abc").asString(), "12abc");
  EXPECT_EQ(tSqlite3int(nullptr).asString(), "");
}

TEST(IntegerCell, IsFreedAsACellOfAnyKind) {
  const std::unique_ptr<tSqlite3parent> cell = std::make_unique<tSqlite3int>("101");
  EXPECT_EQ(cell->asString(), "101");
}

}  // namespace
}  // namespace korveldb
