// Report items held in a temporary file instead of memory. The report comes
// out in stream order, so while an early split point waits for its key
// frame every later line waits with it; in a long stream without key frames
// that would be every line of the stream. Past a bound, the oldest items go
// to this file and come back, in the same order, once they are judged. The
// file has no name, so nothing is left behind, and it lies in a folder of
// the caller's choice: on the recorder /tmp is memory, the disk is not.
#ifndef SIM_FILE_PES_HELD_ITEMS_H_
#define SIM_FILE_PES_HELD_ITEMS_H_

#include <cstdint>
#include <cstdio>
#include <string>

#include "sim/file_pes/report_item.h"

struct HeldItem {
  ReportItem item;
  int64_t place = 0;          // of the split point on its clock
  bool keyKnown = true;       // false while the point waits for its key frame
  bool boundaryKnown = true;  // false while it waits for the video's next packet
  // Offsets of the held points that waited for the same video's key frame,
  // and for its next packet, before this one; -1 for none. An event of the
  // video judges its points newest first without reading the others, and
  // nothing written is changed to link them.
  int64_t previousForKey = -1;
  int64_t previousForBoundary = -1;
};

class HeldItems {
 public:
  HeldItems() = default;
  HeldItems(const HeldItems&) = delete;
  HeldItems& operator=(const HeldItems&) = delete;
  ~HeldItems();
  // Where the file is made, before the first Append; the system's folder
  // for temporary files when it cannot be made there.
  void SetFolder(const std::string& folder) { folder_ = folder; }
  // Appends an item at the end and returns its offset; -1 when the file
  // cannot be made or written.
  int64_t Append(const HeldItem& held);
  // Reads the item at `offset`; its size goes to `size`.
  bool Read(int64_t offset, HeldItem& held, int64_t& size);
  // Writes the item at `offset` again, its note unchanged.
  bool Rewrite(int64_t offset, const HeldItem& held);
  // Offsets of the first item not yet taken back and of the end. Items
  // are written at the end and read back from the front, each in turn, so
  // the file is mostly read and written in sequence.
  int64_t Front() const { return front_; }
  int64_t End() const { return end_; }
  bool Empty() const { return front_ == end_; }
  // The item at Front() has been taken back.
  void PopFront(int64_t size);

 private:
  // Moves to `offset` for reading or writing; a stream must be positioned
  // again when it turns from one to the other.
  bool Seek(int64_t offset, bool writing);

  std::FILE* Open() const;

  std::string folder_;
  std::FILE* file_ = nullptr;
  bool broken_ = false;
  int64_t position_ = -1;  // of the stream, -1 when unknown
  bool writing_ = false;
  int64_t front_ = 0;
  int64_t end_ = 0;
};

#endif  // SIM_FILE_PES_HELD_ITEMS_H_
