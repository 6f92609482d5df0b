// Rows that no recorder writes but a damaged or hand-edited store may hold:
// values of the wrong type, out of range, huge or deeply nested. db lists
// them as its records read them, never crashes, and changes nothing.
#include <gtest/gtest.h>

#include <string>

#include "events/expected_event_table.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

class HostileRows : public ::testing::TestWithParam<AccessPath> {
 protected:
  RunResult ListEvents(const std::string& sql) {
    disk_.Exec(sql);
    const std::string before = disk_.Dump();
    const RunResult r = RunDb(disk_, GetParam(), {"-e", "-p", "-u"});
    EXPECT_EQ(before, disk_.Dump());
    return r;
  }
  RecorderDisk disk_;
};

TEST_P(HostileRows, ValuesOfTheWrongTypeReadAsTheirRecordsReadThem) {
  // Text in number columns reads as 0, a blob in the reid as its bytes, a
  // real is cut to its whole part.
  const RunResult r = ListEvents(EventRow("r1").Insert() +
                                 "update events set state = 'busy', part = 2.9, "
                                 "totalparts = x'00', starttick = -1.5 where reid = 'r1';");
  // Part of the output on purpose: that the row is listed, whatever its
  // records made of the values.
  EXPECT_NE(std::string::npos, r.out.find("r1 "));
  EXPECT_RUN(r, r.out, "", 0);
}

TEST_P(HostileRows, AHugeReidIsPrintedWhole) {
  const std::string reid(200000, 'r');
  EXPECT_RUN(ListEvents(EventRow(reid).Insert()),
             kGibHeading + DefaultRow(reid) + kGibHeading + kGibHeading + DefaultRow(reid), "", 0);
}

// The answers column is JSON that the row loader parses. Nested this deep it
// once overflowed the stack while the first answer was turned back into text,
// on both paths (the simulator uses the same loader, and died); values nested
// deeper than an answer can be are now dropped while parsing.
TEST_P(HostileRows, DeeplyNestedAnswersAreRead) {
  const int depth = 300000;
  const RunResult r =
      ListEvents(EventRow("r1").Insert() + "update events set answers = '[" +
                 std::string(depth, '[') + std::string(depth, ']') + "]' where reid = 'r1';");
  // The first entry is there, but its answer was nested too deep to keep: an
  // empty answer column.
  std::string row = DefaultRow("r1");
  row.insert(row.size() - 1, std::string(20, ' ') + "  ");
  EXPECT_RUN(r, kGibHeading + row + kGibHeading + kGibHeading + row, "", 0);
}

INSTANTIATE_TEST_SUITE_P(Faults, HostileRows, BothAccessPaths(), PathName);

}  // namespace
