// The sandbox keeps the host away from what runs in it: only the disk, the
// endpoint folder and a private /tmp can be written, the host's /tmp is not
// there, and a write sent to the host (directly or through a link on the
// disk) fails with the writer's own message. As root and as user nobody,
// with and without the simulators running.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <tuple>

#include "testing/disk_manifest.h"
#include "testing/host_canary.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

const char kSynopsis[] =
    "usage: recorder-sandbox [--streammgr[=ARGS]] [--configmp[=ARGS]] [--snapshot[=DIR]] [--ro DIR]... DISK_DIR -- COMMAND [ARG...]\n";

const char kPayload[] = "payload from the disk\n";

bool Exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

// Who runs the sandbox, and which simulators it starts.
enum class Daemons { kNone, kStreamMgr, kConfigMp, kBoth };
using Param = std::tuple<bool, Daemons>;

class SandboxConfinement : public ::testing::TestWithParam<Param> {
 protected:
  void SetUp() override {
    disk_.WriteFile("payload", kPayload);
    // The unprivileged user maps to root in a namespace of its own, which
    // owns nothing of the disk; it writes where anyone may.
    ASSERT_EQ(0, std::system(("chmod -R a+rwX '" + disk_.Path() + "'").c_str()));
  }
  bool Unprivileged() const { return std::get<0>(GetParam()); }
  SandboxOptions Options() const {
    SandboxOptions options;
    options.unprivileged = Unprivileged();
    const Daemons daemons = std::get<1>(GetParam());
    options.streamMgr = daemons == Daemons::kStreamMgr || daemons == Daemons::kBoth;
    options.configMp = daemons == Daemons::kConfigMp || daemons == Daemons::kBoth;
    options.timeoutSeconds = 30;
    return options;
  }
  RunResult Run(const std::string& script, SandboxOptions options) {
    return RunInSandbox(disk_, {"sh", "-c", script}, options);
  }
  RunResult Run(const std::string& script) { return Run(script, Options()); }
  RecorderDisk disk_;
  // In a host folder that the sandbox shows read-only wherever the checkout
  // lies (a build below the host's /tmp is hidden but for its programs), and
  // below the host's /tmp, which it hides.
  Canary visible_{"/var/tmp"};
  Canary hidden_{"/tmp"};
};

const std::string kUntouched = std::string("victim\n") + kCanaryText;

// The checks below can fail: outside the sandbox the same user's cp does
// overwrite the canary, which is there for everyone to write.
TEST_P(SandboxConfinement, TheWriterChangesTheCanaryOutsideTheSandbox) {
  const std::string user =
      Unprivileged() ? "setpriv --reuid=65534 --regid=65534 --clear-groups " : "";
  ASSERT_EQ(0, std::system(
                   (user + "cp '" + disk_.Path() + "/payload' '" + visible_.File() + "'").c_str()));
  EXPECT_EQ(std::string("victim\n") + kPayload, visible_.State());
}

// Host folders outside the disk refuse every write, named directly or
// reached through a link on the disk, and stay as they were.
TEST_P(SandboxConfinement, WritesToTheHostFailWithTheWritersMessage) {
  const std::string etc = "/etc/sandbox-canary-" + std::to_string(getpid());
  const std::string varTmp = "/var/tmp/sandbox-canary-" + std::to_string(getpid());
  ASSERT_EQ(0, symlink(visible_.File().c_str(), (disk_.Path() + "/to-file").c_str()));
  ASSERT_EQ(0, symlink(visible_.Folder().c_str(), (disk_.Path() + "/to-folder").c_str()));
  const std::string before = DiskManifest(disk_.Path());
  const std::string targets[] = {
      visible_.File(),   visible_.Folder() + "/new", etc, varTmp, "/usr/sandbox-canary",
      "/mnt/hd/to-file", "/mnt/hd/to-folder/new"};
  for (const std::string& target : targets) {
    SCOPED_TRACE(target);
    EXPECT_RUN(Run("cp /mnt/hd/payload '" + target + "'"), "",
               "cp: cannot create regular file '" + target + "': Read-only file system\n", 1);
    EXPECT_EQ(kUntouched, visible_.State());
    EXPECT_FALSE(Exists(etc));
    EXPECT_FALSE(Exists(varTmp));
    EXPECT_FALSE(Exists("/usr/sandbox-canary"));
    EXPECT_EQ(before, DiskManifest(disk_.Path()));
  }
  // Should a write have got through, the next run starts clean.
  for (const std::string& path : {etc, varTmp, std::string("/usr/sandbox-canary")}) {
    unlink(path.c_str());
  }
}

// The disk, the endpoint folder and the private /tmp take writes; only the
// disk's reach the host.
TEST_P(SandboxConfinement, TheDiskRunAndPrivateTmpAreWritable) {
  const std::string name = "sandbox-scratch-" + std::to_string(getpid());
  EXPECT_RUN(Run("echo disk > /mnt/hd/" + name + " && echo run > /run/linx/" + name +
                 " && echo tmp > /tmp/" + name + " && cat /mnt/hd/" + name + " /run/linx/" + name +
                 " /tmp/" + name),
             "disk\nrun\ntmp\n", "", 0);
  EXPECT_EQ("disk\n", disk_.ReadFile(name));
  EXPECT_FALSE(Exists("/tmp/" + name));
  EXPECT_FALSE(Exists("/run/linx/" + name));
  unlink(("/tmp/" + name).c_str());
  unlink(("/run/linx/" + name).c_str());
}

