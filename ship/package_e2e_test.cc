// The Debian package: built with cpack from this build, its control data,
// its contents, and the db it holds run from a fresh root.
#include <gtest/gtest.h>

#include <string>

#include "ship/installed_db.h"
#include "ship/shell.h"

namespace {

class Package : public testing::Test {
 protected:
  void SetUp() override {
    const RunResult built =
        RunShell("cpack --config " + ShellQuote(BuildDir() + "/CPackConfig.cmake") + " -B " +
                 ShellQuote(scratch_.Path()));
    ASSERT_EQ(0, built.status) << built.out << built.err;
    const RunResult found = RunShell("cd " + ShellQuote(scratch_.Path()) + " && ls *.deb");
    ASSERT_EQ(0, found.status) << found.err;
    ASSERT_EQ("db_" DB_VERSION "_" + Architecture() + ".deb\n", found.out);
    deb_ = scratch_.Path() + "/" + found.out.substr(0, found.out.size() - 1);
  }

  static std::string Architecture() {
    const std::string out = RunShell("dpkg --print-architecture").out;
    return out.substr(0, out.find('\n'));
  }

  std::string Field(const std::string& name) const {
    const RunResult result = RunShell("dpkg-deb -f " + ShellQuote(deb_) + " " + name);
    EXPECT_EQ(0, result.status) << result.err;
    return result.out;
  }

  std::string Root() const { return scratch_.Path() + "/root"; }

  std::string deb_;

 private:
  ScratchDir scratch_;
};

}  // namespace

TEST_F(Package, ControlNamesThePackageAndItsRuntimeLibraries) {
  EXPECT_EQ("db\n", Field("Package"));
  EXPECT_EQ(DB_VERSION "\n", Field("Version"));
  EXPECT_EQ(Architecture() + "\n", Field("Architecture"));
  // Filled in by dpkg-shlibdeps from what the binary links.
  const std::string depends = Field("Depends");
  EXPECT_NE(std::string::npos, depends.find("libsqlite3-0 (")) << depends;
  EXPECT_NE(std::string::npos, depends.find("libtinyxml2-9 (")) << depends;
  EXPECT_NE(std::string::npos, depends.find("libc6 (")) << depends;
}

TEST_F(Package, HoldsTheToolItsManPageAndItsCompletionOnly) {
  EXPECT_RUN(RunShell("dpkg-deb -c " + ShellQuote(deb_) + " | awk '$1 !~ /^d/ {print $6}' | sort"),
             "./usr/bin/db\n"
             "./usr/share/bash-completion/completions/db\n"
             "./usr/share/man/man1/db.1.gz\n",
             "", 0);
}

TEST_F(Package, DbOfTheExtractedPackageRuns) {
  const RunResult extracted =
      RunShell("dpkg-deb -x " + ShellQuote(deb_) + " " + ShellQuote(Root()));
  ASSERT_EQ(0, extracted.status) << extracted.err;
  ExpectDbRunsOnARecorderDisk(Root() + "/usr/bin/db");

  // The man page and the completion work from where the package puts them.
  ExpectManShowsDb("-M " + ShellQuote(Root() + "/usr/share/man") + " -P cat db");
  ExpectCompletionRegistered(Root() + "/usr/share/bash-completion/completions/db");
}
