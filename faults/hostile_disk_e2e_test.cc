// A disk from the field is untrusted: links, FIFOs, sockets and folders where
// the tool and the recorder's commands expect files. Every run ends in time
// with the tool's messages, nothing outside the disk changes, and the disk
// keeps all it held but what the command was asked to change.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "events/expected_event_table.h"
#include "sim/file_pes/ts_builder.h"
#include "testing/expected_start_up.h"
#include "testing/host_canary.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/scratch_dir.h"
#include "testing/shell.h"

namespace {

constexpr int kBoundSeconds = 20;

std::string StagedRow(const std::string& reid) {
  std::string row = DefaultRow(reid);
  row.replace(row.rfind("N  0.000"), 1, "Y");
  return row;
}

const char kAnalysisPassed[] =
    "File count = 1\n"
    " Checking 1.ts:  extracting.../mnt/hd/1.ts  checking...PASS\n"
    "\n";
const char kNotExtracted[] = "File count = 1\n Checking 1.ts:  extracting...";
std::string CannotExtract(const std::string& reason) {
  return "StreamMgrCli: cannot extract stream file 1: /mnt/hd/streams/1.ts: " + reason + "\n";
}

// What is put in the way of a file, and what reading through it says.
enum class Odd { kFifo, kSocket, kFolder, kDangling, kLooping, kLinkToFolder, kDevice };
const std::pair<Odd, const char*> kOdds[] = {{Odd::kFifo, "not a regular file"},
                                             {Odd::kSocket, "not a regular file"},
                                             {Odd::kFolder, "not a regular file"},
                                             {Odd::kDangling, "No such file or directory"},
                                             {Odd::kLooping, "Too many levels of symbolic links"},
                                             {Odd::kLinkToFolder, "not a regular file"}};

// Replaces whatever is at `path`.
void MakeOdd(Odd odd, const std::string& path) {
  std::system(("rm -rf '" + path + "'").c_str());
  switch (odd) {
    case Odd::kFifo:
      mkfifo(path.c_str(), 0666);
      break;
    case Odd::kSocket: {
      // Nothing listens on it once made.
      const int s = socket(AF_UNIX, SOCK_STREAM, 0);
      sockaddr_un address{};
      address.sun_family = AF_UNIX;
      path.copy(address.sun_path, sizeof address.sun_path - 1);
      EXPECT_EQ(0, bind(s, reinterpret_cast<const sockaddr*>(&address), sizeof address)) << path;
      close(s);
      break;
    }
    case Odd::kFolder:
      mkdir(path.c_str(), 0777);
      break;
    case Odd::kDangling:
      symlink("no-such-file", path.c_str());
      break;
    case Odd::kLooping:
      symlink(path.substr(path.rfind('/') + 1).c_str(), path.c_str());
      break;
    case Odd::kLinkToFolder:
      symlink("/usr", path.c_str());
      break;
    case Odd::kDevice:
      // The null device: the sandbox opens no device on the disk.
      EXPECT_EQ(0, mknod(path.c_str(), S_IFCHR | 0666, makedev(1, 3)));
      break;
  }
}

// The store's rows, unless it is no database (which no dump may open), and
// everything else on the disk: names, kinds and file contents.
struct DiskState {
  std::string store;
  std::string files;
};

using Param = std::tuple<AccessPath, bool>;

class HostileDisk : public ::testing::TestWithParam<Param> {
 protected:
  void SetUp() override {
    disk_.Exec(EventRow("r1").Insert() + FileRow().Insert());
    disk_.WriteFile("streams/1.ts", MakeStream(StreamShape()));
    disk_.WriteFile("connectionmgr/r1.xml", "<recording-event/>");
    disk_.WriteFile("connectionmgr/r1.mtd", "");
    // The unprivileged user maps to root in a namespace of its own, which
    // owns nothing of the disk; it writes where anyone may.
    std::system(("chmod -R a+rwX '" + disk_.Path() + "'").c_str());
  }
  bool Direct() const { return std::get<0>(GetParam()) == AccessPath::kDirect; }
  std::string At(const std::string& relative) const { return disk_.Path() + "/" + relative; }
  DiskState Now(bool storeIsADatabase = true) const {
    return {storeIsADatabase ? disk_.Dump() : "",
            RunShell("cd '" + disk_.Path() +
                     "' && find . -path ./streammgr -prune -o -printf '%p %y %l\\n' | "
                     "sort && find . -type f ! -path './streammgr/*' -exec md5sum {} + | sort")
                .out};
  }
  // Runs db, which must end within the bound as `expected` says and leave
  // the disk as `after` and both canaries as they were.
  void ExpectRun(const std::vector<std::string>& args, const RunResult& expected,
                 const DiskState& after) {
    SandboxOptions options;
    options.unprivileged = std::get<1>(GetParam());
    options.timeoutSeconds = kBoundSeconds + 10;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_RUN(RunDb(disk_, std::get<0>(GetParam()), args, options), expected);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(kBoundSeconds));
    if (!after.store.empty()) {
      EXPECT_EQ(after.store, disk_.Dump());
    }
    EXPECT_EQ(after.files, Now(false).files);
    EXPECT_EQ(std::string("victim\n") + kCanaryText, tmpCanary_.State());
    EXPECT_EQ(std::string("victim\n") + kCanaryText, visibleCanary_.State());
  }
  // Start-up's complaints about a store that does not open: the direct path
  // also fails to read the stream file sizes from it.
  std::string OpeningFailure() const {
    return std::string("error opening sqlite3\n") + (Direct() ? kNoFileSizesLine : "");
  }
  // db -t -d r1 on a store that cannot be opened: no table, and no event to
  // delete.
  RunResult TablesOfAStoreThatCannotBeOpened() const {
    return RunResult{
        std::string(kTablesHeading) + "\n",
        OpeningFailure() +
            "unable to prepare: select tbl_name from sqlite_master where type='table'" +
            (Direct()
                 ? "unable to prepare: select count(*) from events where reid='r1' or groupId='r1'stmt Error: 21  sql='select count(*) from events where reid='r1' or groupId='r1''\n"
                 : "  Event or groupId not found: r1\n"),
        SQLITE_CANTOPEN};
  }

