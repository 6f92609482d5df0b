// Fixed-point texts of doubles ("%.*f"), as the stream writes them. printf
// takes a double apart digit by digit in arbitrary precision, more than the
// rest of an event row costs; a value that the row shows (a size in GiB or
// bytes) is written exactly in 64-bit integer arithmetic instead.
#ifndef STORE_FIXED_POINT_H_
#define STORE_FIXED_POINT_H_

#include <cstddef>

// Room for "%.*f" of any double with up to kMaxFixedDecimals decimals.
constexpr size_t kFixedTextBytes = 400;
constexpr int kMaxFixedDecimals = 3;

// snprintf's text of `value` with `decimals` digits after the point; its
// length, or 0 when snprintf fails.
size_t PrintfFixed(double value, int decimals, char (&out)[kFixedTextBytes]);

// The same text, when `value` is at least 0 (not -0.0), below 2^52, and
// `decimals` is 0 to kMaxFixedDecimals: rounded to the nearest, a tie to the
// even digit, as printf rounds. Otherwise (and then it writes nothing)
// returns 0.
size_t ExactFixed(double value, int decimals, char (&out)[kFixedTextBytes]);

#endif  // STORE_FIXED_POINT_H_
