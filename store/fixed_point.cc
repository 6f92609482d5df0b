#include "store/fixed_point.h"

#include <cmath>
#include <cstdint>
#include <cstdio>

#include "store/digits.h"

size_t PrintfFixed(double value, int decimals, char (&out)[kFixedTextBytes]) {
  const int length = std::snprintf(out, sizeof out, "%.*f", decimals, value);
  if (length < 0) {
    return 0;
  }
  return static_cast<size_t>(length) < sizeof out ? static_cast<size_t>(length) : sizeof out - 1;
}

size_t ExactFixed(double value, int decimals, char (&out)[kFixedTextBytes]) {
  constexpr int kMantissaBits = 53;
  if (!(value >= 0.0) || std::signbit(value) || value >= 0x1p52 || decimals < 0 ||
      decimals > kMaxFixedDecimals) {
    return 0;
  }
  uint64_t scale = 1;
  for (int i = 0; i < decimals; ++i) scale *= 10;
  // value = mantissa * 2^-shift exactly, with a mantissa below 2^53; times
  // 10^decimals it stays below 2^63.
  uint64_t rounded = 0;
  if (value != 0.0) {
    int exponent = 0;
    const double fraction = std::frexp(value, &exponent);
    const uint64_t mantissa = static_cast<uint64_t>(std::ldexp(fraction, kMantissaBits));
    const int shift = kMantissaBits - exponent;  // at least 1, as value < 2^52
    const uint64_t scaled = mantissa * scale;
    if (shift < 64) {
      rounded = scaled >> shift;
      const uint64_t rest = scaled & ((uint64_t{1} << shift) - 1);
      const uint64_t half = uint64_t{1} << (shift - 1);
      if (rest > half || (rest == half && (rounded & 1) != 0)) ++rounded;
    }
    // With a shift of 64 or more the scaled value is below a half (it is
    // below 2^63 * 2^-64) and rounds to 0.
  }
  // The whole part, then the decimals, from the right.
  char digits[kMaxDecimalBytes + kMaxFixedDecimals + 1];
  char* const end = digits + sizeof digits;
  char* begin = end;
  uint64_t whole = rounded / scale;
  uint64_t part = rounded % scale;
  for (int i = 0; i < decimals; ++i) {
    *--begin = static_cast<char>('0' + part % 10);
    part /= 10;
  }
  if (decimals > 0) *--begin = '.';
  begin = DecimalEndingAt(begin, whole);
  const size_t length = static_cast<size_t>(end - begin);
  for (size_t i = 0; i < length; ++i) out[i] = begin[i];
  out[length] = '\0';
  return length;
}
