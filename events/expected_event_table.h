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

// Row of an unstaged EventRow with every other column at its default, with
// no configuration service (hours "NA"), in gibibytes or in bytes.
inline std::string DefaultRow(const std::string& reid, bool bytes = false) {
  const std::string padding(reid.size() < 28 ? 28 - reid.size() : 0, ' ');
  return reid + padding +
         "  RecordCmpl  NotNeeded     100  01/02/24 03:04:05  03:05:45           0        1000  "
         "      1200  r r   N      1                                  0    0    N  " +
         (bytes ? "          0" : "0.000") + "                    NA  \n";
}

#endif  // EVENTS_EXPECTED_EVENT_TABLE_H_
