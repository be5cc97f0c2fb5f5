/// The conformance suite finds faults, and tries the libraries to which the loader's path leads it.
#include <string>

#include <gtest/gtest.h>

#include "tests/support/childProcess.h"

namespace {

using namespace Corvane::Testing;

class ConformanceSuite : public testing::TestWithParam<std::string>
{
};

TEST_P(ConformanceSuite, FindsTheFaultOfALibraryThatTheLoadersPathNamesAndNoOther)
{
    const std::string test = "Zel.CarriesMessagesWholeAndInOrderBetweenProcesses";
    const ProgramResult result =
        runProgram({CORVANE_CONFORMANCE, "--gtest_filter=" + test},
                   {"LD_LIBRARY_PATH=" CORVANE_FAULTY_ZEL_FOLDER, "CORVANE_TEST_ZEL_FAULT=" + GetParam()});
    const bool isSound = GetParam() == "none";
    EXPECT_EQ(result.status, isSound ? 0 : 1) << result.out;
    EXPECT_NE(result.out.find((isSound ? "[       OK ] " : "[  FAILED  ] ") + test), std::string::npos) << result.out;
}

INSTANTIATE_TEST_SUITE_P(AFault, ConformanceSuite, testing::Values("duplicate", "drop", "tear", "none"),
                         [](const auto& fault) { return fault.param; });

} // namespace
