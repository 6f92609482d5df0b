#include "recorder/host/wire.h"

#include <gtest/gtest.h>

namespace HostIpc {
namespace {

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
  EXPECT_EQ(255, u8);
  EXPECT_EQ(65535, u16);
  EXPECT_EQ(4294967295u, u32);
  EXPECT_EQ(-2147483647 - 1, i32);
  EXPECT_TRUE(yes);
  EXPECT_FALSE(no);
  EXPECT_EQ(std::string("a\0b\xff", 4), text);
  EXPECT_EQ("", empty);
  EXPECT_TRUE(reader.Finished());
}

TEST(Wire, ReadingPastTheEndFailsAndStaysFailed) {
  const std::string bytes("\x01\x02\x03", 3);
  WireReader reader(bytes);
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
  const std::string bytes(
      "\xff\xff\xff\xff"
      "abc",
      7);
  WireReader reader(bytes);
  std::string text;
  EXPECT_FALSE(reader.String(text));
}

TEST(Wire, OnlyZeroAndOneAreBooleans) {
  const std::string bytes("\x02", 1);
  WireReader reader(bytes);
  bool value = false;
  EXPECT_FALSE(reader.Bool(value));
}

TEST(Wire, LeftoverBytesAreNotFinished) {
  const std::string bytes("\x01\x02", 2);
  WireReader reader(bytes);
  uint8_t byte = 0;
  ASSERT_TRUE(reader.U8(byte));
  EXPECT_FALSE(reader.Finished());
  EXPECT_EQ(1u, reader.Remaining());
}

}  // namespace
}  // namespace HostIpc
