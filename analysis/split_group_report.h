// The report of split event verification: every group of parts that share a
// groupId, checked for overlap, last-part length, completeness and size.
#ifndef ANALYSIS_SPLIT_GROUP_REPORT_H_
#define ANALYSIS_SPLIT_GROUP_REPORT_H_

#include <cstdint>
#include <ostream>
#include <vector>

#include "recorder/event_record.h"

// Prints the checks of every group of `events` (taken in the order the store
// returned them) to `out`, groups in byte order of their groupId, then one
// empty line. A `maxPartSize` of 0 leaves out the size check.
void ReportSplitGroups(const std::vector<StreamMgrApi::EventRecordItem>& events,
                       uint32_t maxPartSize, std::ostream& out);

#endif  // ANALYSIS_SPLIT_GROUP_REPORT_H_