  RecorderDisk disk_;
  // One canary below the host's /tmp, which the sandbox hides, one in a host
  // folder that it shows read-only wherever the checkout lies.
  Canary tmpCanary_{"/tmp"};
  Canary visibleCanary_{"/var/tmp"};
};

// Links at /mnt/hd/1.ts, where the extraction writes: the link is replaced,
// never written through, and db's clean-up removes the copy.
TEST_P(HostileDisk, ExtractionReplacesALinkInsteadOfWritingThroughIt) {
  const DiskState before = Now();
  for (const std::string& target :
       {tmpCanary_.File(), visibleCanary_.File(), std::string("streammgr/stream.db"),
        std::string("streams/1.ts"), std::string("/usr"), std::string("connectionmgr"),
        std::string("no-such-file"), std::string("1.ts")}) {
    SCOPED_TRACE(target);
    ASSERT_EQ(0, symlink(target.c_str(), At("1.ts").c_str()));
    ExpectRun({"-a", "d"},
              {kAnalysisPassed,
               "StreamMgrCli: /mnt/hd/1.ts is a link; replacing it, not what it points to\n", 0},
              before);
  }
}

// A hard link to the store or to the stream file itself at /mnt/hd/1.ts:
// the extraction takes the name, not the file behind it.
TEST_P(HostileDisk, ExtractionDoesNotWriteIntoAHardLinkedFile) {
  const DiskState before = Now();
  for (const char* target : {"streammgr/stream.db", "streams/1.ts"}) {
    SCOPED_TRACE(target);
    ASSERT_EQ(0, link(At(target).c_str(), At("1.ts").c_str()));
    ExpectRun({"-a", "d"}, {kAnalysisPassed, "", 0}, before);
  }
}

