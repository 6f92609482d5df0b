// Tables of cases, each with a name, run as parameterised tests, alone or
// on each access path, and text expected of them that may differ by path:
//   INSTANTIATE_NAMED_CASES(P, Suite, kCases);
//   class MyRuns : public CasesOnBothPaths<MyCase> {};
//   INSTANTIATE_TEST_SUITE_P(P, MyRuns, OnBothPaths(kCases), CaseOnPathName<MyCase>);
#ifndef TESTING_CASE_TABLES_H_
#define TESTING_CASE_TABLES_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <tuple>
#include <utility>

#include "testing/run_in_sandbox.h"

template <typename Case>
using CaseOnPath = std::tuple<Case, AccessPath>;

// Each case of `table` on both access paths, or on the daemon's alone.
template <typename Case, size_t N>
auto OnBothPaths(const Case (&table)[N]) {
  return ::testing::Combine(::testing::ValuesIn(table), BothAccessPaths());
}
template <typename Case, size_t N>
auto OverIpcOnly(const Case (&table)[N]) {
  return ::testing::Combine(::testing::ValuesIn(table), ::testing::Values(AccessPath::kDaemon));
}

template <typename Case>
std::string CaseName(const ::testing::TestParamInfo<Case>& info) {
  return info.param.name;
}

template <typename Case>
std::string CaseOnPathName(const ::testing::TestParamInfo<CaseOnPath<Case>>& info) {
  return std::string(std::get<0>(info.param).name) + "_" + AccessPathName(std::get<1>(info.param));
}

// With the case and the path at hand.
template <typename Case>
class CasesOnBothPaths : public ::testing::TestWithParam<CaseOnPath<Case>> {
 protected:
  const Case& Param() const { return std::get<0>(this->GetParam()); }
  AccessPath Path() const { return std::get<1>(this->GetParam()); }
};

// INSTANTIATE_TEST_SUITE_P over the array or vector `cases`, each instance
// named by its `name` member (which must be a valid test name).
#define INSTANTIATE_NAMED_CASES(prefix, suite, cases)                 \
  INSTANTIATE_TEST_SUITE_P(prefix, suite, ::testing::ValuesIn(cases), \
                           [](const auto& info) { return std::string(info.param.name); })

// Text that reads one way when db opens the store itself and another when
// it asks the daemon; most of it reads the same on both.
struct PathText {
  PathText(std::string both = "") : direct(both), daemon(std::move(both)) {}
  PathText(const char* both) : PathText(std::string(both)) {}
  PathText(std::string onDirect, std::string onDaemon)
      : direct(std::move(onDirect)), daemon(std::move(onDaemon)) {}
  const std::string& On(AccessPath path) const {
    return path == AccessPath::kDirect ? direct : daemon;
  }
  std::string direct;
  std::string daemon;
};

inline PathText operator+(const PathText& a, const PathText& b) {
  return {a.direct + b.direct, a.daemon + b.daemon};
}

#endif  // TESTING_CASE_TABLES_H_
