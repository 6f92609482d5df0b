// The table counts (-t) on damaged stores whose table list, stepped while the
// counts run, would return one row for ever: the report ends, on both paths.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "testing/expected_start_up.h"
#include "testing/faults_case_tables.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

// Well past what a run of db in the sandbox takes, well short of the default.
constexpr int kSecondsToEnd = 20;

std::string ReadTestData(const std::string& name) {
  std::ifstream in(std::string(DB_SOURCE_DIR) + "/maintenance/testdata/" + name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Gives every row of the schema table (all on the first page of a small
// store) the row id 0. SQLite finds a row again by its id, so after a count
// fails it comes back to one of these rows instead of the one it left.
void GiveSchemaRowsOneId(const RecorderDisk& disk) {
  std::string store = disk.ReadFile("streammgr/stream.db");
  const size_t header = 100;  // the file header comes before the page's own
  ASSERT_GT(store.size(), header + 8);
  ASSERT_EQ(0x0d, store[header]) << "the schema is not a single leaf page";
  const auto byte = [&store](size_t at) { return static_cast<unsigned char>(store.at(at)); };
  const size_t cells = byte(header + 3) * 256u + byte(header + 4);
  for (size_t cell = 0; cell < cells; ++cell) {
    const size_t at = byte(header + 8 + 2 * cell) * 256u + byte(header + 9 + 2 * cell);
    ASSERT_LT(byte(at), 0x80) << "payload size of more than one byte";
    store.at(at + 1) = 0;  // the row id, one byte long in a store this small
  }
  disk.WriteFile("streammgr/stream.db", store);
}

class DamagedStoreTables : public testing::TestWithParam<AccessPath> {
 protected:
  // Runs -t, which must end well within the bound, print `counts` (and
  // directly `directErr`) and leave the damaged store as it was.
  void ExpectCounts(const RecorderDisk& disk, const std::string& counts,
                    const std::string& directErr) {
    const std::string damaged = disk.ReadFile("streammgr/stream.db");
    SandboxOptions options;
    options.timeoutSeconds = kSecondsToEnd;
    EXPECT_RUN(RunDb(disk, GetParam(), {"-t"}, options), std::string(kTablesHeading) + counts,
               PathText(directErr, "").On(GetParam()), 0);
    EXPECT_EQ(damaged, disk.ReadFile("streammgr/stream.db"));
  }
};

TEST_P(DamagedStoreTables, StoreFromTheFieldWhoseListWouldRepeatARow) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  const std::string damaged = ReadTestData("table-list-loops.db");
  ASSERT_EQ(4096u, damaged.size());
  disk.WriteFile("streammgr/stream.db", damaged);
  // Every count but the last fails on a corrupt page: 0, and directly the
  // failed statement's line. Over IPC the daemon answers as SQLite lets it.
  ExpectCounts(disk,
               "t1                 0\n"
               "t2                 0\n"
               "t3                 0\n"
               "t4                 8\n"
               "\n",
               std::string(kNoFileSizesLine) +
                   "could not free statement, leaking memory\n"
                   "could not free statement, leaking memory\n"
                   "could not free statement, leaking memory\n");
}

TEST_P(DamagedStoreTables, TablesWithoutPagesSharingOneRowId) {
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  disk.Exec(
      "create table events(a); create table streamfiles(number, size);"
      "create table status(name, value);"
      "pragma writable_schema = on; update sqlite_master set rootpage = 0;");
  GiveSchemaRowsOneId(disk);
  // No table has a page to count: each count fails, the list still ends.
  ExpectCounts(disk,
               "events             0\n"
               "streamfiles        0\n"
               "status             0\n"
               "\n",
               "main:Error initializing file sizes from the database:\n"
               "could not free statement, leaking memory\n"
               "could not free statement, leaking memory\n"
               "could not free statement, leaking memory\n"
               "could not free statement, leaking memory\n");
}

INSTANTIATE_TEST_SUITE_P(Paths, DamagedStoreTables, BothAccessPaths(), PathName);

}  // namespace
