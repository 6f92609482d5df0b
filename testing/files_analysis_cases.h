// Tables of named cases run on both access paths: each case becomes one test
// per path, named after the case and then the path.
//
//   class MyRuns : public CasesOnBothPaths<MyCase> {};
//   INSTANTIATE_TEST_SUITE_P(BothPaths, MyRuns, BothPathsOf(kCases), CaseOnPathName<MyCase>);
#ifndef TESTING_FILES_ANALYSIS_CASES_H_
#define TESTING_FILES_ANALYSIS_CASES_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <tuple>

#include "testing/run_in_sandbox.h"

template <typename Case>
class CasesOnBothPaths : public ::testing::TestWithParam<std::tuple<AccessPath, Case>> {
 protected:
  AccessPath Path() const { return std::get<0>(this->GetParam()); }
  const Case& Param() const { return std::get<1>(this->GetParam()); }
};

template <typename Cases>
auto BothPathsOf(const Cases& cases) {
  return ::testing::Combine(BothAccessPaths(), ::testing::ValuesIn(cases));
}

template <typename Case>
std::string CaseOnPathName(const ::testing::TestParamInfo<std::tuple<AccessPath, Case>>& info) {
  return std::string(std::get<1>(info.param).name) + "_" + AccessPathName(std::get<0>(info.param));
}

#endif  // TESTING_FILES_ANALYSIS_CASES_H_
