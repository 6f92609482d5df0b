#include "testing/run_result.h"

#include <algorithm>
#include <sstream>
#include <vector>

namespace {

// Lines with their ends; a last line without one is marked as such.
std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  size_t start = 0;
  while (start < text.size()) {
    const size_t end = text.find('\n', start);
    if (end == std::string::npos) {
      lines.push_back(text.substr(start) + "<no line end>");
      break;
    }
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

void PrintStream(const char* name, const std::string& text, std::ostream& out) {
  out << name << " (" << text.size() << " bytes):\n";
  for (const std::string& line : Lines(text)) out << "  | " << line << "\n";
}

}  // namespace

bool operator==(const RunResult& a, const RunResult& b) {
  return a.out == b.out && a.err == b.err && a.status == b.status;
}

void PrintTo(const RunResult& result, std::ostream* out) {
  *out << "\n";
  PrintStream("stdout", result.out, *out);
  PrintStream("stderr", result.err, *out);
  *out << "exit status " << result.status << "\n";
}

std::string LineDiff(const std::string& expected, const std::string& actual) {
  const std::vector<std::string> want = Lines(expected);
  const std::vector<std::string> got = Lines(actual);
  // Longest common subsequence of lines; outputs of tests are small.
  const size_t n = want.size();
  const size_t m = got.size();
  std::vector<std::vector<size_t>> common(n + 1, std::vector<size_t>(m + 1, 0));
  for (size_t i = n; i-- > 0;) {
    for (size_t j = m; j-- > 0;) {
      common[i][j] = want[i] == got[j] ? common[i + 1][j + 1] + 1
                                       : std::max(common[i + 1][j], common[i][j + 1]);
    }
  }
  std::ostringstream diff;
  size_t i = 0;
  size_t j = 0;
  while (i < n || j < m) {
    if (i < n && j < m && want[i] == got[j]) {
      diff << "  " << want[i++] << "\n";
      ++j;
    } else if (j < m && (i == n || common[i][j + 1] > common[i + 1][j])) {
      diff << "+ " << got[j++] << "\n";
    } else {
      diff << "- " << want[i++] << "\n";
    }
  }
  return diff.str();
}

::testing::AssertionResult SameRun(const char* expectedText, const char* actualText,
                                   const RunResult& expected, const RunResult& actual) {
  if (expected == actual) return ::testing::AssertionSuccess();
  ::testing::AssertionResult failure = ::testing::AssertionFailure();
  failure << actualText << " differs from " << expectedText << "\n";
  if (expected.out != actual.out) {
    failure << "stdout (- expected, + actual):\n" << LineDiff(expected.out, actual.out);
  }
  if (expected.err != actual.err) {
    failure << "stderr (- expected, + actual):\n" << LineDiff(expected.err, actual.err);
  }
  if (expected.status != actual.status) {
    failure << "exit status: expected " << expected.status << ", actual " << actual.status << "\n";
  }
  return failure;
}
