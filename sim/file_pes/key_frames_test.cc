// Telling key frames from the pictures of H.264, H.265 and MPEG-2.
#include "sim/file_pes/key_frames.h"

#include <gtest/gtest.h>

#include <string>

#include "sim/file_pes/ts_builder.h"

namespace {

// Feeds a frame's bytes in pieces of `piece` bytes.
FrameKind KindOf(VideoCodec codec, const std::string& frame, size_t piece = 1000) {
  PictureScanner scanner;
  scanner.SetCodec(codec);
  scanner.StartFrame();
  for (size_t at = 0; at < frame.size(); at += piece) {
    const std::string part = frame.substr(at, piece);
    scanner.Feed(reinterpret_cast<const uint8_t*>(part.data()), part.size());
  }
  return scanner.Kind();
}

TEST(KeyFrames, H264) {
  EXPECT_EQ(FrameKind::kKey, KindOf(VideoCodec::kH264, H264Picture(true)));
  EXPECT_EQ(FrameKind::kOther, KindOf(VideoCodec::kH264, H264Picture(false)));
  EXPECT_EQ(FrameKind::kKey, KindOf(VideoCodec::kH264, H264RecoveryPointPicture()));
}

// Payloads of the messages broadcast encoders put before a key frame.
const SeiMessage kBufferingPeriod{0, std::string("\x8F\x06\x40", 3)};
const SeiMessage kPictureTiming{1, std::string("\x06\x06\x06\x80", 4)};
const SeiMessage kRecoveryPoint{6, std::string("\x84\x80", 2)};
const SeiMessage kRegistered{4, std::string("\xB5\x00\x31\x06\x06", 5)};

TEST(KeyFrames, RecoveryPointAnywhereInAnSeiUnit) {
  // The payload bytes of 6 before it must not be taken for its type.
  const std::string second = H264SeiPicture({kBufferingPeriod, kRecoveryPoint, kPictureTiming});
  EXPECT_EQ(FrameKind::kKey, KindOf(VideoCodec::kH264, second));
  const std::string third = H264SeiPicture({kBufferingPeriod, kPictureTiming, kRecoveryPoint});
  EXPECT_EQ(FrameKind::kKey, KindOf(VideoCodec::kH264, third));
  const std::string fourth =
      H264SeiPicture({kBufferingPeriod, kPictureTiming, kRegistered, kRecoveryPoint});
  EXPECT_EQ(FrameKind::kKey, KindOf(VideoCodec::kH264, fourth, 1));
  const std::string none = H264SeiPicture({kBufferingPeriod, kPictureTiming, kRegistered});
  EXPECT_EQ(FrameKind::kOther, KindOf(VideoCodec::kH264, none));
}

TEST(KeyFrames, LongPayloadsAndLargeTypes) {
  // Sizes of 255 and more are a run of 0xFF bytes plus a last byte; a
  // payload full of sixes and 0xFF must be skipped whole.
  for (const size_t size : {254, 255, 256, 600}) {
    const SeiMessage userData{5, std::string(size, '\x06')};
    const SeiMessage filler{5, std::string(size, '\xFF')};
    EXPECT_EQ(FrameKind::kKey,
              KindOf(VideoCodec::kH264, H264SeiPicture({userData, filler, kRecoveryPoint}), 7))
        << size;
    EXPECT_EQ(FrameKind::kOther, KindOf(VideoCodec::kH264, H264SeiPicture({userData, filler})))
        << size;
  }
  // Type 6 + 255 is not a recovery point, type 255 + 6 is not either.
  EXPECT_EQ(FrameKind::kOther, KindOf(VideoCodec::kH264, H264SeiPicture({{261, "\x06"}})));
  EXPECT_EQ(FrameKind::kKey,
            KindOf(VideoCodec::kH264, H264SeiPicture({{300, "\x01"}, kRecoveryPoint})));
}

TEST(KeyFrames, EmulationPreventionBytesAreNotPayload) {
  // Zeros in a payload get a 0x03 inserted; counted as payload, it would
  // shift every later message by one byte.
  const SeiMessage zeros{5, std::string(8, '\0') + std::string("\x01\x00\x00\x02", 4)};
  const std::string picture = H264SeiPicture({zeros, kRecoveryPoint});
  ASSERT_NE(std::string::npos, picture.find(std::string("\0\0\x03\0", 4)));
  EXPECT_EQ(FrameKind::kKey, KindOf(VideoCodec::kH264, picture));
  EXPECT_EQ(FrameKind::kOther, KindOf(VideoCodec::kH264, H264SeiPicture({zeros})));
}

TEST(KeyFrames, SeiUnitsEndAtTheirTrailingBits) {
  // A recovery point in a second SEI unit counts too; bytes after the
  // trailing bits of the first (cabac zero words) are not messages.
  const std::string frame = std::string("\0\0\0\1\x06\x00\x01\x00\x80\x00\x00\x06\x06", 13) +
                            H264SeiPicture({kRecoveryPoint});
  EXPECT_EQ(FrameKind::kKey, KindOf(VideoCodec::kH264, frame));
  const std::string trailing =
      std::string("\0\0\0\1\x06\x00\x01\x00\x80\x06\x01\x00", 12) + H264Picture(false);
  EXPECT_EQ(FrameKind::kOther, KindOf(VideoCodec::kH264, trailing));
}

TEST(KeyFrames, H265) {
  EXPECT_EQ(FrameKind::kKey, KindOf(VideoCodec::kH265, H265Picture(19)));   // IDR_W_RADL
  EXPECT_EQ(FrameKind::kKey, KindOf(VideoCodec::kH265, H265Picture(20)));   // IDR_N_LP
  EXPECT_EQ(FrameKind::kKey, KindOf(VideoCodec::kH265, H265Picture(21)));   // CRA
  EXPECT_EQ(FrameKind::kKey, KindOf(VideoCodec::kH265, H265Picture(16)));   // BLA_W_LP
  EXPECT_EQ(FrameKind::kOther, KindOf(VideoCodec::kH265, H265Picture(1)));  // TRAIL_R
  EXPECT_EQ(FrameKind::kOther, KindOf(VideoCodec::kH265, H265Picture(9)));  // RASL_R
}

TEST(KeyFrames, Mpeg2) {
  const std::string sequence = std::string("\0\0\1\xB3\x0C\x00\x90\x13", 8);
  EXPECT_EQ(FrameKind::kKey, KindOf(VideoCodec::kMpeg2, sequence + Mpeg2Picture(1)));
  EXPECT_EQ(FrameKind::kOther, KindOf(VideoCodec::kMpeg2, Mpeg2Picture(2)));
  EXPECT_EQ(FrameKind::kOther, KindOf(VideoCodec::kMpeg2, Mpeg2Picture(3)));
}

TEST(KeyFrames, StartCodeSplitAnywhereIsFound) {
  // Every way of cutting the picture's bytes in two.
  const std::string frame = std::string(20, '\x5A') + H264Picture(true);
  for (size_t cut = 1; cut < frame.size(); ++cut) {
    PictureScanner scanner;
    scanner.SetCodec(VideoCodec::kH264);
    scanner.StartFrame();
    scanner.Feed(reinterpret_cast<const uint8_t*>(frame.data()), cut);
    scanner.Feed(reinterpret_cast<const uint8_t*>(frame.data()) + cut, frame.size() - cut);
    EXPECT_EQ(FrameKind::kKey, scanner.Kind()) << cut;
  }
  EXPECT_EQ(FrameKind::kKey, KindOf(VideoCodec::kH265, H265Picture(19), 1));
  EXPECT_EQ(FrameKind::kKey, KindOf(VideoCodec::kMpeg2, Mpeg2Picture(1), 1));
}

TEST(KeyFrames, UnreadableOrUnknown) {
  EXPECT_EQ(FrameKind::kUnknown, KindOf(VideoCodec::kH264, std::string(500, '\xA5')));
  EXPECT_EQ(FrameKind::kUnknown, KindOf(VideoCodec::kOther, H264Picture(true)));
  EXPECT_EQ(FrameKind::kUnknown, KindOf(VideoCodec::kNone, H264Picture(true)));
  // A start code at the very end, its unit never seen.
  EXPECT_EQ(FrameKind::kUnknown, KindOf(VideoCodec::kH264, std::string("\0\0\1", 3)));
}

TEST(KeyFrames, CodecLearntInTheMiddleOfAFrame) {
  // The frame's first bytes came before the PMT: they are read once the
  // codec is known.
  // The SEI unit runs on from the bytes kept to those after.
  const SeiMessage userData{5, std::string(700, '\x5A')};
  for (const bool recovery : {true, false}) {
    PictureScanner scanner;
    scanner.StartFrame();
    const std::string frame = recovery ? H264SeiPicture({userData, {6, std::string("\x84\x80", 2)}})
                                       : H264SeiPicture({userData});
    scanner.Feed(reinterpret_cast<const uint8_t*>(frame.data()), 300);
    EXPECT_EQ(FrameKind::kUnknown, scanner.Kind());
    scanner.SetCodec(VideoCodec::kH264);
    scanner.Feed(reinterpret_cast<const uint8_t*>(frame.data()) + 300, frame.size() - 300);
    EXPECT_EQ(recovery ? FrameKind::kKey : FrameKind::kOther, scanner.Kind());
  }
  PictureScanner scanner;
  scanner.StartFrame();
  const std::string idr = H264Picture(true);
  scanner.Feed(reinterpret_cast<const uint8_t*>(idr.data()), idr.size());
  scanner.SetCodec(VideoCodec::kH264);
  EXPECT_EQ(FrameKind::kKey, scanner.Kind());
}

TEST(KeyFrames, EachFrameIsJudgedAfresh) {
  PictureScanner scanner;
  scanner.SetCodec(VideoCodec::kH264);
  scanner.StartFrame();
  const std::string recovery = H264RecoveryPointPicture();
  scanner.Feed(reinterpret_cast<const uint8_t*>(recovery.data()), recovery.size());
  EXPECT_EQ(FrameKind::kKey, scanner.Kind());
  scanner.StartFrame();
  EXPECT_EQ(FrameKind::kUnknown, scanner.Kind());
  const std::string plain = H264Picture(false);
  scanner.Feed(reinterpret_cast<const uint8_t*>(plain.data()), plain.size());
  EXPECT_EQ(FrameKind::kOther, scanner.Kind());  // the recovery point was the last frame's
}

}  // namespace
