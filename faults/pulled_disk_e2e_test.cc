// A disk pulled from a unit is evidence: looked at on a read-only mount or
// through --snapshot, it shows what a writable copy of it shows, SQLite's
// recovery of a power-cut store included, and not a byte, a name, a mode or
// a time of it changes. As root and as user nobody, on both access paths.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <ostream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "maintenance/expected_deletion.h"
#include "testing/disk_manifest.h"
#include "testing/expected_start_up.h"
#include "testing/faults_case_tables.h"
#include "testing/power_cut.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/scratch_dir.h"
#include "testing/shell.h"

#ifndef DB_SOURCE_DIR
#error "DB_SOURCE_DIR must name the project's source folder"
#endif

namespace {

const char kSplitPart[] = "20240102-030405-0002";

// -t on the sample disk as the recorder left it, before the transaction
// that the power cut interrupted.
const std::string kSampleCounts = std::string(kTablesHeading) +
                                  "events             5\n"
                                  "streamfiles        8\n"
                                  "status             3\n"
                                  "\n";

// Runs the sandbox's command line, given as its arguments, after `setup`
// (shell commands, which see `words` as $1, $2, ...) in a mount namespace of
// its own, so that what `setup` mounts is gone with the run.
std::vector<std::string> InMountNamespace(const std::string& setup,
                                          const std::vector<std::string>& words) {
  std::vector<std::string> prefix = {
      "/usr/bin/unshare",
      "--mount",
      "--propagation",
      "private",
      "/bin/sh",
      "-c",
      setup + "\nshift " + std::to_string(words.size()) + " && exec \"$@\"",
      "sh"};
  prefix.insert(prefix.end(), words.begin(), words.end());
  return prefix;
}

// The same with DISK's folder a read-only bind mount of itself, as a disk
// image mounted read-only would be.
std::vector<std::string> OnReadOnlyMount(const std::string& disk) {
  return InMountNamespace("mount --bind \"$1\" \"$1\" && mount -o remount,bind,ro \"$1\" || exit",
                          {disk});
}

// The number of events in the store at `path`, or -1 when it cannot be read.
int EventCount(const std::string& path) {
  sqlite3* db = nullptr;
  sqlite3_stmt* count = nullptr;
  int events = -1;
  if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK &&
      sqlite3_prepare_v2(db, "select count(*) from events", -1, &count, nullptr) == SQLITE_OK &&
      sqlite3_step(count) == SQLITE_ROW) {
    events = sqlite3_column_int(count, 0);
  }
  sqlite3_finalize(count);
  sqlite3_close(db);
  return events;
}

using Param = std::tuple<bool, AccessPath>;

class PulledDisk : public ::testing::TestWithParam<Param> {
 protected:
  void SetUp() override {
    ASSERT_EQ(0, RunShell(std::string(DB_SOURCE_DIR) + "/tools/make-sample-disk " +
                          ShellQuote(disk_.Path()) + " > /dev/null")
                     .status);
  }
  bool Unprivileged() const { return std::get<0>(GetParam()); }
  AccessPath Path() const { return std::get<1>(GetParam()); }
  SandboxOptions Options() const {
    SandboxOptions options;
    options.unprivileged = Unprivileged();
    return options;
  }
  // The disk as it comes to the bench, and its manifest. The unprivileged
  // user examines a disk of its own: in its user namespace, what others own
  // could be read but not changed, not even in a copy-on-write view.
  std::string Seal() const {
    if (Unprivileged()) {
      EXPECT_EQ(0, RunShell("chown -R 65534:65534 " + ShellQuote(disk_.Path())).status);
    }
    return DiskManifest(disk_.Path());
  }
  RunResult Db(const std::vector<std::string>& args, SandboxOptions options) const {
    return RunDb(disk_, Path(), args, options);
  }
  RunResult OnReadOnlyDisk(const std::vector<std::string>& args) const {
    SandboxOptions options = Options();
    options.prefix = OnReadOnlyMount(disk_.Path());
    return Db(args, options);
  }
  RunResult InSnapshot(const std::vector<std::string>& args,
                       const std::string& snapshot = "--snapshot") const {
    SandboxOptions options = Options();
    options.sandboxArgs = {snapshot};
    return Db(args, options);
  }
  // The same command line on a writable copy of the disk, as it was.
  RunResult OnWritableCopy(const std::vector<std::string>& args) const {
    RecorderDisk copy(RecorderDisk::Store::kNone);
    EXPECT_EQ(0, RunShell("cp -a " + ShellQuote(disk_.Path() + "/.") + " " +
                          ShellQuote(copy.Path()) + " && chown --reference=" +
                          ShellQuote(disk_.Path()) + " " + ShellQuote(copy.Path()))
                     .status);
    return RunDb(copy, Path(), args, Options());
  }

