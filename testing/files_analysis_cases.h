// A fixture for tables of named cases run on both access paths (see
// testing/faults_case_tables.h), with the case and the path at hand:
//
//   class MyRuns : public CasesOnBothPaths<MyCase> {};
//   INSTANTIATE_TEST_SUITE_P(BothPaths, MyRuns, OnBothPaths(kCases), CaseOnPathName<MyCase>);
#ifndef TESTING_FILES_ANALYSIS_CASES_H_
#define TESTING_FILES_ANALYSIS_CASES_H_

#include <gtest/gtest.h>

#include <tuple>

#include "testing/faults_case_tables.h"
#include "testing/run_in_sandbox.h"

template <typename Case>
class CasesOnBothPaths : public ::testing::TestWithParam<CaseOnPath<Case>> {
 protected:
  const Case& Param() const { return std::get<0>(this->GetParam()); }
  AccessPath Path() const { return std::get<1>(this->GetParam()); }
};

#endif  // TESTING_FILES_ANALYSIS_CASES_H_
