#include "analysis/split_group_report.h"

#include <iomanip>
#include <map>
#include <set>
#include <string>

#include "events/metadata_files.h"
#include "store/recorder_arithmetic.h"

namespace {

using StreamMgrApi::EventRecordItem;

// Ticks are half seconds: consecutive parts overlap by 2 seconds, and a last
// part must last at least that long.
constexpr uint32_t kOverlapTicks = 4;
constexpr uint32_t kShortestLastPartTicks = 4;

// Parts keyed by groupId; parts of one group stay in query order because a
// multimap inserts equal keys after the ones already there.
using Groups = std::multimap<std::string, const EventRecordItem*>;
using Part = Groups::const_iterator;

struct GroupChecks {
  bool overlapPassed = true;
  bool lastPartPassed = true;
  bool sizesPassed = true;
  std::set<uint32_t> seenParts;
};

// A part is too big when it is not staged (its size cannot be known), when
// its description adds up to nothing, or when it reaches the limit.
bool PartSizeOk(const EventRecordItem& part, uint32_t maxPartSize) {
  const std::string& reid = part.reid.GetValue();
  if (!IsStaged(kMetadataDirectory + reid)) {
    return false;
  }
  // A negative total reads as a huge unsigned size and so fails too.
  const double size = static_cast<double>(static_cast<uint64_t>(EventSize(reid))) / kBytesPerGiB;
  return !(static_cast<double>(maxPartSize) <= size || size == 0.0);
}

void CheckPart(const EventRecordItem& part, const EventRecordItem* previous, uint32_t maxPartSize,
               GroupChecks& checks, std::ostream& out) {
  const uint32_t number = part.part.GetValue();
  const uint32_t start = part.startTick.GetValue();
  if (previous != nullptr) {
    const uint32_t previousStop = previous->stopTick.GetValue();
    if (start != previousStop - kOverlapTicks) {
      if (checks.overlapPassed) {
        out << "FAIL" << std::endl;
        checks.overlapPassed = false;
      }
      out << "    Part " << number << " doesn't have 2-second overlap:  ticks = "
          << static_cast<int32_t>(previousStop - start) << std::endl;
    }
  }
  if (maxPartSize != 0 && !PartSizeOk(part, maxPartSize)) {
    checks.sizesPassed = false;
  }
  // Ticks wrap, so a stop below the start is a long part, not a short one.
  if (number == part.totalParts.GetValue() &&
      part.stopTick.GetValue() - start < kShortestLastPartTicks) {
    checks.lastPartPassed = false;
  }
  checks.seenParts.insert(number);
}

void ReportGroup(const std::string& groupId, Part first, Part end, uint32_t maxPartSize,
                 std::ostream& out) {
  out << "Checking groupId '" << groupId << "':" << std::endl;
  const uint32_t expectedTotalParts = first->second->totalParts.GetValue();
  GroupChecks checks;
  out << "  Checking 2-second overlap..." << std::flush;
  const EventRecordItem* previous = nullptr;
  for (Part part = first; part != end; ++part) {
    CheckPart(*part->second, previous, maxPartSize, checks, out);
    previous = part->second;
  }
  if (checks.overlapPassed) {
    out << "PASS" << std::endl;
  }
  out << "  Verify last part >= 2 sec..." << (checks.lastPartPassed ? "PASS" : "FAIL") << std::endl;
  const uint32_t uniqueParts = static_cast<uint32_t>(checks.seenParts.size());
  const uint32_t lastPart = *checks.seenParts.rbegin();
  if (uniqueParts == expectedTotalParts && lastPart == expectedTotalParts) {
    out << "  Checking totalParts.........PASS" << std::endl;
  } else {
    out << "  Checking totalParts.........FAIL:  expectedTotalParts=" << expectedTotalParts
        << "  actualUniquePartNums=" << uniqueParts << "  lastPartNum=" << lastPart << std::endl;
  }
  if (maxPartSize != 0) {
    // Other reports may leave the stream left-aligned; the limit is not.
    out << "  Verify part sizes < " << std::right << std::setw(2) << maxPartSize << " GB..."
        << (checks.sizesPassed ? "PASS" : "FAIL") << std::endl;
  }
}

}  // namespace

void ReportSplitGroups(const std::vector<EventRecordItem>& events, uint32_t maxPartSize,
                       std::ostream& out) {
  Groups groups;
  for (const EventRecordItem& event : events) {
    groups.emplace(event.groupId.GetValue(), &event);
  }
  for (Part entry = groups.begin(); entry != groups.end();) {
    const std::string& groupId = entry->first;
    const Part end = groups.upper_bound(groupId);
    // Events that are not split have no groupId and are not reported.
    if (!groupId.empty()) {
      ReportGroup(groupId, entry, end, maxPartSize, out);
    }
    entry = end;
  }
  out << std::endl;
}