  RecorderDisk disk_{RecorderDisk::Store::kNone};
};

// The journal a power cut left is rolled back in the view, never on the
// disk: on a read-only mount, and on a writable disk with --snapshot.
TEST_P(PulledDisk, PowerCutStoreReadsAsRecovered) {
  ASSERT_TRUE(LeaveHotJournal(disk_.StorePath()));
  const std::string before = Seal();
  const std::vector<std::string> args = {"-t", "-e", "-f", "*"};
  const RunResult writable = OnWritableCopy(args);
  for (const bool snapshot : {false, true}) {
    SCOPED_TRACE(snapshot ? "--snapshot" : "read-only mount");
    const auto examine = [&](const std::vector<std::string>& command) {
      return snapshot ? InSnapshot(command) : OnReadOnlyDisk(command);
    };
    EXPECT_RUN(examine(args), writable);
    EXPECT_RUN(examine({"-t"}), kSampleCounts, "", 0);
    EXPECT_EQ(before, DiskManifest(disk_.Path()));
    EXPECT_TRUE(disk_.Exists("streammgr/stream.db-journal"));
  }
}

// Extraction, deletion of one group and of everything: done in the view as
// on the disk itself, and the disk is as it was.
TEST_P(PulledDisk, TrialDeletionsLeaveTheDiskAsItWas) {
  const std::string before = Seal();
  const std::vector<std::string> args = {"-e", "-a",          "d",  "-d", kSplitPart,
                                         "-e", "--deleteall", "-e", "-t"};
  const RunResult writable = OnWritableCopy(args);
  // Part of the run on purpose: that the copy's events were all deleted.
  EXPECT_NE(std::string::npos, writable.out.find("events             0\n")) << writable.out;
  EXPECT_RUN(InSnapshot(args), writable);
  EXPECT_EQ(before, DiskManifest(disk_.Path()));
}

// The disk of a read-only mount gets the same view without being asked.
TEST_P(PulledDisk, DeletionOnAReadOnlyMountHappensInTheViewOnly) {
  const std::string before = Seal();
  const std::vector<std::string> args = {"-d", kSplitPart, "-t", "-a", "d"};
  EXPECT_RUN(OnReadOnlyDisk(args), OnWritableCopy(args));
  EXPECT_EQ(before, DiskManifest(disk_.Path()));
}

// A store in WAL mode gets its -wal and -shm files in the view.
TEST_P(PulledDisk, WalStoreGetsNoWalFilesOnTheDisk) {
  disk_.Exec("pragma journal_mode = wal");
  const std::string before = Seal();
  const std::vector<std::string> args = {"-e", "-d", kSplitPart, "-t"};
  EXPECT_RUN(InSnapshot(args), OnWritableCopy(args));
  EXPECT_RUN(OnReadOnlyDisk(args), OnWritableCopy(args));
  EXPECT_EQ(before, DiskManifest(disk_.Path()));
  EXPECT_FALSE(disk_.Exists("streammgr/stream.db-wal"));
  EXPECT_FALSE(disk_.Exists("streammgr/stream.db-shm"));
}

