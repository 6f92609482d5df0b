// Tables of cases, each with a name, run as parameterised tests, alone or
// on each access path:
//   INSTANTIATE_TEST_SUITE_P(P, Suite, ValuesIn(kCases), CaseName<Case>);
//   INSTANTIATE_TEST_SUITE_P(P, Suite, Combine(ValuesIn(kCases), BothAccessPaths()),
//                            CaseOnPathName<Case>);
#ifndef TESTING_FAULTS_CASE_TABLES_H_
#define TESTING_FAULTS_CASE_TABLES_H_

#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "testing/run_in_sandbox.h"

template <typename Case>
using CaseOnPath = std::tuple<Case, AccessPath>;

template <typename Case>
std::string CaseName(const ::testing::TestParamInfo<Case>& info) {
  return info.param.name;
}

template <typename Case>
std::string CaseOnPathName(const ::testing::TestParamInfo<CaseOnPath<Case>>& info) {
  return std::string(std::get<0>(info.param).name) + "_" + AccessPathName(std::get<1>(info.param));
}

#endif  // TESTING_FAULTS_CASE_TABLES_H_
