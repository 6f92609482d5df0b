// Start-up with StreamMgr running: the usage text says so, a daemon without
// an IPC endpoint ends every command line but the empty one before any option
// is handled, and a daemon that misbehaves (garbled, dying, failing or slow
// answers) never crashes the tool, never hangs it and never changes the store.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <string>
#include <vector>

#include "events/event_listing_fixture.h"
#include "testing/case_tables.h"
#include "testing/cli_words.h"
#include "testing/expected_start_up.h"
#include "testing/expected_usage.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

const char kIpcError[] = "Error initializing the ipc connection\n";

SandboxOptions DaemonArgs(const std::string& args) {
  SandboxOptions options;
  options.streamMgrArgs = args;
  return options;
}

void FillStore(const RecorderDisk& disk) {
  FileRow first, second;
  first.next = 2;
  second.number = 2;
  second.previous = 1;
  disk.Exec(Event("a") + Event("s1", "groupId = 'g', part = 1, totalparts = 2, splitstate = 3") +
            Event("s2", "groupId = 'g', part = 2, totalparts = 2, splitstate = 3") +
            first.Insert() + second.Insert() + "insert into status values ('version', '1');");
}

TEST(DaemonStartUp, NoArgumentsSaysTheDaemonRuns) {
  RecorderDisk disk;
  EXPECT_RUN(RunDb(disk, AccessPath::kDaemon, {}), ExpectedUsage("db", true), "", 0);
}

TEST(DaemonStartUp, HelpAndUnknownOptionSayTheDaemonRuns) {
  RecorderDisk disk;
  EXPECT_RUN(
      RunDb(disk, AccessPath::kDaemon, {"-h", "-x"}),
      ExpectedUsage("db", true) + ExpectedUsage("db", true, "Error: unknown option specified"),
      "db: invalid option -- 'x'\n", 0);
}

TEST(DaemonStartUp, WithoutIpcTheEmptyCommandLineStillPrintsTheUsage) {
  RecorderDisk disk;
  EXPECT_RUN(RunDb(disk, AccessPath::kDaemon, {}, DaemonArgs("--no-ipc")),
             ExpectedUsage("db", true), "", 0);
}

TEST(DaemonStartUp, WithoutIpcAFailedOpenIsReportedFirst) {
  RecorderDisk disk(RecorderDisk::Store::kNone);
  EXPECT_RUN(RunDb(disk, AccessPath::kDaemon, {"-t"}, DaemonArgs("--no-ipc")), "",
             std::string("error opening sqlite3\n") + kIpcError, 1);
}

class DaemonWithoutIpc : public testing::TestWithParam<const char*> {};

TEST_P(DaemonWithoutIpc, EndsBeforeAnyOptionIsHandled) {
  RecorderDisk disk;
  FillStore(disk);
  const std::string before = disk.Dump();
  EXPECT_RUN(RunDb(disk, AccessPath::kDaemon, Words(GetParam()), DaemonArgs("--no-ipc")), "",
             kIpcError, 1);
  EXPECT_EQ(before, disk.Dump());
}

INSTANTIATE_TEST_SUITE_P(CommandLines, DaemonWithoutIpc,
                         testing::Values("-h", "-t", "-x", "-e", "-r", "-d a", "--deleteall",
                                         "-f s0f", "-a s", "-s", "stray", "-h -t -e"));

TEST(DaemonStartUp, StartUpReadsNoFileSizesWhileTheDaemonRuns) {
  // Without the daemon a store with no tables fails the size query at
  // start-up; with it, the sizes are the daemon's business.
  RecorderDisk disk(RecorderDisk::Store::kEmptyDatabase);
  EXPECT_RUN(RunDb(disk, AccessPath::kDirect, {"-h"}), ExpectedUsage("db", false), kNoFileSizesLine,
             0);
  EXPECT_RUN(RunDb(disk, AccessPath::kDaemon, {"-h"}), ExpectedUsage("db", true), "", 0);
}

// Command lines whose every store access goes through the daemon.
const std::vector<const char*> kQueries = {"-e", "-E",   "-r a",   "-R g", "-p",  "-u",
                                           "-t", "-f *", "-f s0f", "-f c", "-a s"};
const std::vector<const char*> kDeletions = {"-d a", "-d g", "--deleteall"};

struct Misbehaviour {
  const char* name;
  const char* args;
};

void PrintTo(const Misbehaviour& m, std::ostream* out) { *out << m.name; }

class MisbehavingDaemon : public testing::TestWithParam<Misbehaviour> {};

// A garbled or dying daemon must look exactly like one that fails every
// request: empty lists, zero counts, nothing deleted, and no crash.
TEST_P(MisbehavingDaemon, LooksLikeFailedRequestsAndChangesNothing) {
  std::vector<const char*> lines = kQueries;
  lines.insert(lines.end(), kDeletions.begin(), kDeletions.end());
  for (const char* line : lines) {
    SCOPED_TRACE(line);
    const std::vector<std::string> args = Words(line);
    RecorderDisk disk;
    FillStore(disk);
    const std::string before = disk.Dump();
    const RunResult failing = RunDb(disk, AccessPath::kDaemon, args, DaemonArgs("--fail-requests"));
    const RunResult r = RunDb(disk, AccessPath::kDaemon, args, DaemonArgs(GetParam().args));
    EXPECT_RUN(r, failing.out, failing.err, 0);
    EXPECT_EQ(before, disk.Dump());
  }
}

const Misbehaviour kMisbehaviours[] = {{"Garbage", "--garbage"}, {"DiesAtOnce", "--die-after 0"}};
INSTANTIATE_NAMED_CASES(Kinds, MisbehavingDaemon, kMisbehaviours);

TEST(SlowDaemon, AnswersTheSameAsAQuickOne) {
  for (const char* line : kQueries) {
    SCOPED_TRACE(line);
    const std::vector<std::string> args = Words(line);
    RecorderDisk disk;
    FillStore(disk);
    const RunResult quick = RunDb(disk, AccessPath::kDaemon, args);
    const RunResult slow = RunDb(disk, AccessPath::kDaemon, args, DaemonArgs("--delay-ms 30"));
    EXPECT_RUN(slow, quick);
  }
}

TEST(SlowDaemon, DeletesTheSameAsAQuickOne) {
  for (const char* line : kDeletions) {
    SCOPED_TRACE(line);
    const std::vector<std::string> args = Words(line);
    RecorderDisk quickDisk, slowDisk;
    FillStore(quickDisk);
    FillStore(slowDisk);
    const RunResult quick = RunDb(quickDisk, AccessPath::kDaemon, args);
    const RunResult slow = RunDb(slowDisk, AccessPath::kDaemon, args, DaemonArgs("--delay-ms 30"));
    EXPECT_RUN(slow, quick);
    EXPECT_EQ(quickDisk.Dump(), slowDisk.Dump());
  }
}

}  // namespace
