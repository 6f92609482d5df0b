#include "sim/file_pes/key_frames.h"

void PictureScanner::SetCodec(VideoCodec codec) {
  const bool learnt = codec_ == VideoCodec::kNone && codec != VideoCodec::kNone;
  codec_ = codec;
  if (learnt && !kept_.empty()) {
    std::vector<uint8_t> kept;
    kept.swap(kept_);
    Scan(kept.data(), kept.size());
    if (kept.size() == kKeptWhileUnknown) {
      // Bytes were dropped after these: no unit runs on across the gap.
      recent_ = 0xFFFFFFFF;
      collecting_ = false;
      inSei_ = false;
    }
  }
  kept_.clear();
}

void PictureScanner::StartFrame() {
  kept_.clear();
  kind_ = FrameKind::kUnknown;
  recent_ = 0xFFFFFFFF;
  headSize_ = 0;
  collecting_ = false;
  inSei_ = false;
  recoveryPoint_ = false;
}

void PictureScanner::Feed(const uint8_t* data, size_t size) {
  if (codec_ == VideoCodec::kNone) {
    const size_t room = kKeptWhileUnknown - kept_.size();
    kept_.insert(kept_.end(), data, data + (size < room ? size : room));
    return;
  }
  Scan(data, size);
}

void PictureScanner::Scan(const uint8_t* data, size_t size) {
  if (kind_ != FrameKind::kUnknown || codec_ == VideoCodec::kOther) {
    return;  // decided, or a bitstream this scanner cannot read
  }
  for (size_t i = 0; i < size && kind_ == FrameKind::kUnknown; ++i) {
    const uint8_t byte = data[i];
    if ((recent_ & 0xFFFFFF) == 0x000001) {
      Open(byte);  // this byte follows a start code: it opens a unit
    } else if (inSei_) {
      // The start code that ends the unit reaches the reader too; by then
      // it has read the trailing bits and takes no more.
      sei_.Feed(byte);
      recoveryPoint_ = recoveryPoint_ || sei_.RecoveryPoint();
    } else if (collecting_) {
      head_[headSize_++] = byte;
      if (headSize_ == kHeadSize) {
        collecting_ = false;
        Judge();
      }
    }
    recent_ = (recent_ << 8) | byte;
  }
}

void PictureScanner::Open(uint8_t header) {
  inSei_ = false;
  collecting_ = false;
  if (codec_ != VideoCodec::kH264) {
    head_[0] = header;
    headSize_ = 1;
    collecting_ = true;
    return;
  }
  // An H.264 unit is judged from its header byte alone.
  const unsigned type = header & 0x1Fu;
  if (type == 5) {
    kind_ = FrameKind::kKey;
  } else if (type >= 1 && type <= 4) {
    kind_ = recoveryPoint_ ? FrameKind::kKey : FrameKind::kOther;
  } else if (type == 6) {
    inSei_ = true;
    sei_.Start();
  }
}

void PictureScanner::Judge() {
  switch (codec_) {
    case VideoCodec::kH265: {
      const unsigned type = (head_[0] >> 1) & 0x3Fu;
      if (type < 32) {  // a slice of a picture
        kind_ = type >= 16 && type <= 23 ? FrameKind::kKey : FrameKind::kOther;
      }
      break;
    }
    case VideoCodec::kMpeg2:
      if (head_[0] == 0x00) {  // picture header: picture_coding_type 1 is I
        kind_ = ((head_[2] >> 3) & 0x7u) == 1 ? FrameKind::kKey : FrameKind::kOther;
      }
      break;
    default:
      break;
  }
}
