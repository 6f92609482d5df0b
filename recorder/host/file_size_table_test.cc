#include "recorder/host/file_size_table.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

TEST(FileSizeTable, FindsWhatWasSetAndNothingElse) {
  FileSizeTable table;
  table.Set(1, 98566144);
  table.Set(2, 0);
  table.Set(3, 4294967295u);
  uint32_t size = 7;
  EXPECT_TRUE(table.Find(1, size));
  EXPECT_EQ(size, 98566144u);
  EXPECT_TRUE(table.Find(2, size));
  EXPECT_EQ(size, 0u);
  EXPECT_TRUE(table.Find(3, size));
  EXPECT_EQ(size, 4294967295u);
  size = 7;
  EXPECT_FALSE(table.Find(0, size));
  EXPECT_FALSE(table.Find(4, size));
  EXPECT_FALSE(table.Find(-1, size));
  EXPECT_FALSE(table.Find(INT_MAX, size));
  EXPECT_EQ(size, 7u);
}

TEST(FileSizeTable, LaterSizeReplacesEarlierOne) {
  FileSizeTable table;
  table.Set(5, 10);
  table.Set(5, 20);
  table.Set(-5, 30);
  table.Set(-5, 40);
  uint32_t size = 0;
  EXPECT_TRUE(table.Find(5, size));
  EXPECT_EQ(size, 20u);
  EXPECT_TRUE(table.Find(-5, size));
  EXPECT_EQ(size, 40u);
}

TEST(FileSizeTable, DenseNumbersTakeSlotsOnly) {
  FileSizeTable table;
  for (int number = 1; number <= 200000; ++number) {
    table.Set(number, static_cast<uint32_t>(number) * 3);
  }
  EXPECT_GE(table.SlotCount(), 200001u);
  EXPECT_LT(table.SlotCount(), 202000u);
  EXPECT_EQ(table.MapCount(), 0u);
  uint32_t size = 0;
  EXPECT_TRUE(table.Find(123457, size));
  EXPECT_EQ(size, 123457u * 3);
}

TEST(FileSizeTable, NegativeAndFarNumbersFallBackToTheMap) {
  FileSizeTable table;
  table.Set(INT_MIN, 1);
  table.Set(-1, 2);
  table.Set(INT_MAX, 3);
  table.Set(2000000000, 4);
  table.Set(1, 5);
  EXPECT_EQ(table.MapCount(), 4u);
  EXPECT_LE(table.SlotCount(), 1024u);
  uint32_t size = 0;
  EXPECT_TRUE(table.Find(INT_MIN, size));
  EXPECT_EQ(size, 1u);
  EXPECT_TRUE(table.Find(-1, size));
  EXPECT_EQ(size, 2u);
  EXPECT_TRUE(table.Find(INT_MAX, size));
  EXPECT_EQ(size, 3u);
  EXPECT_TRUE(table.Find(2000000000, size));
  EXPECT_EQ(size, 4u);
  EXPECT_TRUE(table.Find(1, size));
  EXPECT_EQ(size, 5u);
}

// A number first kept in the map, because the slots did not reach it yet,
// is still found once they do, and moves to its slot when set again.
TEST(FileSizeTable, NumberReachedLaterBySlotsKeepsItsSize) {
  FileSizeTable table;
  table.Set(10000, 77);
  EXPECT_EQ(table.MapCount(), 1u);
  for (int number = 1; number <= 20000; ++number) {
    if (number != 10000) table.Set(number, 1);
  }
  EXPECT_GT(table.SlotCount(), 10000u);
  uint32_t size = 0;
  EXPECT_TRUE(table.Find(10000, size));
  EXPECT_EQ(size, 77u);
  table.Set(10000, 88);
  EXPECT_EQ(table.MapCount(), 0u);
  EXPECT_TRUE(table.Find(10000, size));
  EXPECT_EQ(size, 88u);
}

TEST(FileSizeTable, NumbersInAnyOrderAreAllFound) {
  FileSizeTable table;
  for (int number = 30000; number >= -10; --number) {
    table.Set(number, static_cast<uint32_t>(number + 100));
  }
  for (int number = -10; number <= 30000; ++number) {
    uint32_t size = 0;
    ASSERT_TRUE(table.Find(number, size)) << number;
    EXPECT_EQ(size, static_cast<uint32_t>(number + 100));
  }
}

}  // namespace
