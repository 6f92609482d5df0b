// Tables of test cases whose instances are named after each case's `name`.
#ifndef TESTING_SIM_NAMED_CASES_H_
#define TESTING_SIM_NAMED_CASES_H_

#include <gtest/gtest.h>

#include <string>

// INSTANTIATE_TEST_SUITE_P over the array or vector `cases`, each instance
// named by its `name` member (which must be a valid test name).
#define INSTANTIATE_NAMED_CASES(prefix, suite, cases)                 \
  INSTANTIATE_TEST_SUITE_P(prefix, suite, ::testing::ValuesIn(cases), \
                           [](const auto& info) { return std::string(info.param.name); })

#endif  // TESTING_SIM_NAMED_CASES_H_
