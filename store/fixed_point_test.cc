#include "store/fixed_point.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

namespace {

std::string Exact(double value, int decimals) {
  char text[kFixedTextBytes];
  const size_t length = ExactFixed(value, decimals, text);
  EXPECT_EQ(std::string(text, length), length == 0 ? "" : std::string(text)) << value;
  return std::string(text, length);
}

std::string Printf(double value, int decimals) {
  char text[kFixedTextBytes];
  return std::string(text, PrintfFixed(value, decimals, text));
}

// Where the exact text is written at all, it is printf's.
::testing::AssertionResult SameAsPrintf(double value) {
  for (int decimals = 0; decimals <= kMaxFixedDecimals; ++decimals) {
    const std::string exact = Exact(value, decimals), printf = Printf(value, decimals);
    if (exact.empty() || exact != printf) {
      return ::testing::AssertionFailure()
             << value << " with " << decimals << ": \"" << exact << "\", printf " << printf;
    }
  }
  return ::testing::AssertionSuccess();
}

TEST(FixedPoint, SizesOfEventsInGibibytesAndBytes) {
  // Event sizes are whole bytes shown in GiB with three decimals, or whole.
  for (uint64_t bytes = 0; bytes < 3000000000ull; bytes += 999983) {
    ASSERT_TRUE(SameAsPrintf(static_cast<double>(bytes) / 1073741824.0));
    ASSERT_TRUE(SameAsPrintf(static_cast<double>(bytes)));
  }
  for (uint64_t bytes : {0ull, 1ull, 536870912ull, 1610612736ull, 1073741823ull, 4294967295ull,
                         17179869184ull, 9007199254740991ull, 4503599627370495ull}) {
    ASSERT_TRUE(SameAsPrintf(static_cast<double>(bytes) / 1073741824.0)) << bytes;
  }
}

TEST(FixedPoint, TiesRoundToTheEvenDigitAsPrintfDoes) {
  // k / 2^n are exact, so many of them are exact ties at 0 to 3 decimals.
  for (int n = 0; n <= 12; ++n) {
    for (int k = 0; k < 5000; ++k) {
      ASSERT_TRUE(SameAsPrintf(std::ldexp(k, -n)));
    }
  }
  for (double value : {0.5, 1.5, 2.5, 0.125, 0.375, 0.0625, 0.0005, 0.9995, 2.675, 1.0005}) {
    ASSERT_TRUE(SameAsPrintf(value));
  }
}

TEST(FixedPoint, SmallLargeAndOddValues) {
  for (double value :
       {std::numeric_limits<double>::denorm_min(), std::numeric_limits<double>::min(), 1e-300, 4e-4,
        5e-4, 6e-4, 0.1, 0.7, 1.0 / 3.0, 2.0 / 3.0, 123456789.0, 0x1p52 - 1.0, 0x1p52 - 0.5,
        0x1p51 + 0.25, 4503599627370495.5}) {
    ASSERT_TRUE(SameAsPrintf(value));
  }
  uint64_t seed = 12345;
  for (int i = 0; i < 100000; ++i) {
    seed = seed * 6364136223846793005ull + 1442695040888963407ull;
    const double value = std::ldexp(static_cast<double>(seed >> 12), -static_cast<int>(seed % 90));
    ASSERT_TRUE(SameAsPrintf(value));
  }
}

TEST(FixedPoint, LeftToPrintfOutsideItsRange) {
  for (double value :
       {-0.0, -1.0, -0.0004, 0x1p52, 1e300, std::numeric_limits<double>::infinity(),
        -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ("", Exact(value, 3)) << value;
  }
  EXPECT_EQ("", Exact(1.5, 4));
  EXPECT_EQ("", Exact(1.5, -1));
  EXPECT_EQ("-0.000", Printf(-0.0, 3));
}

}  // namespace
