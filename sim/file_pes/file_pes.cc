#include "sim/file_pes/file_pes.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iomanip>
#include <vector>

#include "sim/file_pes/split_points.h"
#include "sim/file_pes/ts_packet.h"

const char kFilePesHelp[] =
    "usage: filePes -a FILE\n"
    "\n"
    "Checks the split points of the MPEG transport stream FILE (188-byte packets,\n"
    "each beginning with the sync byte 0x47) and prints one line per split point;\n"
    "each line about a problem holds FAIL. Exit status 0 when all pass, 1 when one\n"
    "fails, 2 for a bad command line.\n"
    "\n"
    "Model of the stream:\n"
    "  - every packet that carries a PCR is a possible split point;\n"
    "  - the video is the first PID on which a PES with a video stream id\n"
    "    (0xE0-0xEF) begins; each of its PES packets is one frame, timed by its\n"
    "    PTS, and a frame whose first packet has the random access indicator set\n"
    "    in its adaptation field is a key frame.\n"
    "A split point passes when\n"
    "  A) it is playable within 2 seconds: a key frame begins at or after it with\n"
    "     a PTS at most 2 seconds (180000 ticks of 90 kHz) after its PCR, and\n"
    "  B) it is on a frame boundary: its packet is the first packet of a frame.\n"
    "A file that cannot be read, loses sync, ends inside a packet or has no split\n"
    "point at all fails as well.\n";

namespace {

// Seconds of the 90 kHz clock from `from` to `to`, across the 33-bit wrap.
double Seconds(uint64_t from, uint64_t to) {
  return static_cast<double>((to - from) & kClockMask) / static_cast<double>(kClockHz);
}

void Report(const SplitPoint& point, size_t index, uint64_t firstPcr, std::ostream& out) {
  out << (point.Passes() ? "ok   " : "FAIL ") << "split point " << index + 1 << " at packet "
      << point.packet << " (" << Seconds(firstPcr, point.pcrBase) << " s): ";
  if (!point.onFrameBoundary) {
    out << "not on a frame boundary, ";
  }
  if (!point.keyFrameDelay) {
    out << "no key frame follows";
  } else {
    out << (point.Playable() ? "" : "no ") << "key frame within 2 seconds (after "
        << static_cast<double>(*point.keyFrameDelay) / static_cast<double>(kClockHz) << " s)";
  }
  out << "\n";
}

// Feeds every whole packet of `file` to `scanner`. False, with the FAIL line
// written, when the stream loses sync or ends inside a packet.
bool Scan(std::FILE* file, SplitPointScanner& scanner, std::ostream& out) {
  std::vector<uint8_t> buffer(kPacketSize * 1024);
  uint64_t packets = 0;
  size_t filled = 0;
  for (;;) {
    const size_t n = std::fread(buffer.data() + filled, 1, buffer.size() - filled, file);
    filled += n;
    size_t used = 0;
    for (; filled - used >= kPacketSize; used += kPacketSize, ++packets) {
      const TsPacket packet = ParsePacket(buffer.data() + used);
      if (!packet.synced) {
        out << "FAIL packet " << packets << " has no sync byte (byte " << packets * kPacketSize
            << "); the rest of the file is not read\n";
        return false;
      }
      scanner.Add(packet);
    }
    std::memmove(buffer.data(), buffer.data() + used, filled - used);
    filled -= used;
    if (n == 0) {
      break;
    }
  }
  if (filled != 0) {
    out << "FAIL " << filled << " bytes after the last whole packet\n";
    return false;
  }
  return true;
}

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
  SplitPointScanner scanner;
  bool passed = Scan(file, scanner, out);
  if (std::ferror(file)) {
    out << "FAIL cannot read " << path << ": " << std::strerror(errno) << "\n";
    passed = false;
  }
  std::fclose(file);

  const std::vector<SplitPoint> points = scanner.Result();
  if (points.empty()) {
    out << "FAIL no split point: no packet carries a PCR\n";
    return 1;
  }
  out << std::fixed << std::setprecision(3);
  size_t failed = 0;
  for (size_t i = 0; i < points.size(); ++i) {
    Report(points[i], i, points.front().pcrBase, out);
    failed += points[i].Passes() ? 0 : 1;
  }
  out << points.size() << " split points, " << failed << " failed" << std::endl;
  return passed && failed == 0 ? 0 : 1;
}
