#include "cli/usage.h"

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>

#include "cli/tool_context.h"
#include "testing/expected_usage.h"
#include "testing/stream_capture.h"

namespace {

std::string CaptureUsage(const char* program, const char* message) {
  const StreamCapture captured(std::cout);
  PrintUsage(program, message);
  return captured.Text();
}

TEST(Usage, WithoutMessageStartsWithTwoEmptyLines) {
  toolContext.running = false;
  EXPECT_EQ(ExpectedUsage("db", false), CaptureUsage("db", nullptr));
}

TEST(Usage, MessageStandsBetweenEmptyLinesAndUsageLine) {
  toolContext.running = false;
  const std::string text = CaptureUsage("./db", "Error: unknown option specified");
  EXPECT_EQ(ExpectedUsage("./db", false, "Error: unknown option specified"), text);
  EXPECT_EQ(0u, text.find("\n\nError: unknown option specified\nUsage: ./db\n"));
}

TEST(Usage, SaysWhetherTheDaemonRuns) {
  toolContext.running = true;
  const std::string text = CaptureUsage("/usr/bin/db", nullptr);
  toolContext.running = false;
  EXPECT_EQ(ExpectedUsage("/usr/bin/db", true), text);
  EXPECT_NE(std::string::npos, text.find("\nStreamMgr is currently running\n\n"));
}

TEST(Usage, ExamplesNameTheToolDbWhateverTheProgramName) {
  toolContext.running = false;
  const std::string text = CaptureUsage("other", nullptr);
  EXPECT_NE(std::string::npos, text.find("Example: db -f s2 = display"));
  EXPECT_EQ(std::string::npos, text.find("-E"));
  EXPECT_EQ(std::string::npos, text.find("-R"));
  EXPECT_EQ(std::string::npos, text.find("-P"));
}

TEST(Usage, HasThirtyHelpLinesWithTheirIndentation) {
  toolContext.running = false;
  std::istringstream lines(CaptureUsage("db", nullptr));
  std::string line;
  int help = 0, nine = 0, seventeen = 0, twenty = 0;
  while (std::getline(lines, line)) {
    const size_t blanks = line.find_first_not_of(' ');
    if (blanks == 0 || blanks == std::string::npos) continue;
    ++help;
    nine += blanks == 9;
    seventeen += blanks == 17;
    twenty += blanks == 20;
  }
  EXPECT_EQ(30, help);
  EXPECT_EQ(10, nine);
  EXPECT_EQ(1, seventeen);
  EXPECT_EQ(19, twenty);
}

}  // namespace
