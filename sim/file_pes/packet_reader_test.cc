// Finding packets of 188, 192 and 204 bytes, and regaining lost sync.
#include "sim/file_pes/packet_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/file_pes/ts_builder.h"
#include "sim/file_pes/ts_packet.h"

namespace {

// Records what the reader reports, one line each.
class Log : public PacketSink {
 public:
  void OnPacket(const uint8_t* packet, uint64_t index) override {
    const TsPacket p = ParsePacket(packet);
    lines.push_back("packet " + std::to_string(index) + " pid " + std::to_string(p.pid));
  }
  void OnSkip(uint64_t from, uint64_t bytes, uint64_t packetsBefore, size_t resumeSize) override {
    lines.push_back("skip " + std::to_string(bytes) + " from " + std::to_string(from) + " after " +
                    std::to_string(packetsBefore) + " then " + std::to_string(resumeSize));
  }
  void OnTail(uint64_t bytes) override { lines.push_back("tail " + std::to_string(bytes)); }
  std::vector<std::string> lines;
};

// Feeds `bytes` in pieces of `piece` bytes, as a file is read.
std::vector<std::string> Read(const std::string& bytes, size_t piece) {
  Log log;
  PacketReader reader(log);
  std::string buffer;
  size_t at = 0;
  for (;;) {
    const std::string next = bytes.substr(at, piece);
    at += next.size();
    buffer += next;
    const bool atEnd = next.empty();
    const size_t used =
        reader.Feed(reinterpret_cast<const uint8_t*>(buffer.data()), buffer.size(), atEnd);
    buffer.erase(0, used);
    if (atEnd) break;
  }
  return log.lines;
}

std::string Packets(int count) {
  std::string stream;
  for (int i = 0; i < count; ++i) {
    PacketSpec fields;
    fields.pid = static_cast<uint16_t>(0x100 + i);
    stream += MakePacket(fields);
  }
  return stream;
}

std::vector<std::string> PacketLines(int from, int count, int firstIndex = -1) {
  std::vector<std::string> lines;
  for (int i = 0; i < count; ++i) {
    lines.push_back("packet " + std::to_string((firstIndex < 0 ? from : firstIndex) + i) + " pid " +
                    std::to_string(0x100 + from + i));
  }
  return lines;
}

TEST(PacketReader, EachPacketSizeIsFoundFromTheData) {
  for (const size_t size : {size_t{188}, size_t{192}, size_t{204}}) {
    const std::string stream = size == 188 ? Packets(8) : ResizePackets(Packets(8), size);
    for (const size_t piece : {size_t{1 << 20}, size_t{7}, size_t{1000}}) {
      EXPECT_EQ(PacketLines(0, 8), Read(stream, piece)) << size << " " << piece;
    }
  }
}

TEST(PacketReader, ASinglePacketIsRead) {
  EXPECT_EQ(PacketLines(0, 1), Read(Packets(1), 4096));
  EXPECT_EQ(PacketLines(0, 1), Read(ResizePackets(Packets(1), 204), 4096));
}

TEST(PacketReader, GarbageBeforeTheFirstPacketIsSkipped) {
  const std::string stream = std::string(30, '\x47') + Packets(8);
  std::vector<std::string> expected = {"skip 30 from 0 after 0 then 188"};
  for (const std::string& line : PacketLines(0, 8)) expected.push_back(line);
  EXPECT_EQ(expected, Read(stream, 4096));
  EXPECT_EQ(expected, Read(stream, 100));
}

TEST(PacketReader, SyncLostInTheMiddleIsRegained) {
  // The last 50 bytes of packet 3 are missing. Its sync byte is whole, so
  // it is read with the first 50 bytes of packet 4; the rest of packet 4 is
  // where sync is found lost.
  const std::string packets = Packets(10);
  const std::string torn = packets.substr(0, 3 * 188 + 138) + packets.substr(4 * 188);
  std::vector<std::string> expected = PacketLines(0, 4);
  expected.push_back("skip 138 from 752 after 4 then 188");
  for (const std::string& line : PacketLines(5, 5, 4)) expected.push_back(line);
  EXPECT_EQ(expected, Read(torn, 1 << 20));
  EXPECT_EQ(expected, Read(torn, 64));
}

TEST(PacketReader, TornPacketsOf192Bytes) {
  const std::string packets = ResizePackets(Packets(10), 192);
  const std::string torn = packets.substr(0, 5 * 192 + 10) + packets.substr(6 * 192);
  std::vector<std::string> expected = PacketLines(0, 6);
  expected.push_back("skip 10 from 1152 after 6 then 192");
  for (const std::string& line : PacketLines(7, 3, 6)) expected.push_back(line);
  EXPECT_EQ(expected, Read(torn, 1 << 20));
}

TEST(PacketReader, FileEndingInsideAPacket) {
  const std::string stream = Packets(3) + Packets(1).substr(0, 100);
  std::vector<std::string> expected = PacketLines(0, 3);
  expected.push_back("tail 100");
  EXPECT_EQ(expected, Read(stream, 4096));
}

TEST(PacketReader, NoPacketsAtAll) {
  std::string garbage;
  for (int i = 0; i < 5000; ++i) garbage += static_cast<char>(i * 7 % 256);
  EXPECT_EQ(std::vector<std::string>{"skip 5000 from 0 after 0 then 0"}, Read(garbage, 4096));
  EXPECT_EQ(std::vector<std::string>{"skip 5000 from 0 after 0 then 0"}, Read(garbage, 333));
  EXPECT_TRUE(Read("", 4096).empty());
}

TEST(PacketReader, GarbageAfterTheLastPacket) {
  const std::string stream = Packets(6) + std::string(1000, '\x11');
  std::vector<std::string> expected = PacketLines(0, 6);
  expected.push_back("skip 1000 from 1128 after 6 then 0");
  EXPECT_EQ(expected, Read(stream, 4096));
}

}  // namespace
