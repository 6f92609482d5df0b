// Runs compare whole, and a failed comparison shows where the lines differ.
#include "testing/run_result.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

TEST(RunResult, EqualOnlyWhenAllThreePartsAre) {
  const RunResult run{"a\n", "b\n", 1};
  EXPECT_TRUE(run == (RunResult{"a\n", "b\n", 1}));
  EXPECT_FALSE(run == (RunResult{"a\n", "b\n", 0}));
  EXPECT_FALSE(run == (RunResult{"a\n", "", 1}));
  EXPECT_FALSE(run == (RunResult{"", "b\n", 1}));
  EXPECT_TRUE(run != (RunResult{"a", "b\n", 1}));
}

TEST(RunResult, LineDiffMarksMissingAndExtraLines) {
  EXPECT_EQ(
      "  same\n"
      "- gone\n"
      "+ new\n"
      "  end\n",
      LineDiff("same\ngone\nend\n", "same\nnew\nend\n"));
  EXPECT_EQ("- last\n+ last<no line end>\n", LineDiff("last\n", "last"));
  EXPECT_EQ("", LineDiff("", ""));
}

TEST(RunResult, FailureSaysWhichPartsDiffer) {
  const ::testing::AssertionResult same =
      SameRun("want", "got", RunResult{"x\n", "", 0}, RunResult{"x\n", "", 0});
  EXPECT_TRUE(same);
  const ::testing::AssertionResult differ =
      SameRun("want", "got", RunResult{"x\ny\n", "", 0}, RunResult{"x\nz\n", "", 3});
  EXPECT_FALSE(differ);
  EXPECT_EQ(
      "got differs from want\n"
      "stdout (- expected, + actual):\n"
      "  x\n"
      "- y\n"
      "+ z\n"
      "exit status: expected 0, actual 3\n",
      std::string(differ.message()));
}

TEST(RunResult, PrintsEachStreamLineByLine) {
  std::ostringstream printed;
  PrintTo(RunResult{"one\ntwo\n", "bad", 2}, &printed);
  EXPECT_EQ(
      "\n"
      "stdout (8 bytes):\n"
      "  | one\n"
      "  | two\n"
      "stderr (3 bytes):\n"
      "  | bad<no line end>\n"
      "exit status 2\n",
      printed.str());
}

}  // namespace
