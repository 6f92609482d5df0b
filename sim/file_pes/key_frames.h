// Tells a key frame from the video itself: the first picture of a frame
// decides. H.264: an IDR picture, or any picture after an SEI unit that holds
// a recovery point message (see sei_messages.h);
// H.265: an IRAP picture (IDR, CRA, BLA); MPEG-2: an I-picture. The bytes of
// a frame arrive packet by packet, so a start code may be split between two
// packets.
#ifndef SIM_FILE_PES_KEY_FRAMES_H_
#define SIM_FILE_PES_KEY_FRAMES_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "sim/file_pes/psi_tables.h"
#include "sim/file_pes/sei_messages.h"

enum class FrameKind { kUnknown, kKey, kOther };

class PictureScanner {
 public:
  // A codec learnt in the middle of a frame (from a PMT that came late)
  // applies to the frame's first bytes too.
  void SetCodec(VideoCodec codec);
  VideoCodec Codec() const { return codec_; }
  // A new frame (PES) begins.
  void StartFrame();
  // The next elementary stream bytes of the frame.
  void Feed(const uint8_t* data, size_t size);
  // kUnknown until the frame's first picture header has been read.
  FrameKind Kind() const { return kind_; }

 private:
  // Bytes read after a start code before its unit is judged.
  static constexpr size_t kHeadSize = 3;
  // Bytes of a frame kept while its codec is not known: enough to reach the
  // first picture after parameter sets and SEI.
  static constexpr size_t kKeptWhileUnknown = 4096;
  void Scan(const uint8_t* data, size_t size);
  void Open(uint8_t header);
  void Judge();

  VideoCodec codec_ = VideoCodec::kNone;
  std::vector<uint8_t> kept_;  // the frame's first bytes, while the codec is not known
  FrameKind kind_ = FrameKind::kUnknown;
  uint32_t recent_ = 0xFFFFFFFF;  // the last bytes seen, newest lowest
  uint8_t head_[kHeadSize] = {};
  size_t headSize_ = 0;
  bool collecting_ = false;
  bool inSei_ = false;  // the current unit is an H.264 SEI unit
  SeiReader sei_;
  bool recoveryPoint_ = false;
};

#endif  // SIM_FILE_PES_KEY_FRAMES_H_
