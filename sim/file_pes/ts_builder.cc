#include "sim/file_pes/ts_builder.h"

#include "sim/file_pes/psi_tables.h"
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
  if (fields.discontinuity) {
    flags |= 0x80;
  }
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
  payload += fields.data;
  if (fields.noPayload) {
    payload.clear();
  }
  const bool adaptation =
      fields.randomAccess || fields.pcrBase.has_value() || fields.discontinuity || fields.noPayload;
  std::string packet;
  packet += static_cast<char>(kSyncByte);
  packet += static_cast<char>((fields.unitStart ? 0x40 : 0x00) | ((fields.pid >> 8) & 0x1F));
  packet += static_cast<char>(fields.pid & 0xFF);
  const int control = fields.noPayload ? 0x20 : adaptation ? 0x30 : 0x10;
  packet += static_cast<char>(control | (fields.continuity & 0x0F));
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

PacketSpec FrameStart(uint64_t pts, std::optional<uint64_t> pcr, bool randomAccess) {
  PacketSpec fields;
  fields.unitStart = true;
  fields.randomAccess = randomAccess;
  fields.streamId = 0xE0;
  fields.pts = pts;
  fields.pcrBase = pcr;
  return fields;
}

namespace {

// One packet holding a table section (from table_id on, CRC added).
std::string SectionPacket(uint16_t pid, std::string section) {
  const uint32_t crc = SectionCrc(reinterpret_cast<const uint8_t*>(section.data()), section.size());
  for (int shift = 24; shift >= 0; shift -= 8) {
    section += static_cast<char>((crc >> shift) & 0xFF);
  }
  std::string packet;
  packet += static_cast<char>(kSyncByte);
  packet += static_cast<char>(0x40 | ((pid >> 8) & 0x1F));
  packet += static_cast<char>(pid & 0xFF);
  packet += static_cast<char>(0x10);
  packet += '\0';  // pointer_field
  packet += section;
  packet.resize(kPacketSize, static_cast<char>(0xFF));
  return packet;
}

// table_id, section_length (the CRC counted), id, version, section numbers.
std::string SectionHeader(uint8_t tableId, uint16_t id, size_t bodySize) {
  const size_t length = 5 + bodySize + 4;
  std::string header;
  header += static_cast<char>(tableId);
  header += static_cast<char>(0xB0 | ((length >> 8) & 0x0F));
  header += static_cast<char>(length & 0xFF);
  header += static_cast<char>(id >> 8);
  header += static_cast<char>(id & 0xFF);
  header += static_cast<char>(0xC1);  // version 0, current
  header += '\0';
  header += '\0';
  return header;
}

void AppendPid(std::string& out, uint16_t pid) {
  out += static_cast<char>(0xE0 | ((pid >> 8) & 0x1F));
  out += static_cast<char>(pid & 0xFF);
}

}  // namespace

std::string MakePat(const std::vector<TableProgram>& programs) {
  std::string body;
  for (const TableProgram& program : programs) {
    body += static_cast<char>(program.program >> 8);
    body += static_cast<char>(program.program & 0xFF);
    AppendPid(body, program.pmtPid);
  }
  return SectionPacket(0, SectionHeader(0x00, 1, body.size()) + body);
}

std::string MakePmt(const TableProgram& program, uint16_t pcrPid,
                    const std::vector<TableStream>& streams) {
  std::string body;
  AppendPid(body, pcrPid);
  body += std::string("\xF0\x00", 2);  // no program descriptors
  for (const TableStream& stream : streams) {
    body += static_cast<char>(stream.streamType);
    AppendPid(body, stream.pid);
    body += std::string("\xF0\x00", 2);
  }
  return SectionPacket(program.pmtPid, SectionHeader(0x02, program.program, body.size()) + body);
}

std::string H264Picture(bool idr) {
  return std::string("\0\0\0\1\x09\xF0", 6) + std::string("\0\0\1", 3) +
         static_cast<char>(idr ? 0x65 : 0x41) + std::string("\x88\x84", 2);
}

std::string H264RecoveryPointPicture() {
  return std::string("\0\0\0\1\x06\x06\x01\xC4\x80", 9) + std::string("\0\0\1\x41\x9A\x02", 6);
}

namespace {

// A payload type or size: a run of 0xFF bytes, then the rest.
void AppendSeiNumber(std::string& out, unsigned value) {
  for (; value >= 255; value -= 255) {
    out += static_cast<char>(0xFF);
  }
  out += static_cast<char>(value);
}

// Inserts 0x03 after every two zero bytes that a byte of 3 or less follows.
std::string EscapeRbsp(const std::string& rbsp) {
  std::string out;
  int zeros = 0;
  for (const char c : rbsp) {
    const auto byte = static_cast<uint8_t>(c);
    if (zeros >= 2 && byte <= 3) {
      out += '\x03';
      zeros = 0;
    }
    out += c;
    zeros = byte == 0 ? zeros + 1 : 0;
  }
  return out;
}

}  // namespace

std::string H264SeiPicture(const std::vector<SeiMessage>& messages) {
  std::string rbsp;
  for (const SeiMessage& message : messages) {
    AppendSeiNumber(rbsp, message.type);
    AppendSeiNumber(rbsp, static_cast<unsigned>(message.payload.size()));
    rbsp += message.payload;
  }
  rbsp += static_cast<char>(0x80);  // trailing bits
  return std::string("\0\0\0\1\x09\xF0\0\0\1\x06", 10) + EscapeRbsp(rbsp) +
         std::string("\0\0\1\x41\x9A\x02", 6);
}

std::string H265Picture(uint8_t nalType) {
  return std::string("\0\0\0\1\x46\x01\x10", 7) + std::string("\0\0\1", 3) +
         static_cast<char>(nalType << 1) + std::string("\x01\xAF", 2);
}

std::string Mpeg2Picture(uint8_t codingType) {
  return std::string("\0\0\1\0\0", 5) + static_cast<char>(codingType << 3) +
         std::string("\xFF\xF8", 2);
}

std::string ResizePackets(const std::string& stream, size_t size) {
  std::string out;
  for (size_t at = 0; at + kPacketSize <= stream.size(); at += kPacketSize) {
    if (size == 192) {
      out += std::string("\x12\x34\x56", 3) + static_cast<char>(at / kPacketSize);
    }
    out += stream.substr(at, kPacketSize);
    if (size == 204) {
      out += std::string(16, '\x55');
    }
  }
  return out;
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
