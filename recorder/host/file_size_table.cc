#include "recorder/host/file_size_table.h"

namespace {

// Slots may run this far ahead of the files known, so the first thousands of
// numbers never fall back to the map whatever their order.
constexpr size_t kFreeSlots = 4096;
constexpr size_t kGrowth = 1024;

}  // namespace

void FileSizeTable::Set(int number, uint32_t size) {
  // At least half the slots stay in use, give or take the free allowance.
  if (!InSlots(number) && number >= 0 &&
      static_cast<size_t>(number) < kFreeSlots + 2 * (slotsUsed_ + 1)) {
    // Whole blocks at a time, so that growing costs nothing per file.
    const size_t slots = (static_cast<size_t>(number) / kGrowth + 1) * kGrowth;
    sizes_.resize(slots);
    known_.resize(slots);
  }
  if (!InSlots(number)) {
    others_[number] = size;
    return;
  }
  const size_t slot = static_cast<size_t>(number);
  sizes_[slot] = size;
  if (!known_[slot]) {
    known_[slot] = true;
    ++slotsUsed_;
    // Recorded earlier, when the slots did not reach it yet.
    if (!others_.empty()) others_.erase(number);
  }
}

bool FileSizeTable::Find(int number, uint32_t& size) const {
  if (InSlots(number) && known_[static_cast<size_t>(number)]) {
    size = sizes_[static_cast<size_t>(number)];
    return true;
  }
  const auto found = others_.find(number);
  if (found == others_.end()) return false;
  size = found->second;
  return true;
}
