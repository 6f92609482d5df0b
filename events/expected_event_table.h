// The event table as the user must see it: headings, and the row of an event
// whose columns are all left at EventRow's defaults.
#ifndef EVENTS_EXPECTED_EVENT_TABLE_H_
#define EVENTS_EXPECTED_EVENT_TABLE_H_

#include <gtest/gtest.h>

#include <string>

#include "testing/run_in_sandbox.h"

const char kGibHeading[] =
    "\n"
    "           REID                 State     SplitState   Sec       Start Time     StopTime  ExportTime  Start Tick   Stop Tick  c/r  BG  Files           groupId              Prt  Tot  Stg   GiB   Hours Till Re-Export  Answer1  \n"
    "============================  ==========  ==========  =====  =================  ========  ==========  ==========  ==========  ===  ==  =====  ============================  ===  ===  ===  =====  ====================  ====================  \n";

const char kBytesHeading[] =
    "\n"
    "           REID                 State     SplitState   Sec       Start Time     StopTime  ExportTime  Start Tick   Stop Tick  c/r  BG  Files           groupId              Prt  Tot  Stg     Bytes     Hours Till Re-Export  Answer1  \n"
    "============================  ==========  ==========  =====  =================  ========  ==========  ==========  ==========  ===  ==  =====  ============================  ===  ===  ===  ===========  ====================  ====================  \n";

// What -e and -E print after the rows when critical fields are NULL, before
// the output of the sql command.
const char kNullWarning[] =
    "\n"
    "\n"
    "    WARNING!  Some critical fields are NULL!  (affected reid's shown below):\n"
    "\n";

// Row of an EventRow with every column at its default but the staged one
// and the size, which stands right-aligned in the width of gibibytes (-e) or
// of bytes (-E); with no configuration service, hours are "NA".
inline std::string SizedRow(const std::string& reid, bool staged, const std::string& size,
                            bool bytes) {
  const std::string padding(reid.size() < 28 ? 28 - reid.size() : 0, ' ');
  const size_t width = bytes ? 11 : 5;
  return reid + padding +
         "  RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000  "
         "      1200  r r   N      1                                  0    0    " +
         (staged ? "Y  " : "N  ") +
         std::string(size.size() < width ? width - size.size() : 0, ' ') + size +
         "                    NA  \n";
}

// Row of an unstaged EventRow, in gibibytes or in bytes.
inline std::string DefaultRow(const std::string& reid, bool bytes = false) {
  return SizedRow(reid, false, bytes ? "0" : "0.000", bytes);
}

// Row of a staged EventRow whose metadata files add up to `size`: gibibytes
// with their decimals ("1.500") as -e prints them, or bytes as -E does.
inline std::string StagedRow(const std::string& reid, const std::string& size) {
  return SizedRow(reid, true, size, size.find('.') == std::string::npos);
}

// `rows` as -e prints them, with each zero size ("0.000") as -E prints it.
inline std::string InBytes(std::string rows) {
  for (size_t at = rows.find("  0.000  "); at != std::string::npos;
       at = rows.find("  0.000  ", at)) {
    rows.replace(at + 2, 5, "          0");
  }
  return rows;
}

#endif  // EVENTS_EXPECTED_EVENT_TABLE_H_
