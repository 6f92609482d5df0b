// cmake --install: the layout of an installed db, and the installed programs
// run from where they were put.
#include <gtest/gtest.h>

#include <string>

#include "ship/installed_db.h"
#include "ship/shell.h"
#include "testing/expected_usage.h"
#include "testing/recorder_disk.h"
#include "testing/run_in_sandbox.h"

namespace {

class Install : public testing::Test {
 protected:
  // Installs the build into the scratch prefix: the default components, or
  // only `component`.
  void InstallInto(const std::string& component = "") {
    std::string command =
        "cmake --install " + ShellQuote(BuildDir()) + " --prefix " + ShellQuote(prefix_.Path());
    if (!component.empty()) command += " --component " + ShellQuote(component);
    const RunResult result = RunShell(command);
    ASSERT_EQ(0, result.status) << result.out << result.err;
  }

  // Every file and link below the prefix, one relative path a line, sorted.
  std::string InstalledFiles() const {
    return RunShell("cd " + ShellQuote(prefix_.Path()) +
                    " && find . ! -type d | cut -c3- | LC_ALL=C sort")
        .out;
  }

  std::string Prefix() const { return prefix_.Path(); }

 private:
  ScratchDir prefix_;
};

const char kToolFiles[] =
    "bin/db\n"
    "share/bash-completion/completions/db\n"
    "share/man/man1/db.1.gz\n";

const char kSimulatorFiles[] =
    "bin/recorder-sandbox\n"
    "libexec/db/ConfigMP\n"
    "libexec/db/StreamMgr\n"
    "libexec/db/StreamMgrCli\n"
    "libexec/db/filePes\n"
    "libexec/db/recorder-sandbox\n"
    "libexec/db/sql\n";

std::string SortedLines(const std::string& text) {
  return RunShell("printf %s " + ShellQuote(text) + " | LC_ALL=C sort").out;
}

}  // namespace

TEST_F(Install, PutsTheToolItsManPageAndItsCompletionInPlace) {
  InstallInto();
  if (DB_INSTALL_SIMULATORS) {
    EXPECT_EQ(SortedLines(std::string(kToolFiles) + kSimulatorFiles), InstalledFiles());
  } else {
    // The stand-ins stay out unless asked for.
    EXPECT_EQ(kToolFiles, InstalledFiles());
  }
  EXPECT_EQ(0, RunShell("test -x " + ShellQuote(Prefix() + "/bin/db")).status);
}

TEST_F(Install, ToolComponentHoldsNoStandIns) {
  InstallInto("db");
  EXPECT_EQ(kToolFiles, InstalledFiles());
}

TEST_F(Install, ManShowsTheInstalledPage) {
  InstallInto("db");
  const std::string page =
      ExpectManShowsDb("-M " + ShellQuote(Prefix() + "/share/man") + " -P cat db");
  EXPECT_NE(std::string::npos, page.find("HIDDEN OPTIONS"));
}

TEST_F(Install, InstalledCompletionCompletesDb) {
  InstallInto("db");
  const std::string script =
      "source " + ShellQuote(Prefix() + "/share/bash-completion/completions/db") +
      " && complete -p db && COMP_WORDS=(db -f s) COMP_CWORD=2 && _db && echo "
      "\"${COMPREPLY[*]}\"";
  EXPECT_RUN(RunShell("bash --norc -c " + ShellQuote(script)), "complete -F _db db\ns0 s1 s2 s3\n",
             "", 0);
}

TEST_F(Install, InstalledDbRunsOnARecorderDisk) {
  InstallInto("db");
  ExpectDbRunsOnARecorderDisk(Prefix() + "/bin/db");
}

TEST_F(Install, StandInsAndSandboxInstallAsTheirOwnComponent) {
  InstallInto("simulators");
  EXPECT_EQ(kSimulatorFiles, InstalledFiles());
}

TEST_F(Install, InstalledSandboxRunsTheInstalledDbWithTheInstalledStandIns) {
  InstallInto();
  InstallInto("simulators");
  const RecorderDisk recorder;
  FillRecorderDisk(recorder);
  const std::string before = recorder.Dump();
  // A bare environment: nothing of the build tree is on PATH.
  const std::string sandbox = "env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin TZ=UTC " +
                              ShellQuote(Prefix() + "/bin/recorder-sandbox");
  const std::string disk = ShellQuote(recorder.Path());

  EXPECT_RUN(RunShell(sandbox + " " + disk + " -- sh -c 'command -v db; command -v sql'"),
             Prefix() + "/bin/db\n" + Prefix() + "/libexec/db/sql\n", "", 0);
  EXPECT_RUN(RunShell(sandbox + " --streammgr " + disk + " -- db -h"), ExpectedUsage("db", true),
             "", 0);
  EXPECT_RUN(RunShell(sandbox + " --streammgr " + disk + " -- db -t"), kFilledDiskTables, "", 0);
  // The status table is empty: sql prints no header for no rows.
  EXPECT_RUN(RunShell(sandbox + " " + disk + " -- db -s"), "", "", 0);
  EXPECT_EQ(before, recorder.Dump());
}