// What lies in the host's /tmp is not there inside, and a write to the
// hidden path lands in the private /tmp only.
TEST_P(SandboxConfinement, TheHostsTmpIsHidden) {
  const RunResult r =
      Run("cat '" + hidden_.File() + "'; mkdir -p '" + hidden_.Folder() +
          "' && cp /mnt/hd/payload '" + hidden_.File() + "' && cat '" + hidden_.File() + "'");
  EXPECT_RUN(r, kPayload, "cat: " + hidden_.File() + ": No such file or directory\n", 0);
  EXPECT_EQ(kUntouched, hidden_.State());
}

// --ro shows a folder of the host's /tmp, read-only.
TEST_P(SandboxConfinement, ReadOnlyOptionShowsAFolderReadOnly) {
  SandboxOptions options = Options();
  options.sandboxArgs = {"--ro", hidden_.Folder()};
  EXPECT_RUN(
      Run("cat '" + hidden_.File() + "' && cp /mnt/hd/payload '" + hidden_.File() + "'", options),
      kCanaryText,
      "cp: cannot create regular file '" + hidden_.File() + "': Read-only file system\n", 1);
  EXPECT_EQ(kUntouched, hidden_.State());
}

std::string ConfinedName(const ::testing::TestParamInfo<Param>& info) {
  static const char* const kDaemons[] = {"Alone", "StreamMgr", "ConfigMP", "BothDaemons"};
  return std::string(std::get<0>(info.param) ? "Unprivileged" : "Root") +
         kDaemons[static_cast<int>(std::get<1>(info.param))];
}

INSTANTIATE_TEST_SUITE_P(Confined, SandboxConfinement,
                         ::testing::Combine(::testing::Bool(),
                                            ::testing::Values(Daemons::kNone, Daemons::kStreamMgr,
                                                              Daemons::kConfigMp, Daemons::kBoth)),
                         ConfinedName);

class SandboxCommandLine : public ::testing::TestWithParam<bool> {
 protected:
  RunResult Run(const std::vector<std::string>& sandboxArgs) {
    SandboxOptions options;
    options.unprivileged = GetParam();
    options.sandboxArgs = sandboxArgs;
    return RunInSandbox(disk_, {"true"}, options);
  }
  RecorderDisk disk_;
};

TEST_P(SandboxCommandLine, HelpSaysWhatTheSandboxProtects) {
  EXPECT_RUN(Run({"--help"}),
             std::string(kSynopsis) +
                 "\n"
                 "Runs COMMAND on a recorder of its own: DISK_DIR is mounted at /mnt/hd, the\n"
                 "IPC endpoint folder /run/linx is private and empty, the recorder's programs\n"
                 "(RECORDER_BIN_DIR, by default build/bin) come first on PATH, and every\n"
                 "process started inside ends with COMMAND. Exits with COMMAND's status.\n"
                 "\n"
                 "  --streammgr[=ARGS]  start the StreamMgr simulator first (ARGS split as a\n"
                 "                      shell splits words) and wait until it answers\n"
                 "  --configmp[=ARGS]   the same for the ConfigMP simulator\n"
                 "  --snapshot[=DIR]    leave DISK_DIR exactly as it is: /mnt/hd is a\n"
                 "                      copy-on-write view of it, and what the programs change\n"
                 "                      goes to a scratch folder below $TMPDIR (default\n"
                 "                      /var/tmp), removed at exit; with =DIR it goes to DIR\n"
                 "                      (a new or empty folder outside DISK_DIR) and stays there\n"
                 "  --ro DIR            show the host folder DIR read-only at the same path\n"
                 "                      (needed only below the host's /tmp, which is hidden)\n"
                 "\n"
                 "What it protects: the host, from the disk. A disk from the field is untrusted\n"
                 "input, and a link on it may point anywhere. Inside, only /mnt/hd (the disk),\n"
                 "/run and a private, empty /tmp can be written; every other folder of the host\n"
                 "is there read-only, and of the host's /tmp only the programs' own folders are\n"
                 "there, read-only. A write that the disk sends through a link to the host\n"
                 "fails with the writing program's own message, and the host stays as it was.\n"
                 "This holds whether the sandbox runs as root or as another user (then in a\n"
                 "user namespace of its own, with no more rights than that user has).\n"
                 "\n"
                 "A pulled disk, from the commands. A disk taken from a unit is evidence: use\n"
                 "--snapshot, or mount it read-only, and the examination changes nothing on it,\n"
                 "not a byte, a name, a mode or a time. A read-only DISK_DIR is never made\n"
                 "writable: the sandbox then gives the programs a copy-on-write view of it, as\n"
                 "--snapshot does. In the view everything works as on a writable disk: SQLite\n"
                 "rolls back the journal that a power cut left beside the store, db -a d\n"
                 "extracts and removes its stream files, and deletions delete, all in the\n"
                 "view. With --snapshot=DIR, DIR afterwards holds every file the run changed\n"
                 "or made, at its path below the disk, so that a trial deletion can be looked\n"
                 "at with sqlite3 DIR/streammgr/stream.db; each file the run removed is named\n"
                 "on standard error at the end. Run as another user than root, the view can\n"
                 "change only what that user owns on the disk.\n"
                 "\n"
                 "What it does not protect: a writable disk without --snapshot, from the\n"
                 "commands run on it, which change it as they are asked to; and the host, from\n"
                 "the programs themselves. The programs and COMMAND are trusted: the sandbox\n"
                 "does not limit what they read (host files readable outside /tmp are\n"
                 "readable inside), the network, or the processes and devices they may reach.\n",
             "", 0);
}

TEST_P(SandboxCommandLine, UnknownOptionGivesTheUsage) {
  EXPECT_RUN(Run({"--bogus"}), "",
             std::string("recorder-sandbox: unknown option --bogus\n") + kSynopsis, 125);
}

INSTANTIATE_TEST_SUITE_P(Sandbox, SandboxCommandLine, ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool>& info) {
                           return std::string(info.param ? "Unprivileged" : "Root");
                         });

}  // namespace
