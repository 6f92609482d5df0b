// The split group report of -a s as it is printed, and groups of stored parts
// with the report of each: checked on the report code alone and end to end.
#ifndef ANALYSIS_EXPECTED_SPLIT_REPORT_H_
#define ANALYSIS_EXPECTED_SPLIT_REPORT_H_

#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace split_report {

// The lines of each check that can pass or fail without a size limit.
const char kOverlapPass[] = "  Checking 2-second overlap...PASS\n";
const char kOverlapFail[] = "  Checking 2-second overlap...FAIL\n";
const char kLastPass[] = "  Verify last part >= 2 sec...PASS\n";
const char kLastFail[] = "  Verify last part >= 2 sec...FAIL\n";
const char kTotalPass[] = "  Checking totalParts.........PASS\n";

// The line that opens the report of a group.
inline std::string Group(const std::string& groupId) {
  return "Checking groupId '" + groupId + "':\n";
}

// The lines of a group that passes the three checks made without a size limit.
inline std::string Passing(const std::string& groupId) {
  return Group(groupId) + kOverlapPass + kLastPass + kTotalPass;
}

// The whole report on a store whose one group, G, passes those checks, with
// the line of the size check when one is made.
inline std::string ReportOfG(const std::string& sizeLine = "") {
  return Passing("G") + sizeLine + "\n";
}

// One part of a split event as the store holds it.
struct StoredPart {
  std::string groupId;
  long long part;
  long long totalParts;
  long long startTick;  // stored as is; the report reads ticks as 32-bit unsigned
  long long stopTick;
};

struct GroupCase {
  const char* name;
  std::vector<StoredPart> parts;  // in the order the store returns them
  std::string report;             // the groups' lines; an empty line closes every report
  unsigned sizeLimit = 0;         // GB, for -a sz<N>; 0 for -a s
};

// Names a case in GoogleTest's messages.
inline void PrintTo(const GroupCase& group, std::ostream* out) { *out << group.name; }

inline GroupCase Case(const char* name, std::vector<StoredPart> parts, std::string report,
                      unsigned sizeLimit = 0) {
  return {name, std::move(parts), std::move(report), sizeLimit};
}