// Odd things where the stream file to extract should be: StreamMgrCli
// cannot read it, names no copy, and db prints nothing after the heading.
TEST_P(HostileDisk, OddStreamFileIsNotExtracted) {
  for (const auto& odd : kOdds) {
    SCOPED_TRACE(odd.second);
    MakeOdd(odd.first, At("streams/1.ts"));
    ExpectRun({"-a", "d"}, {kNotExtracted, CannotExtract(odd.second), 0}, Now());
  }
}

// Odd things where the event's description file should be: the row shows
// the staged event with the message for a file that cannot be loaded. A
// link that leads nowhere does not exist as far as stat knows: the event is
// not staged and the file is never opened.
TEST_P(HostileDisk, OddDescriptionFileCannotBeLoaded) {
  for (const auto& odd : kOdds) {
    SCOPED_TRACE(odd.second);
    MakeOdd(odd.first, At("connectionmgr/r1.xml"));
    const bool dangles = odd.first == Odd::kDangling || odd.first == Odd::kLooping;
    ExpectRun({"-e"},
              {kGibHeading + (dangles ? DefaultRow("r1") : StagedRow("r1")),
               dangles ? "" : "Failed to load XML file: /mnt/hd/connectionmgr/r1.xml", 0},
              Now());
  }
}

// The store itself is a FIFO, a dangling link, or a link to a store outside
// the disk (which the sandbox hides): it cannot be opened, as an unreadable
// store cannot, nothing is created through the link, and the outside store
// keeps its rows.
TEST_P(HostileDisk, OddStoreCannotBeOpened) {
  const ScratchDir hidden("outside-store", 0755);
  const std::string outside = hidden.Path() + "/stream.db";
  ASSERT_EQ(0, std::system(("cp '" + disk_.StorePath() + "' '" + outside + "'").c_str()));
  const std::string kept = disk_.Dump();
  for (const std::string odd : {"fifo", "dangling", "outside"}) {
    SCOPED_TRACE(odd);
    if (odd == "fifo") {
      MakeOdd(Odd::kFifo, disk_.StorePath());
    } else {
      unlink(disk_.StorePath().c_str());
      symlink(odd == "dangling" ? "no-such-store" : outside.c_str(), disk_.StorePath().c_str());
    }
    ExpectRun({"-t", "-d", "r1"}, TablesOfAStoreThatCannotBeOpened(), Now(false));
  }
  unlink(disk_.StorePath().c_str());
  ASSERT_EQ(0, std::system(("cp '" + outside + "' '" + disk_.StorePath() + "'").c_str()));
  EXPECT_EQ(kept, disk_.Dump());
}

// Files that user nobody may not read (root reads them all): the description
// file reads as one that cannot be loaded, the data file is only measured,
// the stream file is not extracted, and the store does not open.
TEST_P(HostileDisk, UnreadableFilesReadAsFilesThatCannotBeRead) {
  const auto expect = [this](const char* file, const std::vector<std::string>& args,
                             const RunResult& asNobody, const std::string& outAsRoot) {
    SCOPED_TRACE(file);
    ASSERT_EQ(0, chmod(At(file).c_str(), 0));
    ExpectRun(args, std::get<1>(GetParam()) ? asNobody : RunResult{outAsRoot, "", 0}, Now());
    ASSERT_EQ(0, chmod(At(file).c_str(), 0666));
  };
  expect(
      "connectionmgr/r1.xml", {"-e"},
      {kGibHeading + StagedRow("r1"), "Failed to load XML file: /mnt/hd/connectionmgr/r1.xml", 0},
      kGibHeading + StagedRow("r1"));
  expect("connectionmgr/r1.mtd", {"-e"}, {kGibHeading + StagedRow("r1"), "", 0},
         kGibHeading + StagedRow("r1"));
  expect("streams/1.ts", {"-a", "d"}, {kNotExtracted, CannotExtract("Permission denied"), 0},
         kAnalysisPassed);
  expect("streammgr/stream.db", {"-t"},
         {std::string(kTablesHeading) + "\n",
          OpeningFailure() +
              "unable to prepare: select tbl_name from sqlite_master where type='table'",
          14},
         std::string(kTablesHeading) +
             "events             1\n"
             "streamfiles        1\n"
             "status             0\n"
             "\n");
}

