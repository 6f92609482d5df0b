#include "sim/file_pes/ts_builder.h"

#include "sim/file_pes/ts_packet.h"

namespace {

void AppendPts(std::string& out, uint64_t pts) {
  out += static_cast<char>(0x21 | ((pts >> 29) & 0x0E));
  out += static_cast<char>((pts >> 22) & 0xFF);
  out += static_cast<char>(0x01 | ((pts >> 14) & 0xFE));
  out += static_cast<char>((pts >> 7) & 0xFF);
  out += static_cast<char>(0x01 | ((pts << 1) & 0xFE));
}

std::string AdaptationField(const PacketSpec& fields) {
  std::string field;
  uint8_t flags = fields.randomAccess ? 0x40 : 0x00;
  if (fields.pcrBase) {
    flags |= 0x10;
  }
  field += static_cast<char>(flags);
  if (fields.pcrBase) {
    const uint64_t base = *fields.pcrBase & kClockMask;
    field += static_cast<char>((base >> 25) & 0xFF);
    field += static_cast<char>((base >> 17) & 0xFF);
    field += static_cast<char>((base >> 9) & 0xFF);
    field += static_cast<char>((base >> 1) & 0xFF);
    field += static_cast<char>(((base & 1) << 7) | 0x7E);  // reserved bits, extension 0
    field += static_cast<char>(0x00);
  }
  return field;
}

}  // namespace

std::string MakePacket(const PacketSpec& fields) {
  std::string payload;
  if (fields.streamId) {
    payload += std::string("\0\0\1", 3);
    payload += static_cast<char>(*fields.streamId);
    payload += std::string("\0\0", 2);  // unbounded length, as video uses
    payload += static_cast<char>(0x80);
    payload += static_cast<char>(fields.pts ? 0x80 : 0x00);
    payload += static_cast<char>(fields.pts ? 5 : 0);
    if (fields.pts) {
      AppendPts(payload, *fields.pts);
    }
  }
  const bool adaptation = fields.randomAccess || fields.pcrBase.has_value();
  std::string packet;
  packet += static_cast<char>(kSyncByte);
  packet += static_cast<char>((fields.unitStart ? 0x40 : 0x00) | ((fields.pid >> 8) & 0x1F));
  packet += static_cast<char>(fields.pid & 0xFF);
  packet += static_cast<char>((adaptation ? 0x30 : 0x10) | (fields.continuity & 0x0F));
  if (adaptation) {
    std::string field = AdaptationField(fields);
    // Stuffing in the adaptation field fills the packet.
    const size_t room = kPacketSize - packet.size() - 1 - payload.size();
    field.resize(room, static_cast<char>(0xFF));
    packet += static_cast<char>(field.size());
    packet += field;
  }
  packet += payload;
  packet.resize(kPacketSize, static_cast<char>(0xA5));  // picture data
  return packet;
}

std::string MakeStream(const StreamShape& shape) {
  std::string stream;
  const uint64_t frameTicks = kClockHz / static_cast<uint64_t>(shape.framesPerSecond);
  uint8_t videoCounter = 0;
  uint8_t audioCounter = 0;
  for (int frame = 0; frame < shape.frames; ++frame) {
    const uint64_t clock = shape.firstPcr + static_cast<uint64_t>(frame) * frameTicks;
    const bool splitPoint = shape.pcrEvery > 0 && frame % shape.pcrEvery == 0;
    for (int i = 0; i < shape.packetsPerFrame; ++i) {
      PacketSpec fields;
      fields.continuity = videoCounter++;
      if (i == 0) {
        fields.unitStart = true;
        fields.randomAccess = shape.keyFrameEvery > 0 && frame % shape.keyFrameEvery == 0;
        fields.streamId = 0xE0;
        fields.pts = clock + shape.ptsLead;
      }
      const int pcrPacket = shape.pcrInsideFrame && shape.packetsPerFrame > 1 ? 1 : 0;
      if (splitPoint && i == pcrPacket) {
        fields.pcrBase = clock;
      }
      stream += MakePacket(fields);
    }
    if (shape.audio) {
      PacketSpec audio;
      audio.pid = 0x101;
      audio.unitStart = true;
      audio.streamId = 0xC0;
      audio.pts = clock + shape.ptsLead;
      audio.continuity = audioCounter++;
      stream += MakePacket(audio);
    }
  }
  return stream;
}
