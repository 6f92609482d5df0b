// Reading the fields of single packets.
#include "sim/file_pes/ts_packet.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "sim/file_pes/ts_builder.h"

namespace {

// The fields read from one packet, in one line.
std::string Fields(const std::string& bytes) {
  EXPECT_EQ(kPacketSize, bytes.size());
  const TsPacket p = ParsePacket(reinterpret_cast<const uint8_t*>(bytes.data()));
  std::ostringstream line;
  line << (p.synced ? "synced" : "not synced") << " pid " << std::hex << p.pid
       << (p.unitStart ? " unit start" : "") << (p.randomAccess ? " random access" : "");
  if (p.hasPcr) line << " PCR " << p.pcrBase;
  if (p.pesStart) line << " PES " << +p.streamId << (IsVideoStream(p.streamId) ? " video" : "");
  if (p.hasPts) line << " PTS " << p.pts;
  return line.str();
}

TEST(TsPacket, PlainPayloadPacket) {
  PacketSpec fields;
  fields.pid = 0x1ABC;
  EXPECT_EQ("synced pid 1abc", Fields(MakePacket(fields)));
}

TEST(TsPacket, VideoFrameStartWithPcrAndRandomAccess) {
  PacketSpec fields;
  fields.unitStart = true;
  fields.randomAccess = true;
  fields.pcrBase = (uint64_t{1} << 32) | 0x12345677;  // uses all 33 bits
  fields.streamId = 0xE3;
  fields.pts = (uint64_t{1} << 32) | 0x89ABCDEF;
  EXPECT_EQ("synced pid 100 unit start random access PCR 112345677 PES e3 video PTS 189abcdef",
            Fields(MakePacket(fields)));
}

TEST(TsPacket, PesWithoutPts) {
  PacketSpec fields;
  fields.unitStart = true;
  fields.streamId = 0xC0;
  EXPECT_EQ("synced pid 100 unit start PES c0", Fields(MakePacket(fields)));
}

TEST(TsPacket, PesStartCodeWithoutUnitStartIsNotAPes) {
  PacketSpec fields;
  fields.streamId = 0xE0;
  fields.pts = 1000;
  EXPECT_EQ("synced pid 100", Fields(MakePacket(fields)));
}

TEST(TsPacket, MissingSyncByte) {
  std::string bytes = MakePacket(PacketSpec());
  bytes[0] = 0x48;
  EXPECT_EQ("not synced pid 0", Fields(bytes));
}

// Neither the random access nor the PCR flag counts in a field that is too
// long for the packet or too short for a PCR.
TEST(TsPacket, AdaptationFieldLongerThanThePacketIsIgnored) {
  std::string bytes = MakePacket(PacketSpec());
  bytes.replace(3, 3, "\x30\xFF\x50");  // adaptation field and payload; 255 bytes; both flags
  EXPECT_EQ("synced pid 100", Fields(bytes));
}

TEST(TsPacket, PcrFlagInATooShortFieldIsIgnored) {
  std::string bytes = MakePacket(PacketSpec());
  bytes.replace(3, 3, "\x20\x03\x10");  // adaptation field only; 3 bytes; the PCR flag
  EXPECT_EQ("synced pid 100", Fields(bytes));
}

// Any content of a synced packet parses to something; nothing reads past
// the packet (the sanitizer build checks that).
TEST(TsPacket, EveryByteValueIsReadWithoutHarm) {
  for (int value = 0; value < 256; ++value) {
    std::string bytes(kPacketSize, static_cast<char>(value));
    bytes[0] = static_cast<char>(kSyncByte);
    EXPECT_EQ("synced", Fields(bytes).substr(0, 6));
  }
}

}  // namespace
