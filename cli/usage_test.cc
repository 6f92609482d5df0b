// The usage text printed in process, compared whole.
#include "cli/usage.h"

#include <gtest/gtest.h>

#include <iostream>
#include <string>

#include "cli/tool_context.h"
#include "testing/case_tables.h"
#include "testing/expected_usage.h"
#include "testing/stream_capture.h"

namespace {

struct UsageCase {
  const char* name;
  const char* program;
  const char* message;
  bool running;
};

void PrintTo(const UsageCase& c, std::ostream* out) { *out << c.name; }

const UsageCase kUsageCases[] = {
    {"WithoutMessageStartsWithTwoEmptyLines", "db", nullptr, false},
    {"MessageStandsBetweenEmptyLinesAndUsageLine", "./db", "Error: unknown option specified",
     false},
    {"SaysWhetherTheDaemonRuns", "/usr/bin/db", nullptr, true},
    // The examples say "db" whatever the program name, and the hidden
    // upper-case options stay out.
    {"ExamplesNameTheToolDbWhateverTheProgramName", "other", nullptr, false},
};

class Usage : public ::testing::TestWithParam<UsageCase> {};

TEST_P(Usage, IsPrintedWhole) {
  const UsageCase& c = GetParam();
  toolContext.running = c.running;
  const StreamCapture captured(std::cout);
  PrintUsage(c.program, c.message);
  toolContext.running = false;
  EXPECT_EQ(ExpectedUsage(c.program, c.running, c.message == nullptr ? "" : c.message),
            captured.Text());
}

INSTANTIATE_NAMED_CASES(Texts, Usage, kUsageCases);

}  // namespace
