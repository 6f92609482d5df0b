// Stores and golden text shared by the end-to-end tests of the files listing.
#ifndef FILES_FILES_E2E_FIXTURE_H_
#define FILES_FILES_E2E_FIXTURE_H_

#include <cstdio>
#include <string>
#include <vector>

#include "testing/recorder_disk.h"

namespace files_e2e {

const char kHeading[] =
    "\n"
    "Number  Stream   State      Size        Start Time     StopTime  Start Tick   Stop Tick  Prev  Next  Type  \n"
    "======  ======  ========  ========  =================  ========  ==========  ==========  ====  ====  ====  \n";

inline FileRow Row(long long number, long long stream, long long state, long long startTick,
                   long long stopTick, long long startTime, long long stopTime, long long previous,
                   long long next, long long size, long long type) {
  FileRow row;
  row.number = number;
  row.stream = stream;
  row.state = state;
  row.startTick = startTick;
  row.stopTick = stopTick;
  row.startTime = startTime;
  row.stopTime = stopTime;
  row.previous = previous;
  row.next = next;
  row.size = size;
  row.type = type;
  return row;
}

// A chain per stream, free files, a file being written in streams 0 and 1, and
// a chain of one file. No two files share a start tick, so both sorts are total.
inline std::string SampleFiles() {
  return Row(1, 0, 3, 1000, 1600, 1704164645, 1704164945, 0, 2, 98566144, 1).Insert() +
         Row(2, 0, 3, 1596, 2200, 1704164945, 1704165245, 1, 3, 98566144, 1).Insert() +
         Row(3, 0, 1, 2196, 2300, 1704165245, 1704165295, 2, 0, 12582912, 1).Insert() +
         Row(4, 0, 2, 100, 200, 1704150000, 1704150100, 0, 0, 98566144, 1).Insert() +
         Row(5, 0, 0, 50, 60, 0, 0, 0, 0, 98566144, 0).Insert() +
         Row(12, 1, 0, 0, 0, 0, 0, 0, 0, 98566144, 0).Insert() +
         Row(20, 2, 2, 7000, 7200, 1704160000, 1704160100, 0, 0, 98566144, 3).Insert() +
         Row(200, 1, 3, 5000, 5400, 1704166000, 1704166200, 0, 205, 98566144, 2).Insert() +
         Row(205, 1, 1, 5396, 5500, 1704166200, 1704166250, 200, 0, 4194304, 2).Insert() +
         Row(209, 3, 0, 300, 400, 1704150000, 1704150100, 0, 0, 98566144, 0).Insert() +
         Row(1234, 2, 2, 9000, 9100, 1704170000, 1704170050, 0, 0, 1048576, 1).Insert();
}

// The rows of SampleFiles() as the table shows them.
const char kRow1[] =
    "     1       0  UsedKeep  98566144  01/02/24 03:04:05  03:09:05        1000        1600     0     2  Norm  \n";
const char kRow2[] =
    "     2       0  UsedKeep  98566144  01/02/24 03:09:05  03:14:05        1596        2200     1     3  Norm  \n";
const char kRow3[] =
    "     3       0  Allocatd  12582912  01/02/24 03:14:05  03:14:55        2196        2300     2     0  Norm  \n";
const char kRow4[] =
    "     4       0  UsedFree  98566144  01/01/24 23:00:00  23:01:40         100         200     0     0  Norm  \n";
const char kRow5[] =
    "     5       0  Free      98566144  01/01/70 00:00:00  00:00:00          50          60     0     0  Init  \n";
const char kRow12[] =
    "    12       1  Free      98566144  01/01/70 00:00:00  00:00:00           0           0     0     0  Init  \n";
const char kRow20[] =
    "    20       2  UsedFree  98566144  01/02/24 01:46:40  01:48:20        7000        7200     0     0  Wiped  \n";
const char kRow200[] =
    "   200       1  UsedKeep  98566144  01/02/24 03:26:40  03:30:00        5000        5400     0   205  Bkgd  \n";
const char kRow205[] =
    "   205       1  Allocatd   4194304  01/02/24 03:30:00  03:30:50        5396        5500   200     0  Bkgd  \n";
const char kRow209[] =
    "   209       3  Free      98566144  01/01/24 23:00:00  23:01:40         300         400     0     0  Init  \n";
const char kRow1234[] =
    "  1234       2  UsedFree   1048576  01/02/24 04:33:20  04:34:10        9000        9100     0     0  Norm  \n";

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
  for (const std::string& row : rows) {
    text += row;
  }
  return text + "\n" + std::to_string(count) + " items\n\n";
}

inline std::string Listing(const std::vector<std::string>& rows) {
  return Listing(rows, rows.size());
}

// `count` generated files numbered from 1, chained one to the next: stream 0,
// free, ticks ten apart, so that number order and start tick order agree.
inline std::string GeneratedFiles(int count) {
  return "with recursive n(i) as (select 1 union all select i + 1 from n where i < " +
         std::to_string(count) +
         ") insert into streamfiles select i, 0, 0, i * 10, i * 10 + 5, 1704164645, 1704164745, "
         "i - 1, i + 1, 1000, 1 from n;";
}

// The row of generated file `number`.
inline std::string GeneratedRow(unsigned number) {
  char line[160];
  std::snprintf(
      line, sizeof line,
      "%6u       0  Free          1000  01/02/24 03:04:05  03:05:45  %10u  %10u  %4u  %4u  Norm  \n",
      number, number * 10, number * 10 + 5, number - 1, number + 1);
  return line;
}

inline std::vector<std::string> GeneratedRows(unsigned first, unsigned last) {
  std::vector<std::string> rows;
  for (unsigned number = first; number <= last; ++number) {
    rows.push_back(GeneratedRow(number));
  }
  return rows;
}

}  // namespace files_e2e

#endif  // FILES_FILES_E2E_FIXTURE_H_