// --snapshot=DIR keeps what the run changed, at its path below the disk.
TEST_P(PulledDisk, SnapshotFolderKeepsTheStoreAfterATrialDeletion) {
  const std::string before = Seal();
  const std::string rows = disk_.Dump();
  const ScratchDir place("snapshot", 0777);
  const std::string kept = place.Path() + "/changes";
  EXPECT_RUN(InSnapshot({"--deleteall"}, "--snapshot=" + kept), OnWritableCopy({"--deleteall"}));
  EXPECT_EQ(0, EventCount(kept + "/streammgr/stream.db"));
  EXPECT_EQ(5, EventCount(disk_.StorePath()));
  EXPECT_EQ(rows, disk_.Dump());
  EXPECT_EQ(before, DiskManifest(disk_.Path()));
  // Only what was asked for is left beside it: overlayfs's work folder goes.
  EXPECT_EQ("changes\n", RunShell("ls -A " + ShellQuote(place.Path())).out);
}

// The journal that SQLite rolled back is gone in the view; the kept store
// opens on its own, and the sandbox names what the run removed.
TEST_P(PulledDisk, SnapshotFolderKeepsARecoveredStoreThatOpens) {
  ASSERT_TRUE(LeaveHotJournal(disk_.StorePath()));
  const std::string before = Seal();
  const ScratchDir place("snapshot", 0777);
  const std::string kept = place.Path() + "/changes";
  RunResult expected = OnWritableCopy({"-d", kSplitPart, "-t"});
  expected.err += "recorder-sandbox: the run removed /mnt/hd/streammgr/stream.db-journal\n";
  EXPECT_RUN(InSnapshot({"-d", kSplitPart, "-t"}, "--snapshot=" + kept), expected);
  EXPECT_EQ(4, EventCount(kept + "/streammgr/stream.db"));
  EXPECT_EQ("stream.db\n", RunShell("ls -A " + ShellQuote(kept + "/streammgr")).out);
  EXPECT_EQ(before, DiskManifest(disk_.Path()));
}

// Without DIR the changes go to a folder below $TMPDIR, removed at the end.
TEST_P(PulledDisk, ScratchFolderIsRemovedAtExit) {
  const std::string before = Seal();
  const ScratchDir tmp("tmpdir", 01777);
  SandboxOptions options = Options();
  options.sandboxArgs = {"--snapshot"};
  options.environment = {"TMPDIR=" + tmp.Path()};
  EXPECT_RUN(Db({"-d", kSplitPart}, options), OnWritableCopy({"-d", kSplitPart}));
  EXPECT_EQ("", RunShell("ls -A " + ShellQuote(tmp.Path())).out);
  EXPECT_EQ(before, DiskManifest(disk_.Path()));
}

std::string PulledName(const ::testing::TestParamInfo<Param>& info) {
  return std::string(std::get<0>(info.param) ? "Unprivileged" : "Root") +
         AccessPathName(std::get<1>(info.param));
}

INSTANTIATE_TEST_SUITE_P(Examined, PulledDisk,
                         ::testing::Combine(::testing::Bool(), BothAccessPaths()), PulledName);

// A raw image of the disk, loop-mounted read-only as an examiner mounts it
// (noload: ext4 would otherwise replay its own journal onto the image).
class PulledImage : public PulledDisk {};

TEST_P(PulledImage, ReadOnlyExt4ImageShowsWhatAWritableCopyShows) {
  ASSERT_TRUE(LeaveHotJournal(disk_.StorePath()));
  const ScratchDir place("image", 0755);
  const std::string image = place.Path() + "/disk.ext4";
  const std::string mounted = place.Path() + "/mnt";
  ASSERT_EQ(0, RunShell("truncate -s 64M " + ShellQuote(image) + " && mkfs.ext4 -q -d " +
                        ShellQuote(disk_.Path()) + " " + ShellQuote(image) + " && mkdir " +
                        ShellQuote(mounted))
                   .status);
  const std::string hash = RunShell("md5sum < " + ShellQuote(image)).out;
  SandboxOptions options = Options();
  options.prefix = InMountNamespace("mount -o loop,ro,noload \"$1\" \"$2\" 2>/dev/null || exit 77",
                                    {image, mounted});
  options.diskDir = mounted;
  const std::vector<std::string> args = {"-t", "-e", "-f", "*", "-d", kSplitPart, "-t"};
  const RunResult r = Db(args, options);
  if (r.status == 77) GTEST_SKIP() << "no loop device to mount the image on";
  EXPECT_RUN(r, OnWritableCopy(args));
  EXPECT_EQ(hash, RunShell("md5sum < " + ShellQuote(image)).out);
}

