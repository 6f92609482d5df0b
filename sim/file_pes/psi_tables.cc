#include "sim/file_pes/psi_tables.h"

namespace {

// Sections are at most 1024 bytes long (12-bit length, top two bits zero).
constexpr size_t kLongestSection = 1024;

size_t SectionLength(const uint8_t* section) {
  return 3 + (((section[1] & 0x0Fu) << 8) | section[2]);
}

// The common frame of PAT and PMT: a long section whose CRC matches.
bool LongSectionOk(const uint8_t* section, size_t size, uint8_t tableId) {
  return size >= 12 && section[0] == tableId && (section[1] & 0x80) != 0 &&
         SectionLength(section) == size && (section[5] & 0x01) != 0 &&
         SectionCrc(section, size) == 0;
}

}  // namespace

VideoCodec CodecOfStreamType(uint8_t streamType) {
  switch (streamType) {
    case 0x01:
    case 0x02:
      return VideoCodec::kMpeg2;
    case 0x1B:
      return VideoCodec::kH264;
    case 0x24:
      return VideoCodec::kH265;
    case 0x10:  // MPEG-4 visual
    case 0x20:  // H.264 sub-bitstream
    case 0x42:  // AVS
    case 0xEA:  // VC-1
      return VideoCodec::kOther;
    default:
      return VideoCodec::kNone;
  }
}

uint32_t SectionCrc(const uint8_t* bytes, size_t size) {
  uint32_t crc = 0xFFFFFFFF;
  for (size_t i = 0; i < size; ++i) {
    crc ^= uint32_t{bytes[i]} << 24;
    for (int bit = 0; bit < 8; ++bit) {
      crc = (crc & 0x80000000u) != 0 ? (crc << 1) ^ 0x04C11DB7u : crc << 1;
    }
  }
  return crc;
}

bool ParsePat(const uint8_t* section, size_t size, std::vector<ProgramEntry>& programs) {
  if (!LongSectionOk(section, size, 0x00)) {
    return false;
  }
  programs.clear();
  for (size_t at = 8; at + 4 <= size - 4; at += 4) {
    ProgramEntry entry;
    entry.program = static_cast<uint16_t>((section[at] << 8) | section[at + 1]);
    entry.pmtPid = static_cast<uint16_t>(((section[at + 2] & 0x1F) << 8) | section[at + 3]);
    if (entry.program != 0) {  // program 0 names the network PID
      programs.push_back(entry);
    }
  }
  return true;
}

bool ParsePmt(const uint8_t* section, size_t size, ProgramMap& map) {
  if (!LongSectionOk(section, size, 0x02) || size < 16) {
    return false;
  }
  map = ProgramMap();
  map.program = static_cast<uint16_t>((section[3] << 8) | section[4]);
  map.pcrPid = static_cast<uint16_t>(((section[8] & 0x1F) << 8) | section[9]);
  const size_t infoLength = ((section[10] & 0x0Fu) << 8) | section[11];
  size_t at = 12 + infoLength;
  while (at + 5 <= size - 4) {
    ElementaryStream stream;
    stream.streamType = section[at];
    stream.pid = static_cast<uint16_t>(((section[at + 1] & 0x1F) << 8) | section[at + 2]);
    map.streams.push_back(stream);
    at += 5 + (((section[at + 3] & 0x0Fu) << 8) | section[at + 4]);
  }
  return true;
}

bool SectionCollector::Add(const TsPacket& packet) {
  if (packet.payload == nullptr) {
    return false;
  }
  const uint8_t* data = packet.payload;
  size_t size = packet.payloadSize;
  if (packet.unitStart) {
    // pointer_field: the bytes before it end the previous section.
    const size_t pointer = data[0];
    if (1 + pointer >= size) {
      collecting_ = false;
      return false;
    }
    data += 1 + pointer;
    size -= 1 + pointer;
    section_.clear();
    collecting_ = true;
  } else if (!collecting_) {
    return false;
  }
  const size_t room = kLongestSection - section_.size();
  section_.insert(section_.end(), data, data + (size < room ? size : room));
  return Complete();
}

bool SectionCollector::Complete() {
  if (section_.size() < 3 || section_[0] == 0xFF) {
    collecting_ = section_.size() < 3 && collecting_;
    return false;
  }
  const size_t length = SectionLength(section_.data());
  if (length > kLongestSection) {
    collecting_ = false;
    return false;
  }
  if (section_.size() < length) {
    return false;
  }
  section_.resize(length);
  collecting_ = false;
  return true;
}
