#include "store/table_row.h"

#include <charconv>
#include <cstdio>

TableRow& TableRow::Unsigned(uint64_t value, int width) {
  char digits[24];
  const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, value);
  return Right(std::string_view(digits, static_cast<size_t>(end.ptr - digits)), width);
}

TableRow& TableRow::Signed(int64_t value, int width) {
  char digits[24];
  const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, value);
  return Right(std::string_view(digits, static_cast<size_t>(end.ptr - digits)), width);
}

TableRow& TableRow::Fixed(double value, int decimals, int width) {
  // The stream itself formats a double in fixed notation with "%.*f".
  char digits[400];
  const int length = std::snprintf(digits, sizeof digits, "%.*f", decimals, value);
  if (length < 0) {
    return *this;
  }
  const size_t size =
      static_cast<size_t>(length) < sizeof digits ? static_cast<size_t>(length) : sizeof digits - 1;
  return Right(std::string_view(digits, size), width);
}