// Mounting an image needs root.
INSTANTIATE_TEST_SUITE_P(Examined, PulledImage,
                         ::testing::Combine(::testing::Values(false), BothAccessPaths()),
                         PulledName);

// A disk and a place on the host for the changes of a snapshot.
class SnapshotPlace {
 protected:
  // `text` with {disk} and {place} filled in.
  std::string Fill(std::string text) const {
    for (const auto& name : {std::make_pair(std::string("{disk}"), disk_.Path()),
                             std::make_pair(std::string("{place}"), place_.Path())}) {
      for (size_t at = text.find(name.first); at != std::string::npos;
           at = text.find(name.first, at)) {
        text.replace(at, name.first.size(), name.second);
      }
    }
    return text;
  }
  RecorderDisk disk_;
  ScratchDir place_{"snapshot"};
};

// What --snapshot refuses, before anything is mounted or made.
struct Refusal {
  const char* name;
  const char* setup;     // shell commands run first
  const char* snapshot;  // the sandbox's option
  const char* message;
  const char* mount = "";  // mounted in the sandbox's mount namespace, $1 the place
  const char* tmpdir = nullptr;
};

const Refusal kRefusals[] = {
    {"InsideTheDiskIsRefused", "", "--snapshot={disk}/changes",
     "--snapshot={disk}/changes lies inside the disk {disk}; keep the changes outside it"},
    {"TheDiskItselfIsRefused", "", "--snapshot={disk}",
     "--snapshot={disk} lies inside the disk {disk}; keep the changes outside it"},
    {"ScratchInsideTheDiskIsRefused", "mkdir {disk}/tmp", "--snapshot",
     "TMPDIR={disk}/tmp lies inside the disk {disk}; the changes go outside it", "", "{disk}/tmp"},
    {"FolderThatIsNotEmptyIsRefused", "mkdir {place}/changes && touch {place}/changes/.old",
     "--snapshot={place}/changes",
     "--snapshot={place}/changes is not empty; give a new or empty folder, so that it holds this run's changes and nothing else"},
    {"FileIsRefused", "touch {place}/file", "--snapshot={place}/file",
     "--snapshot={place}/file is not a folder"},
    {"MissingParentIsRefused", "", "--snapshot={place}/no/changes",
     "--snapshot={place}/no/changes: there is no folder {place}/no"},
    // Overlayfs's work folder must lie beside DIR on the same mount.
    {"MountPointIsRefused", "mkdir {place}/changes", "--snapshot={place}/changes",
     "--snapshot={place}/changes is a mount point; give a new folder inside it",
     "mount -t tmpfs scratch \"$1/changes\""},
    {"EmptyNameIsRefused", "", "--snapshot=", "--snapshot= names no folder to keep the changes in"},
    {"NameOverlayfsCannotTakeIsRefused", "", "--snapshot={place}/a,b",
     "--snapshot={place}/a,b: overlayfs cannot take a folder whose name holds a comma, colon or backslash"},
};

class SnapshotRefusal : public SnapshotPlace, public ::testing::TestWithParam<Refusal> {};

