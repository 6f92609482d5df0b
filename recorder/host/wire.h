// Byte-level encoding of the host IPC: little-endian fixed-width integers and
// length-prefixed strings. Reading never runs past the end of the bytes: every
// read reports whether the value was there, and a failed read stays failed.
#ifndef RECORDER_HOST_WIRE_H_
#define RECORDER_HOST_WIRE_H_

#include <cstddef>
#include <cstdint>
#include <string>

namespace HostIpc {

class WireWriter {
 public:
  void U8(uint8_t value) { bytes_.push_back(static_cast<char>(value)); }
  void U16(uint16_t value);
  void U32(uint32_t value);
  void I32(int32_t value) { U32(static_cast<uint32_t>(value)); }
  void Bool(bool value) { U8(value ? 1 : 0); }
  void String(const std::string& value);

  const std::string& Bytes() const { return bytes_; }
  std::string& MutableBytes() { return bytes_; }

 private:
  std::string bytes_;
};

class WireReader {
 public:
  WireReader(const char* data, size_t size) : data_(data), size_(size) {}
  explicit WireReader(const std::string& bytes) : WireReader(bytes.data(), bytes.size()) {}
  // The reader keeps no copy, so it must not outlive the bytes.
  explicit WireReader(std::string&&) = delete;

  bool U8(uint8_t& value);
  bool U16(uint16_t& value);
  bool U32(uint32_t& value);
  bool I32(int32_t& value);
  bool Bool(bool& value);  // only 0 and 1 are booleans
  bool String(std::string& value);

  size_t Remaining() const { return ok_ ? size_ - position_ : 0; }
  // True when every read succeeded and nothing is left over.
  bool Finished() const { return ok_ && position_ == size_; }
  bool Ok() const { return ok_; }

 private:
  bool Take(size_t count, const unsigned char*& bytes);

  const char* data_;
  size_t size_;
  size_t position_ = 0;
  bool ok_ = true;
};

}  // namespace HostIpc

#endif  // RECORDER_HOST_WIRE_H_
