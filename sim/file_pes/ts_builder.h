// Writes small transport streams for tests and sample disks: packets with a
// chosen PID, PCR, random access flag and PES header, and whole streams of
// frames shaped to pass or fail the split-point check.
#ifndef SIM_FILE_PES_TS_BUILDER_H_
#define SIM_FILE_PES_TS_BUILDER_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct PacketSpec {
  uint16_t pid = 0x100;
  bool unitStart = false;
  bool randomAccess = false;
  std::optional<uint64_t> pcrBase;
  std::optional<uint8_t> streamId;  // a PES header begins the payload
  std::optional<uint64_t> pts;      // in that header
  uint8_t continuity = 0;
  bool discontinuity = false;  // the adaptation field's discontinuity indicator
  bool noPayload = false;      // an adaptation field only (a PCR-only packet)
  std::string data;            // elementary stream bytes after the PES header
};

// One 188-byte packet.
std::string MakePacket(const PacketSpec& fields);

// The first packet of a frame of video on PID 0x100: a PES header with the
// PTS, the PCR when given.
PacketSpec FrameStart(uint64_t pts, std::optional<uint64_t> pcr, bool randomAccess);

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

// The PAT naming each program's PMT PID, and a PMT: one packet each.
struct TableProgram {
  uint16_t program = 1;
  uint16_t pmtPid = 0x1000;
};
std::string MakePat(const std::vector<TableProgram>& programs);
struct TableStream {
  uint8_t streamType = 0x1B;  // H.264
  uint16_t pid = 0x100;
};
std::string MakePmt(const TableProgram& program, uint16_t pcrPid,
                    const std::vector<TableStream>& streams);

// Start codes and first bytes of pictures, as a frame's data.
std::string H264Picture(bool idr);       // access unit delimiter, then a slice
std::string H264RecoveryPointPicture();  // recovery point SEI, then a non-IDR slice
struct SeiMessage {
  unsigned type = 0;
  std::string payload;
};
// One SEI unit holding the messages (emulation prevention applied), then a
// non-IDR slice.
std::string H264SeiPicture(const std::vector<SeiMessage>& messages);
std::string H265Picture(uint8_t nalType);      // e.g. 19 (IDR), 21 (CRA), 1 (trailing)
std::string Mpeg2Picture(uint8_t codingType);  // 1 I, 2 P, 3 B

// The same packets with a 4-byte time code before each (192 bytes) or 16
// bytes of parity after each (204 bytes).
std::string ResizePackets(const std::string& stream, size_t size);

// A video stream on PID 0x100 (audio on 0x101) of the given shape.
std::string MakeStream(const StreamShape& shape);

#endif  // SIM_FILE_PES_TS_BUILDER_H_
