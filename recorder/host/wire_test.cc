#include "recorder/host/wire.h"

#include <gtest/gtest.h>

#include <tuple>

namespace HostIpc {
namespace {

using namespace std::string_literals;

TEST(Wire, IntegersAreLittleEndian) {
  WireWriter writer;
  writer.U8(0x01);
  writer.U16(0x0302);
  writer.U32(0x07060504);
  writer.I32(-2);
  EXPECT_EQ(std::string("\x01\x02\x03\x04\x05\x06\x07\xfe\xff\xff\xff", 11), writer.Bytes());
}

TEST(Wire, EveryValueReadsBackAsWritten) {
  WireWriter writer;
  writer.U8(255);
  writer.U16(65535);
  writer.U32(4294967295u);
  writer.I32(-2147483647 - 1);
  writer.Bool(true);
  writer.Bool(false);
  writer.String("a\0b\xff"s);
  writer.String("");
  WireReader reader(writer.Bytes());
  std::tuple<uint8_t, uint16_t, uint32_t, int32_t, bool, bool, std::string, std::string> read = {
      0, 0, 0, 0, false, true, "", "x"};
  auto& [u8, u16, u32, i32, yes, no, text, empty] = read;
  ASSERT_TRUE(reader.U8(u8) && reader.U16(u16) && reader.U32(u32) && reader.I32(i32) &&
              reader.Bool(yes) && reader.Bool(no) && reader.String(text) && reader.String(empty));
  EXPECT_EQ(std::make_tuple(uint8_t{255}, uint16_t{65535}, 4294967295u, -2147483647 - 1, true,
                            false, "a\0b\xff"s, ""s),
            read);
  EXPECT_TRUE(reader.Finished());
}

// Reading from `bytes` with `read` fails and leaves the value as it was.
template <typename Value>
void ExpectRefused(const std::string& bytes, bool (WireReader::*read)(Value&), Value unchanged) {
  WireReader reader(bytes);
  Value value = unchanged;
  EXPECT_FALSE((reader.*read)(value));
  EXPECT_EQ(unchanged, value);
}

TEST(Wire, ReadingPastTheEndFailsAndStaysFailed) {
  WireReader reader("\x01\x02\x03", 3);
  uint32_t value = 7;
  EXPECT_FALSE(reader.U32(value));
  EXPECT_EQ(7u, value);
  uint8_t byte = 0;
  EXPECT_FALSE(reader.U8(byte));  // the bytes are still there, but the reader has failed
  EXPECT_EQ(std::make_tuple(false, false, size_t{0}),
            std::make_tuple(reader.Ok(), reader.Finished(), reader.Remaining()));
}

TEST(Wire, StringLongerThanTheBytesLeftFails) {
  ExpectRefused("\x05\0\0\0a"s, &WireReader::String, "unchanged"s);
}

TEST(Wire, StringOfTheLargestLengthFailsWithoutAllocating) {
  ExpectRefused("\xff\xff\xff\xffxyz"s, &WireReader::String, ""s);
}

TEST(Wire, OnlyZeroAndOneAreBooleans) { ExpectRefused("\x02"s, &WireReader::Bool, false); }

TEST(Wire, LeftoverBytesAreNotFinished) {
  WireReader reader("\x01\x02", 2);
  uint8_t byte = 0;
  ASSERT_TRUE(reader.U8(byte));
  EXPECT_EQ(std::make_pair(false, size_t{1}),
            std::make_pair(reader.Finished(), reader.Remaining()));
}

}  // namespace
}  // namespace HostIpc
