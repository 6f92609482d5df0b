#include "recorder/host/wire.h"

namespace HostIpc {

void WireWriter::U16(uint16_t value) {
  U8(static_cast<uint8_t>(value));
  U8(static_cast<uint8_t>(value >> 8));
}

void WireWriter::U32(uint32_t value) {
  const char bytes[4] = {static_cast<char>(value), static_cast<char>(value >> 8),
                         static_cast<char>(value >> 16), static_cast<char>(value >> 24)};
  bytes_.append(bytes, sizeof bytes);
}

void WireWriter::String(const std::string& value) {
  U32(static_cast<uint32_t>(value.size()));
  bytes_.append(value);
}

bool WireReader::Take(size_t count, const unsigned char*& bytes) {
  if (!ok_ || size_ - position_ < count) {
    ok_ = false;
    return false;
  }
  bytes = reinterpret_cast<const unsigned char*>(data_) + position_;
  position_ += count;
  return true;
}

bool WireReader::U8(uint8_t& value) {
  const unsigned char* bytes = nullptr;
  if (!Take(1, bytes)) return false;
  value = bytes[0];
  return true;
}

bool WireReader::U16(uint16_t& value) {
  const unsigned char* bytes = nullptr;
  if (!Take(2, bytes)) return false;
  value = static_cast<uint16_t>(bytes[0] | (bytes[1] << 8));
  return true;
}

bool WireReader::U32(uint32_t& value) {
  const unsigned char* bytes = nullptr;
  if (!Take(4, bytes)) return false;
  value = static_cast<uint32_t>(bytes[0]) | (static_cast<uint32_t>(bytes[1]) << 8) |
          (static_cast<uint32_t>(bytes[2]) << 16) | (static_cast<uint32_t>(bytes[3]) << 24);
  return true;
}

bool WireReader::I32(int32_t& value) {
  uint32_t bits = 0;
  if (!U32(bits)) return false;
  value = static_cast<int32_t>(bits);
  return true;
}

bool WireReader::Bool(bool& value) {
  uint8_t byte = 0;
  if (!U8(byte)) return false;
  if (byte > 1) {
    ok_ = false;
    return false;
  }
  value = byte == 1;
  return true;
}

bool WireReader::String(std::string& value) {
  uint32_t length = 0;
  const unsigned char* bytes = nullptr;
  if (!U32(length) || !Take(length, bytes)) return false;
  value.assign(reinterpret_cast<const char*>(bytes), length);
  return true;
}

}  // namespace HostIpc
