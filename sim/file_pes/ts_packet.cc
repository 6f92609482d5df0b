#include "sim/file_pes/ts_packet.h"

namespace {

constexpr size_t kHeaderSize = 4;

// The PTS of a PES header: 33 bits spread over five bytes between markers.
uint64_t ReadPts(const uint8_t* p) {
  return (uint64_t{p[0] & 0x0Eu} << 29) | (uint64_t{p[1]} << 22) | (uint64_t{p[2] & 0xFEu} << 14) |
         (uint64_t{p[3]} << 7) | (uint64_t{p[4]} >> 1);
}

void ReadAdaptationField(const uint8_t* field, size_t length, TsPacket& packet) {
  if (length < 1) {
    return;
  }
  const uint8_t flags = field[0];
  packet.discontinuity = (flags & 0x80) != 0;
  packet.randomAccess = (flags & 0x40) != 0;
  if ((flags & 0x10) != 0 && length >= 7) {
    packet.hasPcr = true;
    packet.pcrBase = (uint64_t{field[1]} << 25) | (uint64_t{field[2]} << 17) |
                     (uint64_t{field[3]} << 9) | (uint64_t{field[4]} << 1) | (field[5] >> 7);
  }
}

void ReadPesHeader(const uint8_t* payload, size_t length, TsPacket& packet) {
  if (length < 4 || payload[0] != 0 || payload[1] != 0 || payload[2] != 1) {
    return;
  }
  packet.pesStart = true;
  packet.streamId = payload[3];
  packet.dataOffset = length;  // until the header proves whole
  // The optional header: two flag bytes, its length, then the PTS first.
  if (length < 9 || (payload[6] & 0xC0) != 0x80) {
    return;
  }
  const bool ptsFlag = (payload[7] & 0x80) != 0;
  const size_t headerLength = payload[8];
  packet.dataOffset = 9 + headerLength < length ? 9 + headerLength : length;
  if (ptsFlag && headerLength >= 5 && length >= 14) {
    packet.hasPts = true;
    packet.pts = ReadPts(payload + 9);
  }
}

}  // namespace

TsPacket ParsePacket(const uint8_t* bytes) {
  TsPacket packet;
  packet.synced = bytes[0] == kSyncByte;
  if (!packet.synced) {
    return packet;
  }
  packet.unitStart = (bytes[1] & 0x40) != 0;
  packet.pid = static_cast<uint16_t>(((bytes[1] & 0x1F) << 8) | bytes[2]);
  const unsigned control = (bytes[3] >> 4) & 0x3;
  size_t payload = kHeaderSize;
  if (control == 2 || control == 3) {
    const size_t length = bytes[4];
    if (kHeaderSize + 1 + length > kPacketSize) {
      return packet;  // an adaptation field longer than the packet
    }
    ReadAdaptationField(bytes + kHeaderSize + 1, length, packet);
    payload = kHeaderSize + 1 + length;
  }
  if ((control == 1 || control == 3) && payload < kPacketSize) {
    packet.payload = bytes + payload;
    packet.payloadSize = kPacketSize - payload;
    if (packet.unitStart) {
      ReadPesHeader(packet.payload, packet.payloadSize, packet);
    }
  }
  return packet;
}
