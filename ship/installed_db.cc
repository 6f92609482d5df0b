#include "ship/installed_db.h"

#include <gtest/gtest.h>

#include "testing/expected_start_up.h"
#include "testing/expected_usage.h"
#include "testing/run_in_sandbox.h"
#include "testing/shell.h"

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

std::string ExpectManShowsDb(const std::string& args) {
  const RunResult result = RunShell("MANWIDTH=80 man " + args);
  EXPECT_EQ(0, result.status) << result.err;
  EXPECT_EQ(0u, result.out.find("DB(1)")) << result.out.substr(0, 200);
  EXPECT_NE(std::string::npos,
            result.out.find("db - list, check and clean up the recorder's stream store"));
  return result.out;
}

void ExpectCompletionRegistered(const std::string& script) {
  EXPECT_RUN(RunShell("bash --norc -c " +
                      ShellQuote("source " + ShellQuote(script) + " && complete -p db")),
             "complete -F _db db\n", "", 0);
}
