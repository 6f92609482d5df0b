// Telling key frames from the pictures of H.264, H.265 and MPEG-2.
#include "sim/file_pes/key_frames.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/file_pes/ts_builder.h"

namespace {

std::string Word(FrameKind kind) {
  return kind == FrameKind::kKey ? "key" : kind == FrameKind::kOther ? "other" : "unknown";
}

void Feed(PictureScanner& scanner, const std::string& bytes) {
  scanner.Feed(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

// The kind of each frame, fed in pieces of `piece` bytes, one word each.
std::string Kinds(VideoCodec codec, const std::vector<std::string>& frames, size_t piece = 1000) {
  std::string words;
  for (const std::string& frame : frames) {
    PictureScanner scanner;
    scanner.SetCodec(codec);
    scanner.StartFrame();
    for (size_t at = 0; at < frame.size(); at += piece) Feed(scanner, frame.substr(at, piece));
    words += (words.empty() ? "" : " ") + Word(scanner.Kind());
  }
  return words;
}

TEST(KeyFrames, H264) {
  EXPECT_EQ("key other key", Kinds(VideoCodec::kH264, {H264Picture(true), H264Picture(false),
                                                       H264RecoveryPointPicture()}));
}

// Payloads of the messages broadcast encoders put before a key frame.
const SeiMessage kBufferingPeriod{0, std::string("\x8F\x06\x40", 3)};
const SeiMessage kPictureTiming{1, std::string("\x06\x06\x06\x80", 4)};
const SeiMessage kRecoveryPoint{6, std::string("\x84\x80", 2)};
const SeiMessage kRegistered{4, std::string("\xB5\x00\x31\x06\x06", 5)};

TEST(KeyFrames, RecoveryPointAnywhereInAnSeiUnit) {
  // The payload bytes of 6 before it must not be taken for its type.
  EXPECT_EQ(
      "key key other",
      Kinds(VideoCodec::kH264, {H264SeiPicture({kBufferingPeriod, kRecoveryPoint, kPictureTiming}),
                                H264SeiPicture({kBufferingPeriod, kPictureTiming, kRecoveryPoint}),
                                H264SeiPicture({kBufferingPeriod, kPictureTiming, kRegistered})}));
  EXPECT_EQ(
      "key",
      Kinds(VideoCodec::kH264,
            {H264SeiPicture({kBufferingPeriod, kPictureTiming, kRegistered, kRecoveryPoint})}, 1));
}

TEST(KeyFrames, LongPayloadsAndLargeTypes) {
  // Sizes of 255 and more are a run of 0xFF bytes plus a last byte; a
  // payload full of sixes and 0xFF must be skipped whole.
  for (const size_t size : {254, 255, 256, 600}) {
    const SeiMessage userData{5, std::string(size, '\x06')};
    const SeiMessage filler{5, std::string(size, '\xFF')};
    EXPECT_EQ("key",
              Kinds(VideoCodec::kH264, {H264SeiPicture({userData, filler, kRecoveryPoint})}, 7))
        << size;
    EXPECT_EQ("other", Kinds(VideoCodec::kH264, {H264SeiPicture({userData, filler})})) << size;
  }
  // Type 6 + 255 is not a recovery point, type 255 + 6 is not either.
  EXPECT_EQ("other key",
            Kinds(VideoCodec::kH264, {H264SeiPicture({{261, "\x06"}}),
                                      H264SeiPicture({{300, "\x01"}, kRecoveryPoint})}));
}

TEST(KeyFrames, EmulationPreventionBytesAreNotPayload) {
  // Zeros in a payload get a 0x03 inserted; counted as payload, it would
  // shift every later message by one byte.
  const SeiMessage zeros{5, std::string(8, '\0') + std::string("\x01\x00\x00\x02", 4)};
  const std::string picture = H264SeiPicture({zeros, kRecoveryPoint});
  ASSERT_NE(std::string::npos, picture.find(std::string("\0\0\x03\0", 4)));
  EXPECT_EQ("key other", Kinds(VideoCodec::kH264, {picture, H264SeiPicture({zeros})}));
}

TEST(KeyFrames, SeiUnitsEndAtTheirTrailingBits) {
  // A recovery point in a second SEI unit counts too; bytes after the
  // trailing bits of the first (cabac zero words) are not messages.
  EXPECT_EQ("key other", Kinds(VideoCodec::kH264,
                               {std::string("\0\0\0\1\x06\x00\x01\x00\x80\x00\x00\x06\x06", 13) +
                                    H264SeiPicture({kRecoveryPoint}),
                                std::string("\0\0\0\1\x06\x00\x01\x00\x80\x06\x01\x00", 12) +
                                    H264Picture(false)}));
}

TEST(KeyFrames, H265) {
  // IDR_W_RADL, IDR_N_LP, CRA, BLA_W_LP, TRAIL_R, RASL_R.
  EXPECT_EQ("key key key key other other",
            Kinds(VideoCodec::kH265, {H265Picture(19), H265Picture(20), H265Picture(21),
                                      H265Picture(16), H265Picture(1), H265Picture(9)}));
}

TEST(KeyFrames, Mpeg2) {
  const std::string sequence = std::string("\0\0\1\xB3\x0C\x00\x90\x13", 8);
  EXPECT_EQ("key other other", Kinds(VideoCodec::kMpeg2, {sequence + Mpeg2Picture(1),
                                                          Mpeg2Picture(2), Mpeg2Picture(3)}));
}

TEST(KeyFrames, StartCodeSplitAnywhereIsFound) {
  // Every way of cutting the picture's bytes in two.
  const std::string frame = std::string(20, '\x5A') + H264Picture(true);
  for (size_t cut = 1; cut < frame.size(); ++cut) {
    PictureScanner scanner;
    scanner.SetCodec(VideoCodec::kH264);
    scanner.StartFrame();
    Feed(scanner, frame.substr(0, cut));
    Feed(scanner, frame.substr(cut));
    EXPECT_EQ(FrameKind::kKey, scanner.Kind()) << cut;
  }
  EXPECT_EQ("key", Kinds(VideoCodec::kH265, {H265Picture(19)}, 1));
  EXPECT_EQ("key", Kinds(VideoCodec::kMpeg2, {Mpeg2Picture(1)}, 1));
}

TEST(KeyFrames, UnreadableOrUnknown) {
  // The last: a start code at the very end, its unit never seen.
  EXPECT_EQ("unknown unknown",
            Kinds(VideoCodec::kH264, {std::string(500, '\xA5'), std::string("\0\0\1", 3)}));
  EXPECT_EQ("unknown", Kinds(VideoCodec::kOther, {H264Picture(true)}));
  EXPECT_EQ("unknown", Kinds(VideoCodec::kNone, {H264Picture(true)}));
}

TEST(KeyFrames, CodecLearntInTheMiddleOfAFrame) {
  // The frame's first bytes came before the PMT: they are read once the
  // codec is known. The SEI unit runs on from the bytes kept to those after.
  const auto learnt = [](const std::string& frame, size_t before) {
    PictureScanner scanner;
    scanner.StartFrame();
    Feed(scanner, frame.substr(0, before));
    const std::string kind = Word(scanner.Kind());
    scanner.SetCodec(VideoCodec::kH264);
    Feed(scanner, frame.substr(before));
    return kind + " " + Word(scanner.Kind());
  };
  const SeiMessage userData{5, std::string(700, '\x5A')};
  EXPECT_EQ("unknown key", learnt(H264SeiPicture({userData, kRecoveryPoint}), 300));
  EXPECT_EQ("unknown other", learnt(H264SeiPicture({userData}), 300));
  EXPECT_EQ("unknown key", learnt(H264Picture(true), H264Picture(true).size()));  // all before
}

TEST(KeyFrames, EachFrameIsJudgedAfresh) {
  PictureScanner scanner;
  scanner.SetCodec(VideoCodec::kH264);
  scanner.StartFrame();
  Feed(scanner, H264RecoveryPointPicture());
  std::string kinds = Word(scanner.Kind());
  scanner.StartFrame();
  kinds += " " + Word(scanner.Kind());
  Feed(scanner, H264Picture(false));
  // The recovery point was the last frame's.
  EXPECT_EQ("key unknown other", kinds + " " + Word(scanner.Kind()));
}

}  // namespace
