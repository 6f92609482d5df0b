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

#include "events/expected_event_table.h"
#include "sim/file_pes/ts_builder.h"
#include "testing/expected_start_up.h"
#include "testing/host_canary.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"
#include "testing/shell.h"

namespace {

constexpr int kBoundSeconds = 20;

std::string StagedRow(const std::string& reid) {
  std::string row = DefaultRow(reid);
  row.replace(row.rfind("N  0.000"), 1, "Y");
  return row;
}

// A socket file at `path` (nothing listens on it once made).
void MakeSocket(const std::string& path) {
  const int s = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  if (bind(s, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    ADD_FAILURE() << "cannot make a socket at " << path;
  }
  close(s);
}

// What is put in the way of a file: `target` names a link's target, or a
// canary for the absolute links (filled in by the test).
enum class Odd { kFifo, kSocket, kFolder, kDangling, kLooping, kLinkToFolder };

void MakeOdd(Odd odd, const std::string& path) {
  unlink(path.c_str());
  switch (odd) {
    case Odd::kFifo:
      mkfifo(path.c_str(), 0666);
      break;
    case Odd::kSocket:
      MakeSocket(path);
      break;
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
  }
}

// Everything on the disk below the store: names, kinds and file contents.
std::string DiskFiles(const RecorderDisk& disk) {
  return RunShell("cd '" + disk.Path() +
                  "' && find . -path ./streammgr -prune -o -printf '%p %y %l\\n' | "
                  "sort && find . -type f ! -path './streammgr/*' -exec md5sum {} + | sort")
      .out;
}

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
  SandboxOptions Options() const {
    SandboxOptions options;
    options.unprivileged = std::get<1>(GetParam());
    options.timeoutSeconds = kBoundSeconds + 10;
    return options;
  }
  std::string At(const std::string& relative) const { return disk_.Path() + "/" + relative; }
  // Runs db and checks that it ended within the bound.
  RunResult Db(const std::vector<std::string>& args) {
    const auto start = std::chrono::steady_clock::now();
    RunResult r = RunDb(disk_, std::get<0>(GetParam()), args, Options());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(kBoundSeconds));
    return r;
  }
  bool Direct() const { return std::get<0>(GetParam()) == AccessPath::kDirect; }
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
  // Checks that neither canary nor the disk changed beyond `files`.
  void ExpectUnchanged(const std::string& store, const std::string& files) {
    EXPECT_EQ(store, disk_.Dump());
    ExpectFilesUnchanged(files);
  }
  // The same, for a store that is no database (and that no dump may open).
  void ExpectFilesUnchanged(const std::string& files) {
    EXPECT_EQ(std::string("victim\n") + kCanaryText, tmpCanary_.State());
    EXPECT_EQ(std::string("victim\n") + kCanaryText, visibleCanary_.State());
    EXPECT_EQ(files, DiskFiles(disk_));
  }

  RecorderDisk disk_;
  // One canary below the host's /tmp, which the sandbox hides, one in a host
  // folder that it shows read-only wherever the checkout lies.
  Canary tmpCanary_{"/tmp"};
  Canary visibleCanary_{"/var/tmp"};
};

const char kAnalysisPassed[] =
    "File count = 1\n"
    " Checking 1.ts:  extracting.../mnt/hd/1.ts  checking...PASS\n"
    "\n";

// Links at /mnt/hd/1.ts, where the extraction writes: the link is replaced,
// never written through, and db's clean-up removes the copy.
TEST_P(HostileDisk, ExtractionReplacesALinkInsteadOfWritingThroughIt) {
  const std::string store = disk_.Dump();
  const std::string files = DiskFiles(disk_);
  const std::string targets[] = {tmpCanary_.File(),
                                 visibleCanary_.File(),
                                 "streammgr/stream.db",
                                 "streams/1.ts",
                                 "/usr",
                                 "connectionmgr",
                                 "no-such-file",
                                 "1.ts"};
  for (const std::string& target : targets) {
    SCOPED_TRACE(target);
    ASSERT_EQ(0, symlink(target.c_str(), At("1.ts").c_str()));
    const RunResult r = Db({"-a", "d"});
    EXPECT_RUN(r, kAnalysisPassed,
               "StreamMgrCli: /mnt/hd/1.ts is a link; replacing it, not what it points to\n", 0);
    ExpectUnchanged(store, files);
  }
}

