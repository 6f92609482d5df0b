// The program tables of a transport stream: the PAT (PID 0) names the PID
// of each program's PMT; a PMT names the program's PCR PID and its
// elementary streams with their types.
#ifndef SIM_FILE_PES_PSI_TABLES_H_
#define SIM_FILE_PES_PSI_TABLES_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "sim/file_pes/ts_packet.h"

enum class VideoCodec { kNone, kOther, kMpeg2, kH264, kH265 };

// The video codec of a PMT stream type; kNone for a stream that is not video.
VideoCodec CodecOfStreamType(uint8_t streamType);

struct ElementaryStream {
  uint16_t pid = 0;
  uint8_t streamType = 0;
};

struct ProgramMap {
  uint16_t program = 0;
  uint16_t pcrPid = 0;
  std::vector<ElementaryStream> streams;
};

struct ProgramEntry {
  uint16_t program = 0;
  uint16_t pmtPid = 0;
};

// The CRC that ends every table section.
uint32_t SectionCrc(const uint8_t* bytes, size_t size);

// Read whole sections (from table_id to the CRC); false when the section is
// not of that table or its CRC does not match.
bool ParsePat(const uint8_t* section, size_t size, std::vector<ProgramEntry>& programs);
bool ParsePmt(const uint8_t* section, size_t size, ProgramMap& map);

// Gathers the section that begins in one packet of a PID and may go on in
// the next ones.
class SectionCollector {
 public:
  // True when the packet completed a section; Section() then holds it.
  bool Add(const TsPacket& packet);
  const std::vector<uint8_t>& Section() const { return section_; }

 private:
  bool Complete();
  std::vector<uint8_t> section_;
  bool collecting_ = false;
};

#endif  // SIM_FILE_PES_PSI_TABLES_H_
