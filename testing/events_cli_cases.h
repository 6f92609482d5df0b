// Names each instance of a table of cases after the case's `name` member:
//   INSTANTIATE_TEST_SUITE_P(Prefix, Suite, ::testing::ValuesIn(kCases), CaseName());
#ifndef TESTING_EVENTS_CLI_CASES_H_
#define TESTING_EVENTS_CLI_CASES_H_

#include <gtest/gtest.h>

#include <string>

struct CaseName {
  template <class Case>
  std::string operator()(const ::testing::TestParamInfo<Case>& info) const {
    return info.param.name;
  }
};

#endif  // TESTING_EVENTS_CLI_CASES_H_
