#include "sim/file_pes/packet_reader.h"

#include <cstring>

#include "sim/file_pes/ts_packet.h"

namespace {

constexpr size_t kSizes[] = {188, 192, 204};

// The sync byte's offset within a packet of `size` bytes.
size_t SyncOffset(size_t size) { return size == 192 ? 4 : 0; }

}  // namespace

size_t PacketReader::Search(const uint8_t* data, size_t size, size_t from, size_t lowest,
                            bool atEnd) {
  const size_t limit = atEnd ? size : (size > kSyncLookahead ? size - kSyncLookahead : 0);
  for (size_t i = from; i < limit; ++i) {
    const void* hit = std::memchr(data + i, kSyncByte, limit - i);
    if (hit == nullptr) {
      break;
    }
    i = static_cast<size_t>(static_cast<const uint8_t*>(hit) - data);
    for (const size_t candidate : kSizes) {
      const size_t sync = SyncOffset(candidate);
      if (i < lowest + sync) {
        continue;
      }
      const size_t following = (size - 1 - i) / candidate;
      const size_t checks = following < kSyncConfirmations ? following : kSyncConfirmations;
      size_t confirmed = 0;
      while (confirmed < checks && data[i + (confirmed + 1) * candidate] == kSyncByte) {
        ++confirmed;
      }
      // Where packets were expected anyway (the start of the file), one
      // packet lining up is enough, so a tear soon after is found where it
      // is; elsewhere every packet looked at must line up.
      const bool expected = i == lowest + sync;
      if (confirmed == checks ? checks > 0 || expected : expected && confirmed > 0) {
        size_ = candidate;
        return i - sync;
      }
    }
  }
  return size;
}

size_t PacketReader::Feed(const uint8_t* data, size_t size, bool atEnd) {
  size_t at = 0;
  size_t searchFrom = 0;
  for (;;) {
    if (size_ == 0) {
      const size_t found = Search(data, size, searchFrom, at, atEnd);
      if (found == size) {
        // Keep what a sync byte near the end may still need.
        const size_t keep = atEnd ? 0 : kSyncLookahead + 4;
        const size_t used = size - at > keep ? size - keep : at;
        if (used > at && !skipping_) {
          skipping_ = true;
          skipFrom_ = offset_ + at;
        }
        at = used;
        if (atEnd && skipping_) {
          sink_.OnSkip(skipFrom_, offset_ + size - skipFrom_, packets_, 0);
          skipping_ = false;
        }
        break;
      }
      if (found > at && !skipping_) {
        skipping_ = true;
        skipFrom_ = offset_ + at;
      }
      if (skipping_) {
        sink_.OnSkip(skipFrom_, offset_ + found - skipFrom_, packets_, size_);
        skipping_ = false;
      }
      at = found;
    }
    const size_t sync = SyncOffset(size_);
    if (size - at < size_) {
      if (atEnd && size > at) {
        sink_.OnTail(size - at);
        at = size;
      }
      break;
    }
    if (data[at + sync] != kSyncByte) {
      // Lost: look again from the next byte, counting this packet's bytes
      // as skipped from its start.
      size_ = 0;
      skipping_ = true;
      skipFrom_ = offset_ + at;
      searchFrom = at + 1;
      continue;
    }
    sink_.OnPacket(data + at + sync, packets_++);
    at += size_;
  }
  offset_ += at;
  return at;
}
