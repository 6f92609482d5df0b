// Fuzzes the split-point check of filePes on arbitrary bytes: packet
// finding, tables, SEI and picture parsing, clocks and the holding of report
// lines. The first byte chooses how many lines may wait in memory (so that
// short inputs reach the temporary file too) and the size of the pieces the
// bytes arrive in; the rest is the stream.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "sim/file_pes/packet_reader.h"
#include "sim/file_pes/split_points.h"
#include "sim/file_pes/ts_packet.h"

namespace {

class Sink : public PacketSink {
 public:
  explicit Sink(SplitPointScanner& scanner) : scanner_(scanner) {}
  void OnPacket(const uint8_t* packet, uint64_t index) override {
    Require(index == packets_++);
    const TsPacket parsed = ParsePacket(packet);
    Require(parsed.payloadSize <= kPacketSize && parsed.dataOffset <= parsed.payloadSize);
    scanner_.Add(parsed);
  }
  void OnSkip(uint64_t, uint64_t, uint64_t, size_t) override { scanner_.AddNote("skip", true); }
  void OnTail(uint64_t bytes) override {
    Require(bytes > 0 && bytes < 204);
    scanner_.AddNote("tail", true);
  }

 private:
  SplitPointScanner& scanner_;
  uint64_t packets_ = 0;
};

// The report comes in stream order, each batch no larger than `most`.
void Check(const std::vector<ReportItem>& items, size_t most, uint64_t& lastPacket, bool& any) {
  Require(items.size() <= most);
  for (const ReportItem& item : items) {
    if (!item.isPoint) continue;
    Require(!any || item.point.packet > lastPacket);
    lastPacket = item.point.packet;
    any = true;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  const size_t held = 1 + (data[0] & 0x0F);
  const size_t piece = size_t{64} << (data[0] >> 4 & 0x07);
  ++data;
  --size;
  SplitPointScanner scanner(held);
  Sink sink(scanner);
  PacketReader reader(sink);
  uint64_t lastPacket = 0;
  bool any = false;
  // The reader leaves up to a few packets unused: they are offered again
  // with the next piece, as filePes does with its buffer.
  std::vector<uint8_t> buffer;
  size_t at = 0;
  for (;;) {
    const size_t n = size - at < piece ? size - at : piece;
    buffer.insert(buffer.end(), data + at, data + at + n);
    at += n;
    const bool atEnd = n == 0;
    const size_t used = reader.Feed(buffer.data(), buffer.size(), atEnd);
    Require(used <= buffer.size());
    buffer.erase(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(used));
    Check(scanner.TakeReady(), SIZE_MAX, lastPacket, any);
    if (atEnd) break;
  }
  // What the file held comes back a memory's worth at a time.
  const size_t inMemory = scanner.HeldInMemory();
  scanner.Finish();
  for (auto items = scanner.TakeReady(); !items.empty(); items = scanner.TakeReady()) {
    Check(items, 2 * held + 2 + inMemory, lastPacket, any);
  }
  Require(scanner.HeldInMemory() == 0);
  return 0;
}
