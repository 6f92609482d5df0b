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
  // The buffer is written before it is read: Line() shows only what was put in.
  // cppcheck-suppress uninitMemberVar
  TableRow() = default;
  TableRow(const TableRow&) = delete;
  TableRow& operator=(const TableRow&) = delete;

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

  std::string_view Line() const { return std::string_view(data_, size_); }

  // Empties the line for the fields that follow a part already written.
  void Clear() { size_ = 0; }

 private:
  // Longer than any row of the tool's tables with values of ordinary widths.
  static constexpr size_t kUsualBytes = 256;

  // The next `bytes` bytes of the line, to be written by the caller.
  char* Room(size_t bytes) {
    if (capacity_ - size_ < bytes) Grow(bytes);
    char* at = data_ + size_;
    size_ += bytes;
    return at;
  }
  // Moves the line to the heap, with room for `bytes` more.
  void Grow(size_t bytes);
  void Pad(size_t length, int width) {
    if (width > 0 && length < static_cast<size_t>(width)) {
      const size_t blanks = static_cast<size_t>(width) - length;
      std::memset(Room(blanks), ' ', blanks);
    }
  }

  // A row of a usual width stays on the stack: a row is built for every line
  // of a listing, and allocating it costs as much as filling it.
  char usual_[kUsualBytes];
  std::string large_;  // the line, when it outgrew usual_
  char* data_ = usual_;
  size_t capacity_ = kUsualBytes;
  size_t size_ = 0;  // bytes of the line written so far
};

#endif  // STORE_TABLE_ROW_H_
