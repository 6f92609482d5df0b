#include "testing/shell.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "testing/scratch_dir.h"

TEST(RunShell, KeepsOutputErrorAndStatusApart) {
  const RunResult result = RunShell("echo out; echo err >&2; exit 3");
  EXPECT_EQ("out\n", result.out);
  EXPECT_EQ("err\n", result.err);
  EXPECT_EQ(3, result.status);
}

TEST(RunShell, ReportsASignalAsOneHundredAndTwentyEightPlusItsNumber) {
  EXPECT_EQ(128 + 9, RunShell("kill -9 $$").status);
}

TEST(ShellQuote, MakesOneWordOfAnyText) {
  for (const std::string text : {"", "a b", "it's", "'*r'", "$HOME `x` \"q\" \\", "two\nlines"}) {
    const RunResult result = RunShell("printf '%s|' " + ShellQuote(text));
    EXPECT_EQ(text + "|", result.out) << text;
  }
}

TEST(ScratchDir, IsRemovedWithWhatItHolds) {
  std::string path;
  {
    ScratchDir scratch;
    path = scratch.Path();
    ASSERT_EQ(0, RunShell("mkdir -p " + ShellQuote(path + "/a/b") + " && chmod a-w " +
                          ShellQuote(path + "/a"))
                     .status);
  }
  struct stat info;
  EXPECT_NE(0, stat(path.c_str(), &info));
}
