#include "sim/file_pes/sei_messages.h"

void SeiReader::Start() {
  state_ = State::kType;
  value_ = 0;
  remaining_ = 0;
  zeros_ = 0;
  recoveryPoint_ = false;
}

void SeiReader::Feed(uint8_t byte) {
  if (state_ == State::kDone) {
    return;
  }
  if (zeros_ >= 2 && byte == 0x03) {
    zeros_ = 0;  // inserted so that the payload never looks like a start code
    return;
  }
  zeros_ = byte == 0x00 ? zeros_ + 1 : 0;
  Read(byte);
}

void SeiReader::Read(uint8_t byte) {
  switch (state_) {
    case State::kType:
      if (value_ == 0 && byte == 0x80) {
        state_ = State::kDone;  // the stop bit: no further message
        return;
      }
      value_ += byte;
      if (byte != 0xFF) {
        recoveryPoint_ = recoveryPoint_ || value_ == kRecoveryPointSei;
        value_ = 0;
        state_ = State::kSize;
      }
      return;
    case State::kSize:
      value_ += byte;
      if (byte != 0xFF) {
        remaining_ = value_;
        value_ = 0;
        state_ = remaining_ == 0 ? State::kType : State::kPayload;
      }
      return;
    case State::kPayload:
      if (--remaining_ == 0) {
        state_ = State::kType;
      }
      return;
    case State::kDone:
      return;
  }
}
