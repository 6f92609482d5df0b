// Reads the messages of one H.264 SEI NAL unit, byte by byte as the unit
// arrives, to find a recovery point among them. Encoders put several
// messages in one unit (buffering period, picture timing, recovery point,
// in any order), so every message is walked: its payload type and size are
// each a run of 0xFF bytes plus a last byte, and the unit ends with the RBSP
// trailing bits. The bytes are those of the NAL unit after its header:
// emulation-prevention bytes (the 0x03 of 00 00 03) are dropped here.
#ifndef SIM_FILE_PES_SEI_MESSAGES_H_
#define SIM_FILE_PES_SEI_MESSAGES_H_

#include <cstdint>

// The payload type of a recovery point message.
constexpr uint64_t kRecoveryPointSei = 6;

class SeiReader {
 public:
  // A new SEI unit begins with the next byte.
  void Start();
  void Feed(uint8_t byte);
  // A recovery point message has been met in this unit.
  bool RecoveryPoint() const { return recoveryPoint_; }
  // The trailing bits have been read: later bytes belong to no message.
  bool Done() const { return state_ == State::kDone; }

 private:
  enum class State { kType, kSize, kPayload, kDone };
  void Read(uint8_t byte);

  State state_ = State::kDone;
  uint64_t value_ = 0;      // of the payload type or size being read
  uint64_t remaining_ = 0;  // payload bytes still to skip
  int zeros_ = 0;           // zero bytes just before, for emulation prevention
  bool recoveryPoint_ = false;
};

#endif  // SIM_FILE_PES_SEI_MESSAGES_H_
