#include "store/table_row.h"

#include "store/digits.h"
#include "store/fixed_point.h"

void TableRow::Grow(size_t bytes) {
  std::string larger(2 * capacity_ + bytes, ' ');
  larger.replace(0, size_, data_, size_);
  large_.swap(larger);
  data_ = &large_[0];
  capacity_ = large_.size();
}

TableRow& TableRow::Unsigned(uint64_t value, int width) {
  char digits[kMaxDecimalBytes];
  char* const end = digits + sizeof digits;
  const char* const begin = DecimalEndingAt(end, value);
  return Right(std::string_view(begin, static_cast<size_t>(end - begin)), width);
}

TableRow& TableRow::Signed(int64_t value, int width) {
  char digits[kMaxDecimalBytes];
  char* const end = digits + sizeof digits;
  // The magnitude of the most negative value only fits unsigned.
  const uint64_t magnitude =
      value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
  char* begin = DecimalEndingAt(end, magnitude);
  if (value < 0) *--begin = '-';
  return Right(std::string_view(begin, static_cast<size_t>(end - begin)), width);
}

TableRow& TableRow::Fixed(double value, int decimals, int width) {
  // The stream itself formats a double in fixed notation with "%.*f".
  char digits[kFixedTextBytes];
  size_t length = ExactFixed(value, decimals, digits);
  if (length == 0) {
    length = PrintfFixed(value, decimals, digits);
  }
  if (length == 0) {
    return *this;
  }
  return Right(std::string_view(digits, length), width);
}