// A hard link to the store or to the stream file itself at /mnt/hd/1.ts:
// the extraction takes the name, not the file behind it.
TEST_P(HostileDisk, ExtractionDoesNotWriteIntoAHardLinkedFile) {
  const std::string store = disk_.Dump();
  const std::string files = DiskFiles(disk_);
  for (const char* target : {"streammgr/stream.db", "streams/1.ts"}) {
    SCOPED_TRACE(target);
    ASSERT_EQ(0, link(At(target).c_str(), At("1.ts").c_str()));
    const RunResult r = Db({"-a", "d"});
    EXPECT_RUN(r, kAnalysisPassed, "", 0);
    ExpectUnchanged(store, files);
  }
}

// Odd things where the stream file to extract should be: StreamMgrCli
// cannot read it, names no copy, and db prints nothing after the heading.
TEST_P(HostileDisk, OddStreamFileIsNotExtracted) {
  const Odd odds[] = {Odd::kFifo,     Odd::kSocket,  Odd::kFolder,
                      Odd::kDangling, Odd::kLooping, Odd::kLinkToFolder};
  const char* reasons[] = {"not a regular file",
                           "not a regular file",
                           "not a regular file",
                           "No such file or directory",
                           "Too many levels of symbolic links",
                           "not a regular file"};
  for (size_t i = 0; i < sizeof odds / sizeof odds[0]; ++i) {
    SCOPED_TRACE(i);
    std::system(("rm -rf '" + At("streams/1.ts") + "'").c_str());
    MakeOdd(odds[i], At("streams/1.ts"));
    const std::string store = disk_.Dump();
    const std::string files = DiskFiles(disk_);
    const RunResult r = Db({"-a", "d"});
    EXPECT_RUN(r, "File count = 1\n Checking 1.ts:  extracting...",
               std::string("StreamMgrCli: cannot extract stream file 1: /mnt/hd/streams/1.ts: ") +
                   reasons[i] + "\n",
               0);
    ExpectUnchanged(store, files);
  }
}

// Odd things where the event's description file should be: the row shows
// the staged event with the message for a file that cannot be loaded.
TEST_P(HostileDisk, OddDescriptionFileCannotBeLoaded) {
  const Odd odds[] = {Odd::kFifo,     Odd::kSocket,  Odd::kFolder,
                      Odd::kDangling, Odd::kLooping, Odd::kLinkToFolder};
  for (Odd odd : odds) {
    SCOPED_TRACE(static_cast<int>(odd));
    std::system(("rm -rf '" + At("connectionmgr/r1.xml") + "'").c_str());
    MakeOdd(odd, At("connectionmgr/r1.xml"));
    const bool dangles = odd == Odd::kDangling || odd == Odd::kLooping;
    const std::string store = disk_.Dump();
    const std::string files = DiskFiles(disk_);
    const RunResult r = Db({"-e"});
    // A link that leads nowhere does not exist as far as stat knows: the
    // event is not staged and the file is never opened.
    EXPECT_RUN(r, kGibHeading + (dangles ? DefaultRow("r1") : StagedRow("r1")),
               dangles ? "" : "Failed to load XML file: /mnt/hd/connectionmgr/r1.xml", 0);
    ExpectUnchanged(store, files);
  }
}

