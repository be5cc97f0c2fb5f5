/// The end of the command service's state, at the end of a process and where the library is unloaded.
#include <gtest/gtest.h>

#include "tests/support/childProcess.h"

namespace {

using Corvane::Testing::runProgram;

TEST(CommandService, IsUsedByDetachedThreadsWhileTheProcessEnds)
{
    for (int run = 0; run < 5; ++run) {
        const auto result = runProgram({CORVANE_USE_TO_THE_END});
        ASSERT_EQ(result.status, 0) << result.err;
        ASSERT_EQ(result.err, "");
    }
}

TEST(CommandService, LeavesNothingOnTheHeapOfAProcessThatUnloadsIt)
{
    const auto result = runProgram({CORVANE_COMMAND_PLUGIN_HOST, CORVANE_COMMAND_PLUGIN});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
}

} // namespace
