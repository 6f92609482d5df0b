#include "store/digits.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cstdint>
#include <string>

namespace {

std::string Decimal(uint64_t value) {
  char digits[kMaxDecimalBytes];
  char* const end = digits + sizeof digits;
  const char* const begin = DecimalEndingAt(end, value);
  return std::string(begin, static_cast<size_t>(end - begin));
}

std::string ToChars(uint64_t value) {
  char digits[kMaxDecimalBytes];
  const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, value);
  return std::string(digits, end.ptr);
}

TEST(Digits, TwoDigitsOfEveryValueBelowAHundred) {
  for (unsigned value = 0; value < 100; ++value) {
    char out[2];
    EXPECT_EQ(out + 2, TwoDigits(out, value));
    EXPECT_EQ(ToChars(value / 10) + ToChars(value % 10), std::string(out, 2)) << value;
  }
}

TEST(Digits, AsToCharsWritesThemAtTheLimitsAndTheirNeighbours) {
  for (uint64_t value :
       {uint64_t{0}, uint64_t{UINT32_MAX}, uint64_t{INT32_MAX}, uint64_t{INT64_MAX}, UINT64_MAX}) {
    for (uint64_t near = value - 2; near != value + 3; ++near) {
      EXPECT_EQ(ToChars(near), Decimal(near)) << near;
    }
  }
}

TEST(Digits, AsToCharsWritesThemAtEveryNumberOfDigits) {
  for (uint64_t power = 1; power <= UINT64_MAX / 10; power *= 10) {
    for (uint64_t value : {power - 1, power, power + 1, power * 9 + power - 1, power * 5 + 7}) {
      EXPECT_EQ(ToChars(value), Decimal(value)) << value;
    }
  }
  for (uint64_t value = 0; value < 100000; value += 7) {
    ASSERT_EQ(ToChars(value), Decimal(value)) << value;
  }
}

}  // namespace