// The store itself is a FIFO, a dangling link, or a link to a store outside
// the disk (which the sandbox hides): it cannot be opened, as an unreadable
// store cannot, nothing is created through the link, and the outside store
// keeps its rows.
TEST_P(HostileDisk, OddStoreCannotBeOpened) {
  const std::string outside = tmpCanary_.File() + ".db";
  ASSERT_EQ(0, std::system(("cp '" + disk_.StorePath() + "' '" + outside + "'").c_str()));
  const std::string kept = disk_.Dump();
  for (const std::string odd : {"fifo", "dangling", "outside"}) {
    SCOPED_TRACE(odd);
    unlink(disk_.StorePath().c_str());
    if (odd == "fifo") {
      mkfifo(disk_.StorePath().c_str(), 0666);
    } else {
      symlink(odd == "dangling" ? "no-such-store" : outside.c_str(), disk_.StorePath().c_str());
    }
    const std::string files = DiskFiles(disk_);
    const RunResult r = Db({"-t", "-d", "r1"});
    EXPECT_RUN(r, TablesOfAStoreThatCannotBeOpened());
    EXPECT_EQ(files, DiskFiles(disk_));
  }
  unlink(disk_.StorePath().c_str());
  ASSERT_EQ(0, std::system(("cp '" + outside + "' '" + disk_.StorePath() + "'").c_str()));
  EXPECT_EQ(kept, disk_.Dump());
}

INSTANTIATE_TEST_SUITE_P(Hostile, HostileDisk,
                         ::testing::Combine(BothAccessPaths(), ::testing::Bool()),
                         [](const ::testing::TestParamInfo<Param>& info) {
                           return std::string(AccessPathName(std::get<0>(info.param))) +
                                  (std::get<1>(info.param) ? "Unprivileged" : "Root");
                         });

}  // namespace

// Files that user nobody may not read (root reads them all): the description
// file reads as one that cannot be loaded, the data file is only measured,
// the stream file is not extracted, and the store does not open.
TEST_P(HostileDisk, UnreadableFilesReadAsFilesThatCannotBeRead) {
  const bool unprivileged = std::get<1>(GetParam());
  struct Case {
    const char* file;
    std::vector<std::string> args;
    std::string out;
    std::string err;
    int status;
    std::string outAsRoot;
  };
  const Case cases[] = {
      {"connectionmgr/r1.xml",
       {"-e"},
       kGibHeading + StagedRow("r1"),
       "Failed to load XML file: /mnt/hd/connectionmgr/r1.xml",
       0,
       kGibHeading + StagedRow("r1")},
      {"connectionmgr/r1.mtd",
       {"-e"},
       kGibHeading + StagedRow("r1"),
       "",
       0,
       kGibHeading + StagedRow("r1")},
      {"streams/1.ts",
       {"-a", "d"},
       "File count = 1\n Checking 1.ts:  extracting...",
       "StreamMgrCli: cannot extract stream file 1: /mnt/hd/streams/1.ts: Permission denied\n",
       0,
       kAnalysisPassed},
      {"streammgr/stream.db",
       {"-t"},
       std::string(kTablesHeading) + "\n",
       OpeningFailure() +
           "unable to prepare: select tbl_name from sqlite_master where type='table'",
       14,
       std::string(kTablesHeading) + "events             1\n"
                                     "streamfiles        1\n"
                                     "status             0\n"
                                     "\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.file);
    ASSERT_EQ(0, chmod(At(c.file).c_str(), 0));
    const std::string store = disk_.Dump();
    const std::string files = DiskFiles(disk_);
    const RunResult r = Db(c.args);
    EXPECT_RUN(r, unprivileged ? c.out : c.outAsRoot, unprivileged ? c.err : "",
               unprivileged ? c.status : 0);
    ExpectUnchanged(store, files);
    ASSERT_EQ(0, chmod(At(c.file).c_str(), 0666));
  }
}

// Links at the event's data file, which is only measured: one that leads to
// a file (or a folder) counts it, one that leads nowhere (the host's /tmp is
// hidden) leaves the event unstaged.
TEST_P(HostileDisk, LinkedDataFileIsOnlyMeasured) {
  struct Case {
    std::string target;
    bool staged;
  };
  const Case cases[] = {{visibleCanary_.File(), true},   {tmpCanary_.File(), false},
                        {visibleCanary_.Folder(), true}, {"r1.xml", true},
                        {"no-such-file", false},         {"r1.mtd", false}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.target);
    unlink(At("connectionmgr/r1.mtd").c_str());
    ASSERT_EQ(0, symlink(c.target.c_str(), At("connectionmgr/r1.mtd").c_str()));
    const std::string store = disk_.Dump();
    const std::string files = DiskFiles(disk_);
    const RunResult r = Db({"-e"});
    EXPECT_RUN(r, kGibHeading + (c.staged ? StagedRow("r1") : DefaultRow("r1")), "", 0);
    ExpectUnchanged(store, files);
  }
}

