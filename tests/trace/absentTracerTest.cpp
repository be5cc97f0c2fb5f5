/// The library in a process in which the loader finds no tracepoint library, and a tracer that only takes the
/// provider's registration, or refuses it.
#include <csignal>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/childProcess.h"
#include "tests/support/emulation.h"

namespace {

using Corvane::Testing::ProgramResult;
using Corvane::Testing::runProgram;

/// Runs a program from which LTTng is hidden.
ProgramResult runWithoutTracer(const std::vector<std::string>& command, const std::string& refusal = "")
{
    return runProgram(command, {"LD_AUDIT=" CORVANE_HIDE_TRACER, "CORVANE_NO_TRACER=" CORVANE_NO_TRACER,
                                "CORVANE_NO_TRACER_REFUSES=" + refusal,
                                // ThreadSanitizer's thread-local data are large, and the loader keeps room for a
                                // module's only beside what it is told to expect.
                                "GLIBC_TUNABLES=glibc.rtld.optional_static_tls=1000000"});
}

TEST(AbsentTracer, LeavesTheLibraryWorkingWithEveryEventOff)
{
#if defined(__aarch64__) && !__GLIBC_PREREQ(2, 35)
    GTEST_SKIP() << "the loader of this C library loses a register in a process that has an audit module";
#endif
    const ProgramResult result = runWithoutTracer({CORVANE_ABSENT_TRACER});
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
    const ProgramResult result = runProgram({CORVANE_ABSENT_TRACER});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "tracepoint library: loaded\n"
                          "tracer: loaded\n"
                          "command: 5, echo of me\n");
}

TEST(Unloading, TakesTheProvidersRegistrationBack)
{
    const ProgramResult result = runWithoutTracer({CORVANE_LOAD_AND_UNLOAD, CORVANE_LIBRARY});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "loaded: TRACE_UTS7 is registered\n"
                          "unloaded: nothing is registered\n"
                          "loaded: TRACE_UTS7 is registered\n"
                          "unloaded: nothing is registered\n");
    EXPECT_EQ(result.err, "");
}

TEST(Unloading, LeavesNothingBehindInAProcessWithTheTracer)
{
    const ProgramResult result = runProgram({CORVANE_LOAD_AND_UNLOAD, CORVANE_LIBRARY});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "loaded\nunloaded\nloaded\nunloaded\n");
    EXPECT_EQ(result.err, "");
}

TEST(RefusedRegistration, EndsTheProcessWithTheReason)
{
    const ProgramResult result = runWithoutTracer({CORVANE_ABSENT_TRACER}, "-17");
    EXPECT_EQ(result.status, -SIGABRT);
    EXPECT_EQ(result.out, "");
    const std::string emulatorsNote =
        Corvane::Testing::isEmulated() ? "qemu: uncaught target signal 6 (Aborted) - core dumped\n" : "";
#ifdef CORVANE_TEST_LTTNG_2_12
    EXPECT_EQ(result.err, "LTTng-UST: Error (-17) while registering tracepoint probe.\n" + emulatorsNote);
#else
    EXPECT_EQ(result.err, "LTTng-UST: Error while registering tracepoint probe.\n" + emulatorsNote);
#endif
}

} // namespace
