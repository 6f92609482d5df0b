#include "sim/file_pes/held_items.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstring>

namespace {

// The fixed part of an item: flags, PID, then seven 64-bit numbers and the
// note's length; the note's bytes follow.
constexpr size_t kFixedSize = 1 + 2 + 7 * 8 + 4;

enum Flags : uint8_t {
  kIsPoint = 1,
  kFails = 2,
  kOnFrameBoundary = 4,
  kHasDelay = 8,
  kKeyKnown = 16,
  kBoundaryKnown = 32,
};

template <typename T>
void Put(uint8_t*& at, T value) {
  std::memcpy(at, &value, sizeof value);
  at += sizeof value;
}

template <typename T>
T Get(const uint8_t*& at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  at += sizeof value;
  return value;
}

void Encode(const HeldItem& held, uint8_t (&bytes)[kFixedSize]) {
  const SplitPoint& point = held.item.point;
  uint8_t flags = 0;
  flags |= held.item.isPoint ? kIsPoint : 0;
  flags |= held.item.fails ? kFails : 0;
  flags |= point.onFrameBoundary ? kOnFrameBoundary : 0;
  flags |= point.keyFrameDelay ? kHasDelay : 0;
  flags |= held.keyKnown ? kKeyKnown : 0;
  flags |= held.boundaryKnown ? kBoundaryKnown : 0;
  uint8_t* at = bytes;
  Put(at, flags);
  Put(at, point.pcrPid);
  Put(at, point.packet);
  Put(at, point.pcrBase);
  Put(at, point.time);
  Put(at, point.keyFrameDelay.value_or(0));
  Put(at, held.place);
  Put(at, held.previousForKey);
  Put(at, held.previousForBoundary);
  Put(at, static_cast<uint32_t>(held.item.note.size()));
}

}  // namespace

std::FILE* HeldItems::Open() const {
  if (!folder_.empty()) {
    // An unnamed file in the folder, gone when closed.
    const int fd = open(folder_.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
    if (fd >= 0) {
      std::FILE* file = fdopen(fd, "w+b");
      if (file != nullptr) {
        return file;
      }
      close(fd);
    }
  }
  return std::tmpfile();  // removed by the system when closed
}

HeldItems::~HeldItems() {
  if (file_ != nullptr) {
    std::fclose(file_);
  }
}

int64_t HeldItems::Append(const HeldItem& held) {
  if (file_ == nullptr && !broken_) {
    file_ = Open();
    broken_ = file_ == nullptr;
  }
  if (broken_) {
    return -1;
  }
  uint8_t bytes[kFixedSize];
  Encode(held, bytes);
  const std::string& note = held.item.note;
  if (!Seek(end_, true) || std::fwrite(bytes, 1, kFixedSize, file_) != kFixedSize ||
      std::fwrite(note.data(), 1, note.size(), file_) != note.size()) {
    broken_ = true;  // what was written before stays readable
    position_ = -1;
    return -1;
  }
  const int64_t offset = end_;
  end_ += static_cast<int64_t>(kFixedSize + note.size());
  position_ = end_;
  return offset;
}

bool HeldItems::Read(int64_t offset, HeldItem& held, int64_t& size) {
  uint8_t bytes[kFixedSize];
  if (!Seek(offset, false) || std::fread(bytes, 1, kFixedSize, file_) != kFixedSize) {
    position_ = -1;
    return false;
  }
  const uint8_t* at = bytes;
  const auto flags = Get<uint8_t>(at);
  SplitPoint& point = held.item.point;
  held.item.isPoint = (flags & kIsPoint) != 0;
  held.item.fails = (flags & kFails) != 0;
  point.onFrameBoundary = (flags & kOnFrameBoundary) != 0;
  held.keyKnown = (flags & kKeyKnown) != 0;
  held.boundaryKnown = (flags & kBoundaryKnown) != 0;
  point.pcrPid = Get<uint16_t>(at);
  point.packet = Get<uint64_t>(at);
  point.pcrBase = Get<uint64_t>(at);
  point.time = Get<int64_t>(at);
  const auto delay = Get<int64_t>(at);
  point.keyFrameDelay.reset();
  if ((flags & kHasDelay) != 0) {
    point.keyFrameDelay = delay;
  }
  held.place = Get<int64_t>(at);
  held.previousForKey = Get<int64_t>(at);
  held.previousForBoundary = Get<int64_t>(at);
  const auto noteSize = Get<uint32_t>(at);
  held.item.note.resize(noteSize);
  if (noteSize != 0 && std::fread(&held.item.note[0], 1, noteSize, file_) != noteSize) {
    position_ = -1;
    return false;
  }
  size = static_cast<int64_t>(kFixedSize + noteSize);
  position_ = offset + size;
  return true;
}

bool HeldItems::Rewrite(int64_t offset, const HeldItem& held) {
  uint8_t bytes[kFixedSize];
  Encode(held, bytes);
  if (!Seek(offset, true) || std::fwrite(bytes, 1, kFixedSize, file_) != kFixedSize) {
    position_ = -1;
    return false;
  }
  position_ = offset + static_cast<int64_t>(kFixedSize);
  return true;
}

bool HeldItems::Seek(int64_t offset, bool writing) {
  if (file_ == nullptr) {
    return false;
  }
  if (offset == position_ && writing == writing_) {
    return true;  // already there: a seek would empty the stream's buffer
  }
  writing_ = writing;
  position_ = -1;
  return std::fseek(file_, static_cast<long>(offset), SEEK_SET) == 0;
}

void HeldItems::PopFront(int64_t size) {
  front_ += size;
  if (front_ == end_) {
    front_ = 0;  // nothing held: the file is written from its start again
    end_ = 0;
  }
}
