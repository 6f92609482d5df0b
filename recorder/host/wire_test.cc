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
  writer.String(std::string("a\0b\xff", 4));
  writer.String("");
  WireReader reader(writer.Bytes());
  uint8_t u8 = 0;
  uint16_t u16 = 0;
  uint32_t u32 = 0;
  int32_t i32 = 0;
  bool yes = false, no = true;
  std::string text, empty = "x";
  ASSERT_TRUE(reader.U8(u8) && reader.U16(u16) && reader.U32(u32) && reader.I32(i32) &&
              reader.Bool(yes) && reader.Bool(no) && reader.String(text) && reader.String(empty));
  EXPECT_EQ(
      std::make_tuple(255, 65535, 4294967295u, -2147483647 - 1, true, false, "a\0b\xff"s, ""s),
      std::make_tuple(int{u8}, int{u16}, u32, i32, yes, no, text, empty));
  EXPECT_TRUE(reader.Finished());
}

TEST(Wire, ReadingPastTheEndFailsAndStaysFailed) {
  WireReader reader("\x01\x02\x03", 3);
  uint32_t value = 7;
  EXPECT_FALSE(reader.U32(value));
  EXPECT_EQ(7u, value);
  uint8_t byte = 0;
  EXPECT_FALSE(reader.U8(byte));  // the bytes are still there, but the reader has failed
  EXPECT_FALSE(reader.Ok());
  EXPECT_FALSE(reader.Finished());
  EXPECT_EQ(0u, reader.Remaining());
}

TEST(Wire, StringLongerThanTheBytesLeftFails) {
  WireWriter writer;
  writer.U32(5);
  writer.U8('a');
  WireReader reader(writer.Bytes());
  std::string text = "unchanged";
  EXPECT_FALSE(reader.String(text));
  EXPECT_EQ("unchanged", text);
}

TEST(Wire, StringOfTheLargestLengthFailsWithoutAllocating) {
  const std::string bytes = std::string(4, '\xff') + "abc";
  WireReader reader(bytes);
  std::string text;
  EXPECT_FALSE(reader.String(text));
}

TEST(Wire, OnlyZeroAndOneAreBooleans) {
  WireReader reader("\x02", 1);
  bool value = false;
  EXPECT_FALSE(reader.Bool(value));
}

TEST(Wire, LeftoverBytesAreNotFinished) {
  WireReader reader("\x01\x02", 2);
  uint8_t byte = 0;
  ASSERT_TRUE(reader.U8(byte));
  EXPECT_FALSE(reader.Finished());
  EXPECT_EQ(1u, reader.Remaining());
}

}  // namespace
}  // namespace HostIpc
