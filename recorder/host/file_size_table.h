// Sizes of stream files by number, as start-up reads them from the store.
//
// A recorder numbers its stream files 1, 2, 3, ... and start-up reads them in
// that order, so a size is kept in a slot indexed by its number: four bytes
// and a presence bit per file, in blocks that never move once allocated (no
// reallocation copies the table while it grows). A number that would leave
// most slots empty (negative, or far beyond the files known so far) is kept in
// a map of its own instead, so a sparse store costs no more than before.
#ifndef RECORDER_HOST_FILE_SIZE_TABLE_H_
#define RECORDER_HOST_FILE_SIZE_TABLE_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <unordered_map>
#include <vector>

class FileSizeTable {
 public:
  // Records `size` for `number`; a later call for the same number replaces it.
  void Set(int number, uint32_t size);

  // The size recorded for `number`; false when there is none.
  bool Find(int number, uint32_t& size) const;

  // Numbers kept in slots and in the map (for tests and measurements).
  size_t SlotCount() const { return sizes_.size(); }
  size_t MapCount() const { return others_.size(); }

 private:
  bool InSlots(int number) const {
    return number >= 0 && static_cast<size_t>(number) < sizes_.size();
  }

  std::deque<uint32_t> sizes_;  // indexed by number
  std::vector<bool> known_;     // whether sizes_[number] was recorded
  size_t slotsUsed_ = 0;
  std::unordered_map<int, uint32_t> others_;
};

#endif  // RECORDER_HOST_FILE_SIZE_TABLE_H_
