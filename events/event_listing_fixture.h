// A recorder disk, and db run on it by the access path that the case is
// instantiated with, for the end-to-end tests of the event listings.
#ifndef EVENTS_EVENT_LISTING_FIXTURE_H_
#define EVENTS_EVENT_LISTING_FIXTURE_H_

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "events/expected_event_table.h"
#include "testing/case_tables.h"
#include "testing/cli_words.h"
#include "testing/disk_manifest.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

class EventListing : public ::testing::TestWithParam<AccessPath> {
 protected:
  RunResult Run(const std::vector<std::string>& args, SandboxOptions options = {}) {
    return RunDb(disk_, GetParam(), args, options);
  }
  bool Direct() const { return GetParam() == AccessPath::kDirect; }
  // What follows each row that -r or -R finds: an empty line directly, nothing
  // over IPC.
  std::string Gap() const { return Direct() ? "\n" : ""; }
  RecorderDisk disk_;
};

// SQL that inserts the event `reid` with EventRow's defaults, then gives it
// the `changes`, an SQL assignment list such as "state = 1, part = 2".
inline std::string Event(const std::string& reid, const std::string& changes = "") {
  std::string sql = EventRow{reid}.Insert();
  if (!changes.empty()) {
    sql += "update events set " + changes + " where reid = " + Quote(reid) + ";\n";
  }
  return sql;
}

// Stands in an expected listing for what follows each row that -r or -R
// finds: an empty line directly, nothing over IPC.
const char kGap[] = "<gap>";

// A run of db on a store that `sql` fills, beside the metadata files that
// `stage` writes, on both access paths, compared whole; the disk, store and
// metadata files alike, comes out of it unchanged. A table of them runs as
//   INSTANTIATE_TEST_SUITE_P(P, Suite, OnBothPaths(kCases), CaseOnPathName<ListingCase>);
struct ListingCase {
  const char* name;
  std::string sql;
  std::string args;  // separated by blanks
  PathText out;
  PathText err = "";
  void (*stage)(const RecorderDisk& disk) = nullptr;
};

inline void PrintTo(const ListingCase& c, std::ostream* out) { *out << c.name; }

class ListingCases : public ::testing::TestWithParam<CaseOnPath<ListingCase>> {
 protected:
  void ExpectListing() const {
    const ListingCase& c = std::get<0>(GetParam());
    RecorderDisk disk;
    disk.Exec(c.sql);
    if (c.stage != nullptr) c.stage(disk);
    const std::string before = DiskManifest(disk.Path());
    const AccessPath path = std::get<1>(GetParam());
    std::string out = c.out.On(path);
    for (size_t at; (at = out.find(kGap)) != std::string::npos;) {
      out.replace(at, sizeof kGap - 1, path == AccessPath::kDirect ? "\n" : "");
    }
    EXPECT_RUN(RunDb(disk, path, Words(c.args)), out, c.err.On(path), 0);
    EXPECT_EQ(before, DiskManifest(disk.Path()));
  }
};

#endif  // EVENTS_EVENT_LISTING_FIXTURE_H_
