// Walking the messages of an SEI unit.
#include "sim/file_pes/sei_messages.h"

#include <gtest/gtest.h>

#include <string>

namespace {

SeiReader Read(const std::string& bytes) {
  SeiReader reader;
  reader.Start();
  for (const char c : bytes) reader.Feed(static_cast<uint8_t>(c));
  return reader;
}

TEST(SeiMessages, RecoveryPointAfterOtherMessages) {
  // Buffering period (size 2), picture timing (size 1), recovery point.
  const SeiReader reader =
      Read(std::string("\x00\x02\x06\x06\x01\x01\x06\x06\x02\x84\x80\x80", 12));
  EXPECT_TRUE(reader.RecoveryPoint());
  EXPECT_TRUE(reader.Done());
}

TEST(SeiMessages, TypeAndSizeRunsOfFf) {
  // Type 255 + 6, then size 255 + 1: neither the type nor the payload of
  // sixes is a recovery point.
  const std::string payload(256, '\x06');
  const SeiReader reader = Read(std::string("\xFF\x06\xFF\x01", 4) + payload + "\x80");
  EXPECT_FALSE(reader.RecoveryPoint());
  EXPECT_TRUE(reader.Done());
}

TEST(SeiMessages, EmulationPreventionByteIsDropped) {
  // Payload 00 00 00 written as 00 00 03 00; the recovery point follows.
  const SeiReader reader = Read(std::string("\x05\x03\x00\x00\x03\x00\x06\x01\x00\x80", 10));
  EXPECT_TRUE(reader.RecoveryPoint());
  EXPECT_TRUE(reader.Done());
  // Counted as payload, the 03 would make the 06 the payload's last byte.
  EXPECT_FALSE(Read(std::string("\x05\x04\x00\x00\x03\x00\x06\x01\x00\x80", 10)).RecoveryPoint());
}

TEST(SeiMessages, NothingAfterTheTrailingBits) {
  const SeiReader reader = Read(std::string("\x01\x01\x00\x80\x06\x01\x00", 7));
  EXPECT_TRUE(reader.Done());
  EXPECT_FALSE(reader.RecoveryPoint());
  // A unit cut short is not done.
  EXPECT_FALSE(Read(std::string("\x01\x05\x00", 3)).Done());
}

}  // namespace
