/// The library in a process in which the loader finds no tracepoint library.
#include <gtest/gtest.h>

#include "tests/support/childProcess.h"

namespace {

using Corvane::Testing::runProgram;

TEST(AbsentTracer, LeavesTheLibraryWorkingWithEveryEventOff)
{
    const auto result =
        runProgram({CORVANE_ABSENT_TRACER}, {"LD_AUDIT=" CORVANE_HIDE_TRACER, "CORVANE_NO_TRACER=" CORVANE_NO_TRACER});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "tracepoint library: absent\n"
                          "tracer: absent\n"
                          "events: off\n"
                          "command: 5, echo of me\n"
                          "texts: 0\n");
    EXPECT_EQ(result.err, "");
}

TEST(AbsentTracer, IsNoticedByTheSameProgramWithTheTracer)
{
    const auto result = runProgram({CORVANE_ABSENT_TRACER});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "tracepoint library: loaded\n"
                          "tracer: loaded\n"
                          "command: 5, echo of me\n");
}

} // namespace
