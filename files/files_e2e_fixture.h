// Generated stores and their listings for the end-to-end tests of the files
// listing; the sample store and the heading come from testing/files_listing.h.
#ifndef FILES_FILES_E2E_FIXTURE_H_
#define FILES_FILES_E2E_FIXTURE_H_

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "testing/files_listing.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace files_e2e {

// The heading, the sample files, their rows and Listing(), which the tests of
// other folders reach through this namespace too.
using namespace files_listing;

// Runs db with `args` and checks that the listing changed nothing in the store.
inline RunResult RunUnchanged(const RecorderDisk& disk, AccessPath path,
                              const std::vector<std::string>& args,
                              const SandboxOptions& options = SandboxOptions()) {
  const std::string before = disk.Dump();
  const RunResult r = RunDb(disk, path, args, options);
  EXPECT_EQ(before, disk.Dump());
  return r;
}

inline std::vector<std::string> Reversed(const std::vector<std::string>& rows) {
  return {rows.rbegin(), rows.rend()};
}

// Every sample file in reverse number order.
inline std::string AllReversed() { return Listing(Reversed(ByNumber())); }

// `count` generated files numbered from 1, chained one to the next: stream 0,
// free, ticks ten apart, so that number order and start tick order agree.
inline std::string GeneratedFiles(int count) {
  return "with recursive n(i) as (select 1 union all select i + 1 from n where i < " +
         std::to_string(count) +
         ") insert into streamfiles select i, 0, 0, i * 10, i * 10 + 5, 1704164645, 1704164745, "
         "i - 1, i + 1, 1000, 1 from n;";
}

// The row of generated file `number`.
inline std::string GeneratedRow(unsigned number) {
  char line[160];
  std::snprintf(
      line, sizeof line,
      "%6u       0  Free          1000  01/02/24 03:04:05  03:05:45  %10u  %10u  %4u  %4u  Norm  \n",
      number, number * 10, number * 10 + 5, number - 1, number + 1);
  return line;
}

inline std::vector<std::string> GeneratedRows(unsigned first, unsigned last) {
  std::vector<std::string> rows;
  for (unsigned number = first; number <= last; ++number) {
    rows.push_back(GeneratedRow(number));
  }
  return rows;
}

}  // namespace files_e2e

#endif  // FILES_FILES_E2E_FIXTURE_H_