// Links at the event's data file, which is only measured: one that leads to
// a file (or a folder) counts it, one that leads nowhere (the host's /tmp is
// hidden) leaves the event unstaged.
TEST_P(HostileDisk, LinkedDataFileIsOnlyMeasured) {
  for (const auto& link :
       {std::make_pair(visibleCanary_.File(), true), std::make_pair(tmpCanary_.File(), false),
        std::make_pair(visibleCanary_.Folder(), true), std::make_pair(std::string("r1.xml"), true),
        std::make_pair(std::string("no-such-file"), false),
        std::make_pair(std::string("r1.mtd"), false)}) {
    SCOPED_TRACE(link.first);
    unlink(At("connectionmgr/r1.mtd").c_str());
    ASSERT_EQ(0, symlink(link.first.c_str(), At("connectionmgr/r1.mtd").c_str()));
    ExpectRun({"-e"}, {kGibHeading + (link.second ? StagedRow("r1") : DefaultRow("r1")), "", 0},
              Now());
  }
}

// The metadata and stream folders are links to host folders outside the
// disk: nothing the tool looks for is there, and nothing is written there.
TEST_P(HostileDisk, LinkedFoldersLeadOffTheDisk) {
  for (const Canary* canary : {&visibleCanary_, &tmpCanary_}) {
    SCOPED_TRACE(canary->Folder());
    for (const char* folder : {"connectionmgr", "streams"}) {
      ASSERT_EQ(0, rename(At(folder).c_str(), (At(folder) + ".kept").c_str()));
      ASSERT_EQ(0, symlink(canary->Folder().c_str(), At(folder).c_str()));
    }
    const DiskState before = Now();
    ExpectRun({"-e"}, {kGibHeading + DefaultRow("r1"), "", 0}, before);
    ExpectRun({"-a", "d"}, {kNotExtracted, CannotExtract("No such file or directory"), 0}, before);
    for (const char* folder : {"connectionmgr", "streams"}) {
      ASSERT_EQ(0, unlink(At(folder).c_str()));
      ASSERT_EQ(0, rename((At(folder) + ".kept").c_str(), At(folder).c_str()));
    }
  }
}

// A socket or a device node in place of the store cannot be opened, like a
// FIFO there or an unreadable store; the sql command is not kept waiting by
// any of them, and does not create what a dangling link names.
TEST_P(HostileDisk, OddStoreEndsTheSqlCommandToo) {
  const std::string kept = disk_.Dump();
  const std::string saved = At("stream.db.kept");
  ASSERT_EQ(0, rename(disk_.StorePath().c_str(), saved.c_str()));
  for (const Odd odd :
       {Odd::kSocket, Odd::kDevice, Odd::kFifo, Odd::kDangling, Odd::kLooping, Odd::kFolder}) {
    SCOPED_TRACE(static_cast<int>(odd));
    MakeOdd(odd, disk_.StorePath());
    const DiskState before = Now(false);
    ExpectRun({"-t", "-d", "r1"}, TablesOfAStoreThatCannotBeOpened(), before);
    ExpectRun(
        {"-s"},
        {"",
         OpeningFailure() +
             "Error: unable to open database \"/mnt/hd/streammgr/stream.db\": unable to open database file\n",
         SQLITE_CANTOPEN},
        before);
  }
  std::system(("rm -rf '" + disk_.StorePath() + "'").c_str());
  ASSERT_EQ(0, rename(saved.c_str(), disk_.StorePath().c_str()));
  EXPECT_EQ(kept, disk_.Dump());
}

INSTANTIATE_TEST_SUITE_P(Hostile, HostileDisk,
                         ::testing::Combine(BothAccessPaths(), ::testing::Bool()),
                         [](const ::testing::TestParamInfo<Param>& info) {
                           return std::string(AccessPathName(std::get<0>(info.param))) +
                                  (std::get<1>(info.param) ? "Unprivileged" : "Root");
                         });

}  // namespace
