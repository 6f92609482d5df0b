#include "store/table_row.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <iomanip>
#include <sstream>
#include <string>

namespace {

// What inserting `value` into a stream after `format` gives, the yardstick of a row.
template <typename Value, typename... Format>
std::string Streamed(const Value& value, const Format&... format) {
  std::ostringstream out;
  (out << ... << format) << value;
  return out.str();
}

TEST(TableRow, TextIsPaddedByBytesAndNeverCut) {
  for (const char* text : {"", "a", "Free", "Recording", "R\xc3\xa9id", "abcdefghijkl"}) {
    for (int width : {0, 1, 4, 8, 10}) {
      EXPECT_EQ(TableRow().Right(text, width).Line(), Streamed(text, std::setw(width))) << width;
      EXPECT_EQ(TableRow().Left(text, width).Line(), Streamed(text, std::left, std::setw(width)))
          << text << width;
    }
  }
}

TEST(TableRow, NumbersAsTheStreamWritesThem) {
  for (uint64_t value : {0ull, 7ull, 65535ull, 4294967295ull, 18446744073709551615ull}) {
    for (int width : {0, 3, 6, 10, 25}) {
      EXPECT_EQ(TableRow().Unsigned(value, width).Line(), Streamed(value, std::setw(width)));
    }
  }
  for (int64_t value : {int64_t{0}, int64_t{-1}, int64_t{42}, int64_t{-2147483648}, INT64_MIN}) {
    for (int width : {0, 2, 5, 12}) {
      EXPECT_EQ(TableRow().Signed(value, width).Line(), Streamed(value, std::setw(width)));
    }
  }
}

TEST(TableRow, FixedPointAsTheStreamWritesIt) {
  for (double value : {0.0, 1.5, 0.0625, 0.0005, 0.9995, 2.675, 1610612736.0 / 1073741824.0,
                       17179869184.0 / 1073741824.0, 18446744073709551615.0, 123456789.0}) {
    for (int decimals : {0, 2, 3}) {
      for (int width : {0, 5, 11}) {
        EXPECT_EQ(TableRow().Fixed(value, decimals, width).Line(),
                  Streamed(value, std::fixed, std::setprecision(decimals), std::setw(width)))
            << value << " " << decimals << " " << width;
      }
    }
  }
}

TEST(TableRow, FieldsFollowEachOther) {
  TableRow row;
  row.Unsigned(12, 6).Add("  ").Left("G1", 4).Add("  ").Right("Free", 8).Add("  ");
  EXPECT_EQ(row.Line(), "    12  G1        Free  ");
}

TEST(TableRow, LinesWiderThanUsualGrowAndKeepWhatCameBefore) {
  // Fields of every kind until the line has outgrown its usual room a few times.
  TableRow row;
  std::ostringstream streamed;
  for (int i = 0; i < 300; ++i) {
    const std::string text(static_cast<size_t>(i % 37), static_cast<char>('a' + i % 26));
    row.Left(text, 20).Add("  ").Unsigned(static_cast<uint64_t>(i) * 7919, 9);
    row.Signed(-i, 4).Fixed(i / 8.0, 3, 8).Right(text, 40);
    streamed << std::left << std::setw(20) << text << "  " << std::right << std::setw(9)
             << static_cast<uint64_t>(i) * 7919 << std::setw(4) << -i << std::fixed
             << std::setprecision(3) << std::setw(8) << i / 8.0 << std::setw(40) << text;
    ASSERT_EQ(row.Line(), streamed.str()) << i;
  }
  // A text far wider than the room the line has at the time.
  const std::string wide(100000, 'w');
  row.Right(wide, 5);
  streamed << wide;
  EXPECT_EQ(row.Line(), streamed.str());
  row.Clear();
  EXPECT_EQ(row.Line(), "");
  row.Add("after");
  EXPECT_EQ(row.Line(), "after");
}

}  // namespace
