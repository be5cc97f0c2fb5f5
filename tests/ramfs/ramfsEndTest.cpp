/// The file system at the end of a process and at the unloading of the library.
#include <gtest/gtest.h>

#include "tests/support/childProcess.h"
#include "tests/support/emulation.h"

namespace {

using Corvane::Testing::runnable;
using Corvane::Testing::runProgram;

TEST(RamFsEnd, DetachedThreadsMayUseFilesWhileTheProcessEnds)
{
    for (int run = 0; run < 5; ++run) {
        const auto result = runProgram(runnable({CORVANE_END_RAMFS, CORVANE_LIBRARY, "exit"}));
        ASSERT_EQ(result.status, 0) << result.err;
        ASSERT_EQ(result.err, "");
    }
}

TEST(RamFsEnd, AForkedChildMayExitWhileThreadsOfItsParentUseFiles)
{
#ifdef CORVANE_TEST_SANITIZED
    GTEST_SKIP() << "a sanitizer may leave locks of its own to a child that another thread holds";
#endif
    const auto result = runProgram(runnable({CORVANE_END_RAMFS, CORVANE_LIBRARY, "fork"}));
    EXPECT_EQ(result.status, 0) << result.err;
}

TEST(RamFsEnd, AThousandLoadingsLeaveNoMemoryBehind)
{
    if (Corvane::Testing::isEmulated()) {
        GTEST_SKIP() << "the emulator's memory would count, which it takes for every loading";
    }
    const auto result = runProgram(runnable({CORVANE_END_RAMFS, CORVANE_LIBRARY, "unload"}));
    EXPECT_EQ(result.status, 0) << result.out << result.err;
}

} // namespace
