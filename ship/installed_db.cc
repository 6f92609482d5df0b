#include "ship/installed_db.h"

#include <gtest/gtest.h>

#include "testing/expected_start_up.h"
#include "testing/expected_usage.h"
#include "testing/run_in_sandbox.h"

const std::string kFilledDiskTables = std::string(kTablesHeading) +
                                      "events             2\n"
                                      "streamfiles        1\n"
                                      "status             0\n"
                                      "\n";

void FillRecorderDisk(const RecorderDisk& disk) {
  disk.Exec(EventRow("R-1").Insert() + EventRow("R-2").Insert() + FileRow().Insert());
}

void ExpectDbRunsOnARecorderDisk(const std::string& db) {
  RecorderDisk disk;
  FillRecorderDisk(disk);
  const std::string before = disk.Dump();

  EXPECT_RUN(RunInSandbox(disk, {db, "-h"}), ExpectedUsage(db, false), "", 0);
  EXPECT_RUN(RunInSandbox(disk, {db, "-t"}), kFilledDiskTables, "", 0);
  EXPECT_EQ(before, disk.Dump());
}
