// Cuts the bytes of a recording into transport stream packets. The packet
// size is found from the data: 188 bytes, 192 (a 4-byte time code before
// each packet, as disc and camera formats write) or 204 (16 bytes of error
// correction after each). Bytes where no packet begins (garbage, a torn
// write) are skipped until packets of some size line up again.
#ifndef SIM_FILE_PES_PACKET_READER_H_
#define SIM_FILE_PES_PACKET_READER_H_

#include <cstddef>
#include <cstdint>

// What the reader found, in file order.
class PacketSink {
 public:
  virtual ~PacketSink() = default;
  // `packet` points at the sync byte of packet number `index` (188 bytes).
  virtual void OnPacket(const uint8_t* packet, uint64_t index) = 0;
  // `bytes` bytes from file offset `from` hold no packet; `packetsBefore`
  // whole packets came before them. `resumeSize` is the packet size where
  // packets go on after them, 0 when the file ends first.
  virtual void OnSkip(uint64_t from, uint64_t bytes, uint64_t packetsBefore, size_t resumeSize) = 0;
  // The file ends `bytes` bytes into a packet.
  virtual void OnTail(uint64_t bytes) = 0;
};

// How many following packets must begin with the sync byte before a size
// and position are believed.
constexpr int kSyncConfirmations = 4;
// Bytes the reader must see past a candidate sync byte to judge it; Feed
// leaves at most this many (plus a time code) unconsumed.
constexpr size_t kSyncLookahead = kSyncConfirmations * 204 + 1;

class PacketReader {
 public:
  explicit PacketReader(PacketSink& sink) : sink_(sink) {}
  // Reads whole packets from the next `size` bytes of the file and returns
  // how many bytes were used; the rest must be offered again, followed by
  // more. `atEnd` says that no more bytes follow.
  size_t Feed(const uint8_t* data, size_t size, bool atEnd);
  size_t PacketSize() const { return size_; }

 private:
  // Finds where packets begin at or after `from`; sets size_ and returns
  // the offset of the first packet, or `size` when none is found yet.
  size_t Search(const uint8_t* data, size_t size, size_t from, size_t lowest, bool atEnd);

  PacketSink& sink_;
  size_t size_ = 0;      // 0 while looking for packets
  uint64_t offset_ = 0;  // file offset of the next Feed's first byte
  uint64_t packets_ = 0;
  bool skipping_ = false;
  uint64_t skipFrom_ = 0;
};

#endif  // SIM_FILE_PES_PACKET_READER_H_
