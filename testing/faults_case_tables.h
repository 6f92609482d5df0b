// Tables of cases, each with a name, run as parameterised tests, alone or
// on each access path, and text expected of them that may differ by path:
//   INSTANTIATE_TEST_SUITE_P(P, Suite, ValuesIn(kCases), CaseName<Case>);
//   INSTANTIATE_TEST_SUITE_P(P, Suite, OnBothPaths(kCases), CaseOnPathName<Case>);
#ifndef TESTING_FAULTS_CASE_TABLES_H_
#define TESTING_FAULTS_CASE_TABLES_H_

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

#endif  // TESTING_FAULTS_CASE_TABLES_H_