// The metadata and stream folders are links to host folders outside the
// disk: nothing the tool looks for is there, and nothing is written there.
TEST_P(HostileDisk, LinkedFoldersLeadOffTheDisk) {
  for (const Canary* canary : {&visibleCanary_, &tmpCanary_}) {
    SCOPED_TRACE(canary->Folder());
    for (const char* folder : {"connectionmgr", "streams"}) {
      ASSERT_EQ(0, std::system(("mv '" + At(folder) + "' '" + At(folder) + ".kept'").c_str()));
      ASSERT_EQ(0, symlink(canary->Folder().c_str(), At(folder).c_str()));
    }
    const std::string store = disk_.Dump();
    const std::string files = DiskFiles(disk_);
    RunResult r = Db({"-e"});
    EXPECT_RUN(r, kGibHeading + DefaultRow("r1"), "", 0);
    ExpectUnchanged(store, files);
    r = Db({"-a", "d"});
    EXPECT_RUN(
        r, "File count = 1\n Checking 1.ts:  extracting...",
        "StreamMgrCli: cannot extract stream file 1: /mnt/hd/streams/1.ts: No such file or directory\n",
        0);
    ExpectUnchanged(store, files);
    for (const char* folder : {"connectionmgr", "streams"}) {
      ASSERT_EQ(0, unlink(At(folder).c_str()));
      ASSERT_EQ(0, std::system(("mv '" + At(folder) + ".kept' '" + At(folder) + "'").c_str()));
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
  for (const char* odd : {"socket", "device", "fifo", "dangling", "looping", "folder"}) {
    SCOPED_TRACE(odd);
    std::system(("rm -rf '" + disk_.StorePath() + "'").c_str());
    const std::string kind = odd;
    if (kind == "socket") {
      MakeSocket(disk_.StorePath());
    } else if (kind == "device") {
      // The null device: the sandbox opens no device on the disk.
      ASSERT_EQ(0, mknod(disk_.StorePath().c_str(), S_IFCHR | 0666, makedev(1, 3)));
    } else {
      MakeOdd(kind == "fifo"       ? Odd::kFifo
              : kind == "dangling" ? Odd::kDangling
              : kind == "looping"  ? Odd::kLooping
                                   : Odd::kFolder,
              disk_.StorePath());
    }
    const std::string files = DiskFiles(disk_);
    RunResult r = Db({"-t", "-d", "r1"});
    EXPECT_RUN(r, TablesOfAStoreThatCannotBeOpened());
    ExpectFilesUnchanged(files);
    r = Db({"-s"});
    EXPECT_RUN(
        r, "",
        OpeningFailure() +
            "Error: unable to open database \"/mnt/hd/streammgr/stream.db\": unable to open database file\n",
        SQLITE_CANTOPEN);
    ExpectFilesUnchanged(files);
  }
  std::system(("rm -rf '" + disk_.StorePath() + "'").c_str());
  ASSERT_EQ(0, rename(saved.c_str(), disk_.StorePath().c_str()));
  EXPECT_EQ(kept, disk_.Dump());
}
