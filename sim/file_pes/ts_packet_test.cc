// Reading the fields of single packets.
#include "sim/file_pes/ts_packet.h"

#include <gtest/gtest.h>

#include <string>

#include "sim/file_pes/ts_builder.h"

namespace {

TsPacket Parse(const std::string& bytes) {
  EXPECT_EQ(kPacketSize, bytes.size());
  return ParsePacket(reinterpret_cast<const uint8_t*>(bytes.data()));
}

TEST(TsPacket, PlainPayloadPacket) {
  PacketSpec fields;
  fields.pid = 0x1ABC;
  const TsPacket p = Parse(MakePacket(fields));
  EXPECT_TRUE(p.synced);
  EXPECT_EQ(0x1ABC, p.pid);
  EXPECT_FALSE(p.unitStart);
  EXPECT_FALSE(p.randomAccess);
  EXPECT_FALSE(p.hasPcr);
  EXPECT_FALSE(p.pesStart);
  EXPECT_FALSE(p.hasPts);
}

TEST(TsPacket, VideoFrameStartWithPcrAndRandomAccess) {
  PacketSpec fields;
  fields.pid = 0x100;
  fields.unitStart = true;
  fields.randomAccess = true;
  fields.pcrBase = (uint64_t{1} << 32) | 0x12345677;  // uses all 33 bits
  fields.streamId = 0xE3;
  fields.pts = (uint64_t{1} << 32) | 0x89ABCDEF;
  const TsPacket p = Parse(MakePacket(fields));
  EXPECT_TRUE(p.unitStart);
  EXPECT_TRUE(p.randomAccess);
  ASSERT_TRUE(p.hasPcr);
  EXPECT_EQ((uint64_t{1} << 32) | 0x12345677, p.pcrBase);
  ASSERT_TRUE(p.pesStart);
  EXPECT_EQ(0xE3, p.streamId);
  EXPECT_TRUE(IsVideoStream(p.streamId));
  ASSERT_TRUE(p.hasPts);
  EXPECT_EQ((uint64_t{1} << 32) | 0x89ABCDEF, p.pts);
}

TEST(TsPacket, PesWithoutPts) {
  PacketSpec fields;
  fields.unitStart = true;
  fields.streamId = 0xC0;
  const TsPacket p = Parse(MakePacket(fields));
  EXPECT_TRUE(p.pesStart);
  EXPECT_FALSE(IsVideoStream(p.streamId));
  EXPECT_FALSE(p.hasPts);
}

TEST(TsPacket, PesStartCodeWithoutUnitStartIsNotAPes) {
  PacketSpec fields;
  fields.streamId = 0xE0;
  fields.pts = 1000;
  EXPECT_FALSE(Parse(MakePacket(fields)).pesStart);
}

TEST(TsPacket, MissingSyncByte) {
  std::string bytes = MakePacket(PacketSpec());
  bytes[0] = 0x48;
  EXPECT_FALSE(Parse(bytes).synced);
}

TEST(TsPacket, AdaptationFieldLongerThanThePacketIsIgnored) {
  std::string bytes = MakePacket(PacketSpec());
  bytes[3] = 0x30;                     // adaptation field and payload
  bytes[4] = static_cast<char>(0xFF);  // 255 bytes cannot fit
  bytes[5] = 0x50;                     // random access and PCR flags
  const TsPacket p = Parse(bytes);
  EXPECT_TRUE(p.synced);
  EXPECT_FALSE(p.randomAccess);
  EXPECT_FALSE(p.hasPcr);
  EXPECT_FALSE(p.pesStart);
}

TEST(TsPacket, PcrFlagInATooShortFieldIsIgnored) {
  std::string bytes = MakePacket(PacketSpec());
  bytes[3] = 0x20;  // adaptation field only
  bytes[4] = 3;
  bytes[5] = 0x10;
  EXPECT_FALSE(Parse(bytes).hasPcr);
}

TEST(TsPacket, EveryByteValueIsReadWithoutHarm) {
  // Any content of a synced packet parses to something; nothing reads past
  // the packet (the sanitizer build checks that).
  for (int value = 0; value < 256; ++value) {
    std::string bytes(kPacketSize, static_cast<char>(value));
    bytes[0] = static_cast<char>(kSyncByte);
    const TsPacket p = Parse(bytes);
    EXPECT_TRUE(p.synced);
  }
}

}  // namespace