TEST_P(SnapshotRefusal, LeavesTheDiskAsItWas) {
  const Refusal& c = GetParam();
  ASSERT_EQ(0, RunShell(Fill(c.setup) + "\ntrue").status);
  const std::string before = DiskManifest(disk_.Path());
  SandboxOptions options;
  options.sandboxArgs = {Fill(c.snapshot)};
  if (*c.mount != '\0') {
    options.prefix = InMountNamespace(std::string(c.mount) + " || exit", {place_.Path()});
  }
  if (c.tmpdir != nullptr) options.environment = {"TMPDIR=" + Fill(c.tmpdir)};
  EXPECT_RUN(RunInSandbox(disk_, {"db", "-t"}, options), "",
             "recorder-sandbox: " + Fill(c.message) + "\n", 125);
  EXPECT_EQ(before, DiskManifest(disk_.Path()));
}

void PrintTo(const Refusal& c, std::ostream* out) { *out << c.name; }
INSTANTIATE_TEST_SUITE_P(Refused, SnapshotRefusal, ::testing::ValuesIn(kRefusals),
                         CaseName<Refusal>);

class SnapshotFolder : public SnapshotPlace, public ::testing::Test {};

// A place where overlayfs cannot keep an upper layer (an overlayfs itself)
// stops the sandbox before anything runs; the disk is not used instead.
TEST_F(SnapshotFolder, ViewThatOverlayfsRefusesStopsTheSandbox) {
  ASSERT_EQ(0, RunShell(Fill("cd {place} && mkdir lower upper work view")).status);
  const std::string before = DiskManifest(disk_.Path());
  SandboxOptions options;
  options.sandboxArgs = {Fill("--snapshot={place}/view/changes")};
  options.prefix = InMountNamespace(
      "mount -t overlay lower -o "
      "lowerdir=\"$1/lower\",upperdir=\"$1/upper\",workdir=\"$1/work\" \"$1/view\" || exit",
      {place_.Path()});
  const RunResult r = RunInSandbox(disk_, {"db", "-t"}, options);
  // Part of standard error on purpose: between the two, mount(8)'s own words.
  const std::string head = Fill(
      "recorder-sandbox: overlayfs cannot make a copy-on-write view of {disk} with the changes in {place}/view (");
  const std::string tail = "); the disk is left as it was\n";
  EXPECT_EQ(0u, r.err.find(head)) << r.err;
  EXPECT_EQ(r.err.size() - tail.size(), r.err.rfind(tail)) << r.err;
  EXPECT_RUN(r, "", r.err, 125);
  EXPECT_EQ(before, DiskManifest(disk_.Path()));
}

// An empty folder that is already there takes the changes.
TEST_F(SnapshotFolder, EmptyFolderTakesTheChanges) {
  disk_.Exec(EventRow("kept-event").Insert());
  ASSERT_EQ(0, RunShell(Fill("mkdir {place}/changes")).status);
  SandboxOptions options;
  options.sandboxArgs = {Fill("--snapshot={place}/changes")};
  EXPECT_RUN(RunInSandbox(disk_, {"db", "-d", "kept-event"}, options), Deleted(1, "kept-event"), "",
             0);
  EXPECT_EQ(0, EventCount(place_.Path() + "/changes/streammgr/stream.db"));
  EXPECT_EQ(1, EventCount(disk_.StorePath()));
}

// As another user than root, the view reads what others own on the disk but
// cannot copy it up to change it: the sandbox says so, and the change fails
// with the tool's own message.
TEST(UnprivilegedSnapshot, DiskOfAnotherUserIsReadWithANote) {
  RecorderDisk disk;
  disk.Exec(EventRow("other-users-event").Insert());
  const std::string before = DiskManifest(disk.Path());
  SandboxOptions options;
  options.unprivileged = true;
  options.sandboxArgs = {"--snapshot"};
  EXPECT_RUN(RunDb(disk, {"-t", "-d", "other-users-event"}, options),
             std::string(kTablesHeading) +
                 "events             1\n"
                 "streamfiles        0\n"
                 "status             0\n"
                 "\n",
             "recorder-sandbox: note: as nobody the view cannot change what other "
             "users own on the disk (" +
                 disk.Path() + "); run as root for that\n" + DeleteByIdFailed("other-users-event"),
             0);
  EXPECT_EQ(before, DiskManifest(disk.Path()));
}

}  // namespace
