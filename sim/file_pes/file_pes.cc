#include "sim/file_pes/file_pes.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "sim/file_pes/packet_reader.h"
#include "sim/file_pes/split_points.h"
#include "sim/file_pes/ts_packet.h"

const char kFilePesHelp[] =
    "usage: filePes -a FILE\n"
    "\n"
    "Checks the split points of the MPEG transport stream FILE and prints one line\n"
    "per split point; each line about a problem holds FAIL. Exit status 0 when all\n"
    "pass, 1 when one fails, 2 for a bad command line.\n"
    "\n"
    "Model of the stream:\n"
    "  - packets of 188, 192 (a time code first) or 204 bytes, the size found from\n"
    "    the data; bytes where packets do not line up (garbage, a torn write) are\n"
    "    skipped with a FAIL line saying which, and reading goes on after them;\n"
    "  - every packet that carries a PCR is a possible split point, judged against\n"
    "    the video of the program whose PCR PID it is (PAT and PMT): the video that\n"
    "    carries the PCR, else the program's first video; before any tables, the\n"
    "    first PID on which a PES with a video stream id (0xE0-0xEF) begins;\n"
    "  - each PES of that video is one frame, timed by its PTS; a key frame is an\n"
    "    H.264 IDR picture or a picture after an SEI unit holding a recovery point\n"
    "    message, an H.265 IRAP picture (IDR, CRA, BLA) or an MPEG-2 I-picture, the\n"
    "    codec taken from the stream type a PMT gives the video's PID, even when\n"
    "    the PMT comes late or once; where the codec or the picture cannot be\n"
    "    read, a frame whose first packet has the random access indicator set;\n"
    "  - the clock runs on across a discontinuity: a PCR with the discontinuity\n"
    "    indicator, or one that steps back or more than 2 seconds forward, is\n"
    "    taken to follow the previous PCR after the PCR interval before it. Each\n"
    "    discontinuity gets a note line.\n"
    "A split point passes when\n"
    "  A) it is playable within 2 seconds: a key frame begins at or after it with\n"
    "     a PTS at most 2 seconds (180000 ticks of 90 kHz) after its PCR, measured\n"
    "     on the clock of the split point's own PCR PID; a PTS up to 2 seconds\n"
    "     before the PCR (a multiplex running behind) is accepted, one further\n"
    "     behind fails as a late key frame, and\n"
    "  B) it is on a frame boundary: the video's next packet with payload, from the\n"
    "     split point on, begins a frame (before any tables: its own packet does).\n"
    "A file that cannot be read, ends inside a packet or has no split point at all\n"
    "fails as well.\n";

namespace {

double Seconds(int64_t ticks) { return static_cast<double>(ticks) / static_cast<double>(kClockHz); }

void Report(const SplitPoint& point, uint64_t number, std::ostream& out) {
  out << (point.Passes() ? "ok   " : "FAIL ") << "split point " << number << " at packet "
      << point.packet << " (" << Seconds(point.time) << " s): ";
  if (!point.onFrameBoundary) {
    out << "not on a frame boundary, ";
  }
  if (!point.keyFrameDelay) {
    out << "no key frame follows";
  } else if (point.Late()) {
    out << "key frame late by " << Seconds(-*point.keyFrameDelay)
        << " s (more than 2 seconds before its PCR)";
  } else {
    out << (point.Playable() ? "" : "no ") << "key frame within 2 seconds (after "
        << Seconds(*point.keyFrameDelay) << " s)";
  }
  out << "\n";
}

// Hands the packets of the file to the scanner and the bytes between them
// to the report.
class Reading : public PacketSink {
 public:
  explicit Reading(SplitPointScanner& scanner) : scanner_(scanner) {}
  void OnPacket(const uint8_t* packet, uint64_t) override { scanner_.Add(ParsePacket(packet)); }
  void OnSkip(uint64_t from, uint64_t bytes, uint64_t packetsBefore, size_t resumeSize) override {
    std::ostringstream line;
    line << "FAIL packet " << packetsBefore << " has no sync byte (byte " << from << "); ";
    if (resumeSize != 0) {
      line << "skipped " << bytes << " bytes, packets of " << resumeSize << " bytes go on at byte "
           << from + bytes;
    } else {
      line << "the remaining " << bytes << " bytes hold no packets";
    }
    scanner_.AddNote(line.str(), true);
    failed_ = true;
  }
  void OnTail(uint64_t bytes) override {
    scanner_.AddNote("FAIL " + std::to_string(bytes) + " bytes after the last whole packet", true);
    failed_ = true;
  }
  bool Failed() const { return failed_; }

 private:
  SplitPointScanner& scanner_;
  bool failed_ = false;
};

// Writes the judged lines; counts split points and failures.
struct Tally {
  uint64_t points = 0;
  uint64_t failed = 0;
  void Write(const std::vector<ReportItem>& items, std::ostream& out) {
    for (const ReportItem& item : items) {
      if (!item.isPoint) {
        out << item.note << "\n";
        continue;
      }
      Report(item.point, ++points, out);
      failed += item.point.Passes() ? 0 : 1;
    }
  }
};

}  // namespace

int AnalyzeStreamFile(const char* path, std::ostream& out) {
  // A FIFO, socket or device is refused before the open, which could wait for
  // ever; a folder fails the open by itself.
  struct stat info;
  if (stat(path, &info) == 0 && !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode)) {
    out << "FAIL cannot read " << path << ": not a regular file\n";
    return 1;
  }
  std::FILE* file = std::fopen(path, "rb");
  if (file == nullptr) {
    out << "FAIL cannot read " << path << ": " << std::strerror(errno) << "\n";
    return 1;
  }
  out << std::fixed << std::setprecision(3);
  SplitPointScanner scanner;
  // Lines held while a split point waits go beside the file, on its disk.
  const std::string name(path);
  const size_t slash = name.rfind('/');
  scanner.HoldIn(slash == std::string::npos ? "." : slash == 0 ? "/" : name.substr(0, slash));
  Reading reading(scanner);
  PacketReader reader(reading);
  Tally tally;
  // Large reads keep the cost per byte near that of copying it.
  std::vector<uint8_t> buffer(size_t{1} << 20);
  size_t filled = 0;
  bool readFailed = false;
  for (;;) {
    const size_t n = std::fread(buffer.data() + filled, 1, buffer.size() - filled, file);
    filled += n;
    readFailed = std::ferror(file) != 0;
    const bool atEnd = n == 0 || readFailed;
    const size_t used = reader.Feed(buffer.data(), filled, atEnd);
    std::memmove(buffer.data(), buffer.data() + used, filled - used);
    filled -= used;
    tally.Write(scanner.TakeReady(), out);
    if (atEnd) {
      break;
    }
  }
  if (readFailed) {
    scanner.AddNote(std::string("FAIL cannot read ") + path + ": " + std::strerror(errno), true);
  }
  std::fclose(file);
  scanner.Finish();
  for (auto items = scanner.TakeReady(); !items.empty(); items = scanner.TakeReady()) {
    tally.Write(items, out);
  }
  if (tally.points == 0) {
    out << "FAIL no split point: no packet carries a PCR\n";
    return 1;
  }
  out << tally.points << " split points, " << tally.failed << " failed" << std::endl;
  return !reading.Failed() && !readFailed && tally.failed == 0 ? 0 : 1;
}
