// One run of a command compared whole: standard output, standard error and
// exit status at once, with a line diff of what differs.
//
//   EXPECT_RUN(RunDb(disk, {"-t"}), "out\n", "", 0);
//   EXPECT_RUN(RunDb(disk, {"-t"}), expectedRun);  // a RunResult made elsewhere
#ifndef TESTING_RUN_RESULT_H_
#define TESTING_RUN_RESULT_H_

#include <gtest/gtest.h>

#include <ostream>
#include <string>

// What a command printed and how it ended.
struct RunResult {
  std::string out;
  std::string err;
  int status = -1;  // exit status, or 128 + signal
};

bool operator==(const RunResult& a, const RunResult& b);
inline bool operator!=(const RunResult& a, const RunResult& b) { return !(a == b); }

// Shows each stream line by line, so that GoogleTest's messages read as the
// output does.
void PrintTo(const RunResult& result, std::ostream* out);

// The lines of `actual` against those of `expected`: kept lines with two
// spaces before them, missing ones with "- ", extra ones with "+ ".
std::string LineDiff(const std::string& expected, const std::string& actual);

// For EXPECT_PRED_FORMAT2: passes when the runs are equal, and otherwise
// says which of the three differ and how.
::testing::AssertionResult SameRun(const char* expectedText, const char* actualText,
                                   const RunResult& expected, const RunResult& actual);

// EXPECT_RUN(actual, out, err, status), or EXPECT_RUN(actual, expected) with a
// whole RunResult: the expected run is everything after the first argument.
#define EXPECT_RUN(actual, ...) EXPECT_PRED_FORMAT2(SameRun, (RunResult{__VA_ARGS__}), actual)

#endif  // TESTING_RUN_RESULT_H_
