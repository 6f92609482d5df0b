// Stores, metadata, scripted recorder tools and runners shared by the
// end-to-end tests of -a.
#ifndef ANALYSIS_ANALYSIS_E2E_FIXTURE_H_
#define ANALYSIS_ANALYSIS_E2E_FIXTURE_H_

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/staged_metadata.h"

namespace analysis_e2e {

// One part of a split event.
inline EventRow SplitPart(const std::string& reid, const std::string& groupId, int part,
                          int totalParts, long long startTick, long long stopTick) {
  EventRow row(reid);
  row.splitState = 3;
  row.groupId = groupId;
  row.part = part;
  row.totalParts = totalParts;
  row.startTick = startTick;
  row.stopTick = stopTick;
  return row;
}

// Stream file rows numbered from `first` to `last`, `step` apart.
inline std::string FileRows(long long first, long long last, long long step = 1) {
  std::string sql;
  FileRow row;
  for (row.number = first; row.number <= last; row.number += step) sql += row.Insert();
  return sql;
}

// A segment of a metadata description.
inline std::string Segment(long long start, long long stop) {
  return "<segment name=\"1.ts\" src=\"1\" start-offset=\"" + std::to_string(start) +
         "\" stop-offset=\"" + std::to_string(stop) + "\"/>";
}

// Stages `reid`: a description with these segments and a data file of
// `mtdBytes` bytes.
inline void Stage(const RecorderDisk& disk, const std::string& reid,
                  const std::vector<std::string>& segments, size_t mtdBytes = 0) {
  std::string lines;
  for (const std::string& segment : segments) lines += segment + "\n";
  StageMetadata(disk, reid, lines, mtdBytes);
}

// Puts an executable shell script named `name` into the disk's fakes/ folder,
// which RunWithFakes puts first on PATH.
inline void Fake(const RecorderDisk& disk, const std::string& name, const std::string& body) {
  disk.WriteFile("fakes/" + name, "#!/bin/sh\n" + body);
  chmod((disk.Path() + "/fakes/" + name).c_str(), 0755);
}

// Runs db with `args` on `path`, with the disk's fakes/ first on PATH; the
// built stand-ins follow unless `withBuiltTools` is false.
inline RunResult RunWithFakes(const RecorderDisk& disk, AccessPath path,
                              const std::vector<std::string>& args,
                              SandboxOptions options = SandboxOptions(),
                              bool withBuiltTools = true) {
  options.streamMgr = path == AccessPath::kDaemon;
  std::string search = "/mnt/hd/fakes:";
  if (withBuiltTools) search += BinDir() + ":";
  std::vector<std::string> command = {"env", "PATH=" + search + "/usr/bin:/bin", BinDir() + "/db"};
  command.insert(command.end(), args.begin(), args.end());
  return RunInSandbox(disk, command, options);
}

class BothPaths : public ::testing::TestWithParam<AccessPath> {};

// The line of a scripted extractor that leaves the copy /mnt/hd/N.ts.
inline const std::string kLeaveCopy = "echo data > /mnt/hd/$2.ts\n";

// An extractor that leaves /mnt/hd/N.ts, logs its call and names the copy
// stream<N>.ts.
const char kExtractor[] =
    "echo \"x $2\" >> /mnt/hd/calls.log\n"
    "echo data > /mnt/hd/$2.ts\n"
    "echo \"extracting stream file $2\"\n"
    "echo \"copied: stream$2.ts\"\n";

// What -a d prints of a store of one stream file up to its extraction.
const char kExtracting[] = "File count = 1\n Checking 1.ts:  extracting...";

// The whole report of -a d on one stream file that passes, its extracted copy
// named `copy`.
inline std::string OneFilePasses(const std::string& copy) {
  return kExtracting + copy + "  checking...PASS\n\n";
}

}  // namespace analysis_e2e

#endif  // ANALYSIS_ANALYSIS_E2E_FIXTURE_H_
