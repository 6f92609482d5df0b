// Writes small transport streams for tests and sample disks: packets with a
// chosen PID, PCR, random access flag and PES header, and whole streams of
// frames shaped to pass or fail the split-point check.
#ifndef SIM_FILE_PES_TS_BUILDER_H_
#define SIM_FILE_PES_TS_BUILDER_H_

#include <cstdint>
#include <optional>
#include <string>

struct PacketSpec {
  uint16_t pid = 0x100;
  bool unitStart = false;
  bool randomAccess = false;
  std::optional<uint64_t> pcrBase;
  std::optional<uint8_t> streamId;  // a PES header begins the payload
  std::optional<uint64_t> pts;      // in that header
  uint8_t continuity = 0;
};

// One 188-byte packet.
std::string MakePacket(const PacketSpec& fields);

struct StreamShape {
  int frames = 50;
  int framesPerSecond = 25;
  int keyFrameEvery = 25;  // frames between key frames; 0 for none
  int pcrEvery = 25;       // frames between PCRs (split points)
  int packetsPerFrame = 2;
  bool pcrInsideFrame = false;  // the PCR rides on a frame's second packet
  bool audio = true;            // one audio packet after every frame
  uint64_t firstPcr = 900000;   // 10 s
  uint64_t ptsLead = 9000;      // PTS runs 0.1 s ahead of the PCR
};

// A video stream on PID 0x100 (audio on 0x101) of the given shape.
std::string MakeStream(const StreamShape& shape);

#endif  // SIM_FILE_PES_TS_BUILDER_H_
