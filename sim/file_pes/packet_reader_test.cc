// Finding packets of 188, 192 and 204 bytes, and regaining lost sync.
#include "sim/file_pes/packet_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "sim/file_pes/ts_builder.h"
#include "sim/file_pes/ts_packet.h"

namespace {

// What the reader reports, a word or a phrase each: a packet as its number,
// a colon and the number it was written as (its PID less 256).
class Log : public PacketSink {
 public:
  void OnPacket(const uint8_t* packet, uint64_t index) override {
    Add(std::to_string(index) + ":" + std::to_string(ParsePacket(packet).pid - 0x100));
  }
  void OnSkip(uint64_t from, uint64_t bytes, uint64_t packetsBefore, size_t resumeSize) override {
    Add("skip " + std::to_string(bytes) + " from " + std::to_string(from) + " after " +
        std::to_string(packetsBefore) + " then " + std::to_string(resumeSize) + ",");
  }
  void OnTail(uint64_t bytes) override { Add("tail " + std::to_string(bytes)); }
  void Add(const std::string& word) { text += (text.empty() ? "" : " ") + word; }
  std::string text;
};

// Feeds `bytes` in pieces of `piece` bytes, as a file is read.
std::string Read(const std::string& bytes, size_t piece) {
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
  return log.text;
}

// `count` packets, each on a PID of its own from 256 up.
std::string Packets(int count) {
  std::string stream;
  for (int i = 0; i < count; ++i) {
    PacketSpec fields;
    fields.pid = static_cast<uint16_t>(0x100 + i);
    stream += MakePacket(fields);
  }
  return stream;
}

TEST(PacketReader, EachPacketSizeIsFoundFromTheData) {
  for (const size_t size : {size_t{188}, size_t{192}, size_t{204}}) {
    const std::string stream = size == 188 ? Packets(8) : ResizePackets(Packets(8), size);
    for (const size_t piece : {size_t{1 << 20}, size_t{7}, size_t{1000}}) {
      EXPECT_EQ("0:0 1:1 2:2 3:3 4:4 5:5 6:6 7:7", Read(stream, piece)) << size << " " << piece;
    }
  }
}

TEST(PacketReader, ASinglePacketIsRead) {
  EXPECT_EQ("0:0", Read(Packets(1), 4096));
  EXPECT_EQ("0:0", Read(ResizePackets(Packets(1), 204), 4096));
}

TEST(PacketReader, GarbageBeforeTheFirstPacketIsSkipped) {
  const std::string stream = std::string(30, '\x47') + Packets(8);
  for (const size_t piece : {4096, 100}) {
    EXPECT_EQ("skip 30 from 0 after 0 then 188, 0:0 1:1 2:2 3:3 4:4 5:5 6:6 7:7",
              Read(stream, piece));
  }
}

// The last 50 bytes of packet 3 are missing. Its sync byte is whole, so it
// is read with the first 50 bytes of packet 4; the rest of packet 4 is where
// sync is found lost.
TEST(PacketReader, SyncLostInTheMiddleIsRegained) {
  const std::string packets = Packets(10);
  const std::string torn = packets.substr(0, 3 * 188 + 138) + packets.substr(4 * 188);
  for (const size_t piece : {1 << 20, 64}) {
    EXPECT_EQ("0:0 1:1 2:2 3:3 skip 138 from 752 after 4 then 188, 4:5 5:6 6:7 7:8 8:9",
              Read(torn, piece));
  }
}

TEST(PacketReader, TornPacketsOf192Bytes) {
  const std::string packets = ResizePackets(Packets(10), 192);
  EXPECT_EQ("0:0 1:1 2:2 3:3 4:4 5:5 skip 10 from 1152 after 6 then 192, 6:7 7:8 8:9",
            Read(packets.substr(0, 5 * 192 + 10) + packets.substr(6 * 192), 1 << 20));
}

TEST(PacketReader, FileEndingInsideAPacket) {
  EXPECT_EQ("0:0 1:1 2:2 tail 100", Read(Packets(3) + Packets(1).substr(0, 100), 4096));
}

TEST(PacketReader, NoPacketsAtAll) {
  std::string garbage;
  for (int i = 0; i < 5000; ++i) garbage += static_cast<char>(i * 7 % 256);
  EXPECT_EQ("skip 5000 from 0 after 0 then 0,", Read(garbage, 4096));
  EXPECT_EQ("skip 5000 from 0 after 0 then 0,", Read(garbage, 333));
  EXPECT_EQ("", Read("", 4096));
}

TEST(PacketReader, GarbageAfterTheLastPacket) {
  EXPECT_EQ("0:0 1:1 2:2 3:3 4:4 5:5 skip 1000 from 1128 after 6 then 0,",
            Read(Packets(6) + std::string(1000, '\x11'), 4096));
}

}  // namespace
