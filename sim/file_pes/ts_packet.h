// One MPEG transport stream packet (its 188 bytes from the sync byte on),
// reduced to what the split-point check needs: the PID, where a PES starts,
// the adaptation field's flags and PCR, the PES header's stream id and PTS,
// and where the payload lies.
#ifndef SIM_FILE_PES_TS_PACKET_H_
#define SIM_FILE_PES_TS_PACKET_H_

#include <cstddef>
#include <cstdint>

constexpr size_t kPacketSize = 188;
constexpr uint8_t kSyncByte = 0x47;
// PCR bases and PTS values count a 90 kHz clock in 33 bits.
constexpr uint64_t kClockMask = (uint64_t{1} << 33) - 1;
constexpr uint64_t kClockHz = 90000;

struct TsPacket {
  bool synced = false;  // the packet begins with the sync byte
  uint16_t pid = 0;
  bool unitStart = false;      // payload_unit_start_indicator: a PES begins here
  bool randomAccess = false;   // adaptation field random_access_indicator
  bool discontinuity = false;  // adaptation field discontinuity_indicator
  bool hasPcr = false;
  uint64_t pcrBase = 0;   // 90 kHz part of the PCR
  bool pesStart = false;  // the payload begins with a PES start code
  uint8_t streamId = 0;   // of that PES
  bool hasPts = false;
  uint64_t pts = 0;
  // The payload: the PES header included where one begins. Points into the
  // bytes given to ParsePacket; null when the packet carries none.
  const uint8_t* payload = nullptr;
  size_t payloadSize = 0;
  // Where the elementary stream bytes begin within the payload: after the PES
  // header when the packet begins a PES, else 0.
  size_t dataOffset = 0;
};

// Reads the packet at `bytes` (kPacketSize bytes). Fields that the packet
// does not carry, or carries malformed, stay at their defaults.
TsPacket ParsePacket(const uint8_t* bytes);

// True for the PES stream ids of video (0xE0 to 0xEF).
inline bool IsVideoStream(uint8_t streamId) { return (streamId & 0xF0) == 0xE0; }

#endif  // SIM_FILE_PES_TS_PACKET_H_