// None of these parts is staged.
inline const GroupCase kGroupCases[] = {
    Case("NoEventsPrintsOneEmptyLine", {}, ""),
    Case("EventsWithoutGroupAreNotReported", {{"", 0, 0, 10, 20}, {"", 0, 0, 30, 40}}, ""),
    Case("ThreeGoodParts", {{"G", 1, 3, 100, 200}, {"G", 2, 3, 196, 300}, {"G", 3, 3, 296, 310}},
         Passing("G")),
    // Part 3 starts 6 ticks before part 2 stops.
    Case("SampleOfTheOverlapFailure",
         {{"G", 1, 3, 100, 200}, {"G", 2, 3, 196, 300}, {"G", 3, 3, 294, 304}},
         Group("G") + kOverlapFail + "    Part 3 doesn't have 2-second overlap:  ticks = 6\n" +
             kLastPass + kTotalPass),
    Case("EveryFailingPartHasItsLineUnderOneFail",
         {{"G", 1, 3, 100, 200}, {"G", 2, 3, 210, 300}, {"G", 3, 3, 300, 400}},
         Group("G") + kOverlapFail +
             "    Part 2 doesn't have 2-second overlap:  ticks = -10\n"
             "    Part 3 doesn't have 2-second overlap:  ticks = 0\n" +
             kLastPass + kTotalPass),
    // The previous part stops at tick 2, so the next must start at 2 - 4,
    // which wraps to 4294967294.
    Case("OverlapIsComparedWithWrapAround",
         {{"G", 1, 2, 4294967000, 2}, {"G", 2, 2, 4294967294, 20}}, Passing("G")),
    // A stored -2 is 4294967294.
    Case("StoredTicksAreUnsigned32Bit", {{"G", 1, 2, 4294967000, 2}, {"G", 2, 2, -2, 40}},
         Passing("G")),
    Case("OverlapDifferenceIsPrintedSigned",
         {{"G", 1, 2, 0, 0}, {"G", 2, 2, 2147483648, 2147483700}},
         Group("G") + kOverlapFail +
             "    Part 2 doesn't have 2-second overlap:  ticks = -2147483648\n" + kLastPass +
             kTotalPass),
    Case("GroupsAreOrderedByGroupIdBytes",
         {{"B", 1, 1, 0, 10}, {"a", 1, 1, 0, 10}, {"", 0, 0, 0, 1}, {"A", 1, 1, 0, 10}},
         Passing("A") + Passing("B") + Passing("a")),
    Case("BytesAbove127SortAfterAsciiLetters", {{"\xc3\xa9", 1, 1, 0, 10}, {"z", 1, 1, 0, 10}},
         Passing("z") + Passing("\xc3\xa9")),
    Case("GroupIdsWithQuotesAndOtherBytes", {{"it's \xc3\xa9 \"q\"", 1, 1, 0, 100}},
         Passing("it's \xc3\xa9 \"q\"")),
    // Stored as 2 then 1: part 1 is compared with part 2.
    Case("PartsStayInQueryOrder", {{"G", 2, 2, 196, 300}, {"G", 1, 2, 100, 200}},
         Group("G") + kOverlapFail + "    Part 1 doesn't have 2-second overlap:  ticks = 200\n" +
             kLastPass + kTotalPass),
    Case("PartsOfOneGroupNeedNotBeAdjacent",
         {{"A", 1, 2, 0, 100}, {"B", 1, 1, 0, 10}, {"", 0, 0, 0, 0}, {"A", 2, 2, 96, 200}},
         Passing("A") + Passing("B")),
    Case("DuplicatedPartPassesTotalParts",
         {{"G", 1, 3, 0, 100}, {"G", 2, 3, 96, 200}, {"G", 2, 3, 196, 300}, {"G", 3, 3, 296, 400}},
         Passing("G")),
    Case(
        "MissingPartFailsTotalParts", {{"G", 1, 2, 0, 100}, {"G", 3, 2, 96, 200}},
        Group("G") + kOverlapPass + kLastPass +
            "  Checking totalParts.........FAIL:  expectedTotalParts=2  actualUniquePartNums=2  lastPartNum=3\n"),
    Case(
        "ExpectedTotalComesFromTheFirstPart", {{"G", 1, 3, 0, 100}, {"G", 2, 2, 96, 200}},
        Group("G") + kOverlapPass + kLastPass +
            "  Checking totalParts.........FAIL:  expectedTotalParts=3  actualUniquePartNums=2  lastPartNum=2\n"),
    Case("ShortLastPartFails", {{"G", 1, 2, 0, 100}, {"G", 2, 2, 96, 99}},
         Group("G") + kOverlapPass + kLastFail + kTotalPass),
    Case("LastPartOfNoLengthFails", {{"G", 1, 2, 0, 100}, {"G", 2, 2, 96, 96}},
         Group("G") + kOverlapPass + kLastFail + kTotalPass),
    // Four ticks are two seconds: long enough.
    Case("LastPartOfFourTicksPasses", {{"G", 1, 2, 0, 100}, {"G", 2, 2, 96, 100}}, Passing("G")),
    // Part 1 names itself the last of one part and lasts 2 ticks.
    Case(
        "LastPartIsJudgedByItsOwnTotal", {{"G", 1, 1, 0, 2}, {"G", 2, 5, 4294967294, 100}},
        Group("G") + kOverlapPass + kLastFail +
            "  Checking totalParts.........FAIL:  expectedTotalParts=1  actualUniquePartNums=2  lastPartNum=2\n"),
    Case("LastPartStoppingBeforeItStartsPasses", {{"G", 1, 2, 0, 100}, {"G", 2, 2, 96, 50}},
         Passing("G")),
    Case(
        "GroupWithoutALastPartPassesThatCheck", {{"G", 1, 3, 0, 1}},
        Group("G") + kOverlapPass + kLastPass +
            "  Checking totalParts.........FAIL:  expectedTotalParts=3  actualUniquePartNums=1  lastPartNum=1\n"),
    Case("SinglePartGroupPassesTheOverlap", {{"G", 1, 1, 7, 100}}, Passing("G")),
    Case("PartsThatAreNotStagedFailTheSizeCheck", {{"G", 1, 1, 0, 100}},
         Passing("G") + "  Verify part sizes <  5 GB...FAIL\n", 5),
};

}  // namespace split_report

#endif  // ANALYSIS_EXPECTED_SPLIT_REPORT_H_
