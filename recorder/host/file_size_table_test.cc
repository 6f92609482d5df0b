#include "recorder/host/file_size_table.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

namespace {

// The sizes `table` holds for `numbers`, -1 where it holds none (and then
// leaves the size alone).
std::vector<int64_t> Sizes(const FileSizeTable& table, const std::vector<int>& numbers) {
  std::vector<int64_t> sizes;
  for (int number : numbers) {
    uint32_t size = 7;
    const bool found = table.Find(number, size);
    EXPECT_TRUE(found || size == 7) << number;
    sizes.push_back(found ? int64_t{size} : -1);
  }
  return sizes;
}

// A table with `size` set for each number in turn.
FileSizeTable Table(const std::vector<std::pair<int, uint32_t>>& sizes) {
  FileSizeTable table;
  for (const auto& [number, size] : sizes) table.Set(number, size);
  return table;
}

TEST(FileSizeTable, FindsWhatWasSetAndNothingElse) {
  const FileSizeTable table = Table({{1, 98566144}, {2, 0}, {3, 4294967295u}});
  EXPECT_EQ((std::vector<int64_t>{98566144, 0, 4294967295, -1, -1, -1, -1}),
            Sizes(table, {1, 2, 3, 0, 4, -1, INT_MAX}));
}

TEST(FileSizeTable, LaterSizeReplacesEarlierOne) {
  const FileSizeTable table = Table({{5, 10}, {5, 20}, {-5, 30}, {-5, 40}});
  EXPECT_EQ((std::vector<int64_t>{20, 40}), Sizes(table, {5, -5}));
}

TEST(FileSizeTable, DenseNumbersTakeSlotsOnly) {
  FileSizeTable table;
  for (int number = 1; number <= 200000; ++number) table.Set(number, number * 3u);
  EXPECT_GE(table.SlotCount(), 200001u);
  EXPECT_LT(table.SlotCount(), 202000u);
  EXPECT_EQ(table.MapCount(), 0u);
  EXPECT_EQ(std::vector<int64_t>{123457 * 3}, Sizes(table, {123457}));
}

TEST(FileSizeTable, NegativeAndFarNumbersFallBackToTheMap) {
  const FileSizeTable table = Table({{INT_MIN, 1}, {-1, 2}, {INT_MAX, 3}, {2000000000, 4}, {1, 5}});
  EXPECT_EQ(table.MapCount(), 4u);
  EXPECT_LE(table.SlotCount(), 1024u);
  EXPECT_EQ((std::vector<int64_t>{1, 2, 3, 4, 5}),
            Sizes(table, {INT_MIN, -1, INT_MAX, 2000000000, 1}));
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
  EXPECT_EQ(std::vector<int64_t>{77}, Sizes(table, {10000}));
  table.Set(10000, 88);
  EXPECT_EQ(table.MapCount(), 0u);
  EXPECT_EQ(std::vector<int64_t>{88}, Sizes(table, {10000}));
}

TEST(FileSizeTable, NumbersInAnyOrderAreAllFound) {
  FileSizeTable table;
  std::vector<int> numbers;
  std::vector<int64_t> sizes;
  for (int number = 30000; number >= -10; --number) {
    table.Set(number, number + 100u);
    numbers.push_back(number);
    sizes.push_back(number + 100);
  }
  EXPECT_EQ(sizes, Sizes(table, numbers));
}

}  // namespace
