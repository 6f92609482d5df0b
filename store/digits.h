// Decimal digits written two at a time from a table, with one division by
// 100 (which the compiler turns into a multiplication) for every two digits
// instead of a division for each.
#ifndef STORE_DIGITS_H_
#define STORE_DIGITS_H_

#include <cstdint>

// The two digits of `value` (0 to 99) at `out`; returns the end.
inline char* TwoDigits(char* out, unsigned value) {
  static const char kPairs[] =
      "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
      "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
      "8081828384858687888990919293949596979899";
  out[0] = kPairs[2 * value];
  out[1] = kPairs[2 * value + 1];
  return out + 2;
}

// Room enough for any 64-bit number and its sign.
constexpr int kMaxDecimalBytes = 20;

// Writes `value` in decimal so that it ends just before `end`, as std::to_chars
// writes it; returns where it begins.
inline char* DecimalEndingAt(char* end, uint64_t value) {
  while (value >= 100) {
    end -= 2;
    TwoDigits(end, static_cast<unsigned>(value % 100));
    value /= 100;
  }
  if (value >= 10) {
    end -= 2;
    TwoDigits(end, static_cast<unsigned>(value));
  } else {
    *--end = static_cast<char>('0' + value);
  }
  return end;
}

#endif  // STORE_DIGITS_H_
