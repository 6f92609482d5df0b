// The files table of db -f as it is printed, and the sample stream files that
// the tests of several folders list.
#ifndef TESTING_FILES_LISTING_H_
#define TESTING_FILES_LISTING_H_

#include <string>
#include <vector>

#include "testing/recorder_disk.h"

namespace files_listing {

const char kHeading[] =
    "\n"
    "Number  Stream   State      Size        Start Time     StopTime  Start Tick   Stop Tick  Prev  Next  Type  \n"
    "======  ======  ========  ========  =================  ========  ==========  ==========  ====  ====  ====  \n";

// Stored values of a file's state and type.
enum FileState : long long { kFree = 0, kAllocated = 1, kUsedFree = 2, kUsedKeep = 3 };
enum FileType : long long { kInit = 0, kNormal = 1, kBackground = 2, kWiped = 3 };

// A streamfiles row set field by field; the fields not named keep the
// defaults of FileRow.
class File {
 public:
  explicit File(long long number) { row_.number = number; }
  File& Stream(long long stream) { return Set(row_.stream, stream); }
  File& State(long long state) { return Set(row_.state, state); }
  File& Ticks(long long start, long long stop) {
    return Set(row_.startTick, start).Set(row_.stopTick, stop);
  }
  File& Times(long long start, long long stop) {
    return Set(row_.startTime, start).Set(row_.stopTime, stop);
  }
  File& Chain(long long previous, long long next) {
    return Set(row_.previous, previous).Set(row_.next, next);
  }
  File& Size(long long size) { return Set(row_.size, size); }
  File& Type(long long type) { return Set(row_.type, type); }
  std::string Insert() const { return row_.Insert(); }

 private:
  File& Set(long long& field, long long value) {
    field = value;
    return *this;
  }
  FileRow row_;
};

// A chain per stream, free files, a file being written in streams 0 and 1, and
// a chain of one file. No two files share a start tick, so both sorts are total.
inline std::string SampleFiles() {
  // One file to a line, as the table lists them.
  // clang-format off
  const File files[] = {
      File(1).State(kUsedKeep).Ticks(1000, 1600).Times(1704164645, 1704164945).Chain(0, 2),
      File(2).State(kUsedKeep).Ticks(1596, 2200).Times(1704164945, 1704165245).Chain(1, 3),
      File(3).State(kAllocated).Ticks(2196, 2300).Times(1704165245, 1704165295).Chain(2, 0).Size(12582912),
      File(4).State(kUsedFree).Ticks(100, 200).Times(1704150000, 1704150100),
      File(5).Ticks(50, 60).Times(0, 0).Type(kInit),
      File(12).Stream(1).Times(0, 0).Type(kInit),
      File(20).Stream(2).State(kUsedFree).Ticks(7000, 7200).Times(1704160000, 1704160100).Type(kWiped),
      File(200).Stream(1).State(kUsedKeep).Ticks(5000, 5400).Times(1704166000, 1704166200).Chain(0, 205).Type(kBackground),
      File(205).Stream(1).State(kAllocated).Ticks(5396, 5500).Times(1704166200, 1704166250).Chain(200, 0).Size(4194304).Type(kBackground),
      File(209).Stream(3).Ticks(300, 400).Times(1704150000, 1704150100).Type(kInit),
      File(1234).Stream(2).State(kUsedFree).Ticks(9000, 9100).Times(1704170000, 1704170050).Size(1048576),
  };
  // clang-format on
  std::string sql;
  for (const File& file : files) sql += file.Insert();
  return sql;
}

// The rows of SampleFiles() as the table shows them, one to a line.
// clang-format off
const char kRow1[] =    "     1       0  UsedKeep  98566144  01/02/24 03:04:05  03:09:05        1000        1600     0     2  Norm  \n";
const char kRow2[] =    "     2       0  UsedKeep  98566144  01/02/24 03:09:05  03:14:05        1596        2200     1     3  Norm  \n";
const char kRow3[] =    "     3       0  Allocatd  12582912  01/02/24 03:14:05  03:14:55        2196        2300     2     0  Norm  \n";
const char kRow4[] =    "     4       0  UsedFree  98566144  01/01/24 23:00:00  23:01:40         100         200     0     0  Norm  \n";
const char kRow5[] =    "     5       0  Free      98566144  01/01/70 00:00:00  00:00:00          50          60     0     0  Init  \n";
const char kRow12[] =   "    12       1  Free      98566144  01/01/70 00:00:00  00:00:00           0           0     0     0  Init  \n";
const char kRow20[] =   "    20       2  UsedFree  98566144  01/02/24 01:46:40  01:48:20        7000        7200     0     0  Wiped  \n";
const char kRow200[] =  "   200       1  UsedKeep  98566144  01/02/24 03:26:40  03:30:00        5000        5400     0   205  Bkgd  \n";
const char kRow205[] =  "   205       1  Allocatd   4194304  01/02/24 03:30:00  03:30:50        5396        5500   200     0  Bkgd  \n";
const char kRow209[] =  "   209       3  Free      98566144  01/01/24 23:00:00  23:01:40         300         400     0     0  Init  \n";
const char kRow1234[] = "  1234       2  UsedFree   1048576  01/02/24 04:33:20  04:34:10        9000        9100     0     0  Norm  \n";
// clang-format on

// Every file of SampleFiles() in number order: what a fresh record lists.
inline std::vector<std::string> ByNumber() {
  return {kRow1, kRow2, kRow3, kRow4, kRow5, kRow12, kRow20, kRow200, kRow205, kRow209, kRow1234};
}

inline std::vector<std::string> ByStartTick() {
  return {kRow12, kRow5, kRow4, kRow209, kRow1, kRow2, kRow3, kRow200, kRow205, kRow20, kRow1234};
}

// Heading, rows and the closing count line.
inline std::string Listing(const std::vector<std::string>& rows, unsigned long count) {
  std::string text = kHeading;
  for (const std::string& row : rows) text += row;
  return text + "\n" + std::to_string(count) + " items\n\n";
}

inline std::string Listing(const std::vector<std::string>& rows) {
  return Listing(rows, rows.size());
}

}  // namespace files_listing

#endif  // TESTING_FILES_LISTING_H_
