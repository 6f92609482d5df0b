// Reading the PAT and PMT.
#include "sim/file_pes/psi_tables.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/file_pes/ts_builder.h"

namespace {

bool Collect(SectionCollector& collector, const std::string& packet) {
  return collector.Add(ParsePacket(reinterpret_cast<const uint8_t*>(packet.data())));
}

TEST(PsiTables, PatNamesEachProgramsPmt) {
  SectionCollector collector;
  ASSERT_TRUE(Collect(collector, MakePat({{1, 0x1000}, {2, 0x1001}})));
  std::vector<ProgramEntry> programs;
  ASSERT_TRUE(ParsePat(collector.Section().data(), collector.Section().size(), programs));
  ASSERT_EQ(2u, programs.size());
  EXPECT_EQ(1, programs[0].program);
  EXPECT_EQ(0x1000, programs[0].pmtPid);
  EXPECT_EQ(2, programs[1].program);
  EXPECT_EQ(0x1001, programs[1].pmtPid);
}

TEST(PsiTables, PmtNamesPcrPidAndStreams) {
  SectionCollector collector;
  ASSERT_TRUE(Collect(collector, MakePmt({7, 0x1000}, 0x101, {{0x0F, 0x102}, {0x24, 0x101}})));
  ProgramMap map;
  ASSERT_TRUE(ParsePmt(collector.Section().data(), collector.Section().size(), map));
  EXPECT_EQ(7, map.program);
  EXPECT_EQ(0x101, map.pcrPid);
  ASSERT_EQ(2u, map.streams.size());
  EXPECT_EQ(0x0F, map.streams[0].streamType);
  EXPECT_EQ(0x102, map.streams[0].pid);
  EXPECT_EQ(0x24, map.streams[1].streamType);
  EXPECT_EQ(0x101, map.streams[1].pid);
}

TEST(PsiTables, DamagedSectionIsRefused) {
  std::string packet = MakePmt({1, 0x1000}, 0x100, {{0x1B, 0x100}});
  packet[20] = static_cast<char>(packet[20] ^ 0x01);  // one bit of the body flipped
  SectionCollector collector;
  ASSERT_TRUE(Collect(collector, packet));
  ProgramMap map;
  EXPECT_FALSE(ParsePmt(collector.Section().data(), collector.Section().size(), map));
  std::vector<ProgramEntry> programs;
  EXPECT_FALSE(ParsePat(collector.Section().data(), collector.Section().size(), programs));
}

// A packet of `pid` whose payload is exactly `payload`, stuffing before it.
std::string PacketWithPayload(uint16_t pid, bool unitStart, const std::string& payload) {
  std::string packet = {'\x47', static_cast<char>((unitStart ? 0x40 : 0) | (pid >> 8)),
                        static_cast<char>(pid & 0xFF), '\x30'};
  const size_t field = 188 - 5 - payload.size();
  packet += static_cast<char>(field);
  packet += '\0';  // no flags
  packet += std::string(field - 1, '\xFF');
  return packet + payload;
}

TEST(PsiTables, SectionGoingOnInTheNextPacket) {
  const std::string whole = MakePmt({1, 0x1000}, 0x100, {{0x1B, 0x100}, {0x0F, 0x101}});
  const std::string section = whole.substr(5, 3 + static_cast<uint8_t>(whole[7]));
  SectionCollector collector;
  EXPECT_FALSE(Collect(collector, PacketWithPayload(0x1000, true, '\0' + section.substr(0, 10))));
  ASSERT_TRUE(Collect(collector, PacketWithPayload(0x1000, false, section.substr(10))));
  EXPECT_EQ(section, std::string(collector.Section().begin(), collector.Section().end()));
  ProgramMap map;
  ASSERT_TRUE(ParsePmt(collector.Section().data(), collector.Section().size(), map));
  EXPECT_EQ(2u, map.streams.size());
  // A continuation without a beginning is dropped.
  SectionCollector fresh;
  EXPECT_FALSE(Collect(fresh, PacketWithPayload(0x1000, false, section.substr(10))));
}

TEST(PsiTables, VideoCodecsByStreamType) {
  EXPECT_EQ(VideoCodec::kMpeg2, CodecOfStreamType(0x02));
  EXPECT_EQ(VideoCodec::kMpeg2, CodecOfStreamType(0x01));
  EXPECT_EQ(VideoCodec::kH264, CodecOfStreamType(0x1B));
  EXPECT_EQ(VideoCodec::kH265, CodecOfStreamType(0x24));
  EXPECT_EQ(VideoCodec::kOther, CodecOfStreamType(0x10));
  EXPECT_EQ(VideoCodec::kNone, CodecOfStreamType(0x0F));  // AAC audio
  EXPECT_EQ(VideoCodec::kNone, CodecOfStreamType(0x06));
}

TEST(PsiTables, CrcOfAKnownSection) {
  // A PAT of program 1 on PID 0x1000, as muxers write it.
  const uint8_t pat[] = {0x00, 0xB0, 0x0D, 0x00, 0x01, 0xC1, 0x00, 0x00,
                         0x00, 0x01, 0xF0, 0x00, 0x2A, 0xB1, 0x04, 0xB2};
  EXPECT_EQ(0u, SectionCrc(pat, sizeof pat));
}

}  // namespace
