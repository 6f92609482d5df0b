// One line of a fixed-width table, put together in memory and then written to
// the stream with a single insertion. Each field is padded with blanks to its
// width exactly as std::setw pads it (by bytes; a wider value is written whole
// and pushes the rest of the line right), and numbers are written as the
// stream writes them in the classic locale. A row built from twenty small
// insertions into std::cout costs twenty locked writes into its buffer.
#ifndef STORE_TABLE_ROW_H_
#define STORE_TABLE_ROW_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

class TableRow {
 public:
  TableRow() : line_(kUsualBytes, ' ') {}

  // Text with no field width.
  TableRow& Add(std::string_view text) {
    text.copy(Room(text.size()), text.size());
    return *this;
  }
  TableRow& Right(std::string_view text, int width) {
    Pad(text.size(), width);
    return Add(text);
  }
  TableRow& Left(std::string_view text, int width) {
    Add(text);
    Pad(text.size(), width);
    return *this;
  }
  TableRow& Unsigned(uint64_t value, int width);
  TableRow& Signed(int64_t value, int width);
  // Fixed-point with `decimals` digits after the point (std::fixed with
  // std::setprecision(decimals)), right-aligned in `width`.
  TableRow& Fixed(double value, int decimals, int width);

  std::string_view Line() const { return std::string_view(line_.data(), size_); }

  // Empties the line for the fields that follow a part already written.
  void Clear() { size_ = 0; }

 private:
  // Longer than any row of the tool's tables with values of ordinary widths.
  static constexpr size_t kUsualBytes = 256;

  // The next `bytes` bytes of the line, to be written by the caller.
  char* Room(size_t bytes) {
    if (line_.size() - size_ < bytes) line_.resize(2 * line_.size() + bytes, ' ');
    char* at = &line_[size_];
    size_ += bytes;
    return at;
  }
  void Pad(size_t length, int width) {
    if (width > 0 && length < static_cast<size_t>(width)) {
      const size_t blanks = static_cast<size_t>(width) - length;
      std::memset(Room(blanks), ' ', blanks);
    }
  }

  std::string line_;  // the row in its first size_ bytes
  size_t size_ = 0;
};

#endif  // STORE_TABLE_ROW_H_
