/// The conformance suite finds faults, and tries the libraries to which the loader's path leads it.
#include <string>

#include <gtest/gtest.h>

#include "tests/support/childProcess.h"

namespace {

using namespace Corvane::Testing;

/// Runs one of the suite's tests against the library with a fault.
ProgramResult runAgainst(const std::string& fault, const std::string& test)
{
    return runProgram({CORVANE_CONFORMANCE, "--gtest_filter=" + test},
                      {"LD_LIBRARY_PATH=" CORVANE_FAULTY_ZEL_FOLDER, "CORVANE_TEST_ZEL_FAULT=" + fault});
}

class ConformanceSuite : public testing::TestWithParam<std::string>
{
};

constexpr const char* test = "Zel.CarriesMessagesWholeAndInOrderBetweenProcesses";

TEST_P(ConformanceSuite, FindsAFaultyLibraryThatTheLoadersPathNames)
{
    const ProgramResult result = runAgainst(GetParam(), test);
    EXPECT_EQ(result.status, 1) << result.out;
    EXPECT_NE(result.out.find("[  FAILED  ] " + std::string(test)), std::string::npos) << result.out;
}

INSTANTIATE_TEST_SUITE_P(AFault, ConformanceSuite, testing::Values("duplicate", "drop", "tear"),
                         [](const auto& fault) { return fault.param; });

TEST(ConformanceSuiteItself, FindsNoFaultInThatLibraryWithoutOne)
{
    const ProgramResult result = runAgainst("none", test);
    EXPECT_EQ(result.status, 0) << result.out;
    EXPECT_NE(result.out.find("[       OK ] " + std::string(test)), std::string::npos) << result.out;
}

} // namespace
